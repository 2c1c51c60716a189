#include "cli/pager.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cli/terminal.h"
#include "utils/subprocess.h"

namespace context_delta::cli {
namespace {

constexpr int CANNOT_START = 126;  // and 127: how a shell ends that could not run the command

/// While the object lives, the keyboard ends what is in the pager but not this program, which would
/// leave the pager behind without a shell that waits for it.
class KeyboardIsPagers {
 public:
  KeyboardIsPagers() {
    for (std::size_t i = 0; i < 2; ++i) {
      struct sigaction ignore {};
      ignore.sa_handler = SIG_IGN;
      sigaction(SIGNALS[i], &ignore, &before_[i]);
    }
  }
  ~KeyboardIsPagers() {
    for (std::size_t i = 0; i < 2; ++i) sigaction(SIGNALS[i], &before_[i], nullptr);
  }
  KeyboardIsPagers(const KeyboardIsPagers&) = delete;
  KeyboardIsPagers& operator=(const KeyboardIsPagers&) = delete;

  /// What the pager acts on: these signals unless they were ignored already, and a closed pipe.
  sigset_t signals_of_pager() const {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    for (std::size_t i = 0; i < 2; ++i) {
      if (before_[i].sa_handler != SIG_IGN) sigaddset(&set, SIGNALS[i]);
    }
    return set;
  }

 private:
  static constexpr int SIGNALS[2] = {SIGINT, SIGQUIT};
  struct sigaction before_[2]{};
};

/// The environment of the pager: ours, and how `less` shows colours, ends on a short text and
/// leaves it on the screen.
std::vector<std::string> pager_environment() {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) variables.push_back(*variable);
  if (std::getenv("LESS") == nullptr) variables.push_back("LESS=FRX");
  if (std::getenv("LV") == nullptr) variables.push_back("LV=-c");
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/// Starts the shell on `command` with `input` as its standard input; 0 when that fails.
pid_t start(const std::string& command, int input, const sigset_t& default_signals) {
  std::vector<std::string> words = {"sh", "-c", command};
  std::vector<std::string> variables = pager_environment();
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawnattr_setsigdefault(&attributes, &default_signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  pid_t child = 0;
  const int error = posix_spawn(&child, "/bin/sh", &actions, &attributes, pointers(words).data(),
                                pointers(variables).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? child : 0;
}

/// Until the end of the text, or of whoever reads it.
void feed(int pipe, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(pipe, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

std::string pager_command(const Settings& settings) {
  std::string command = settings.pager.value_or("");
  if (!settings.pager) {
    const char* variable = std::getenv("PAGER");
    command = variable != nullptr ? variable : subprocess::find_program("less") ? "less" : "";
  }
  return command == "cat" || command.find_first_not_of(' ') == command.npos ? "" : command;
}

bool wants_pager(const Settings& settings, std::string_view text) {
  const char* terminal = std::getenv("TERM");
  if (settings.no_pager || settings.output != "-" || settings.format->for_programs) return false;
  if (terminal == nullptr || std::string_view(terminal) == "dumb") return false;
  if (!output_is_terminal()) return false;
  const auto lines = std::count(text.begin(), text.end(), '\n');
  return static_cast<std::size_t>(lines) >= terminal_height();
}

bool show_in_pager(const std::string& command, std::string_view text) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  subprocess::FileDescriptor reading(ends[0]);
  subprocess::FileDescriptor writing(ends[1]);
  const KeyboardIsPagers keyboard;
  const pid_t child = start(command, reading.get(), keyboard.signals_of_pager());
  if (child == 0) return false;
  reading.close();
  feed(writing.get(), text);
  writing.close();
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return !WIFEXITED(status) ||
         (WEXITSTATUS(status) != CANNOT_START && WEXITSTATUS(status) != CANNOT_START + 1);
}

}  // namespace context_delta::cli
