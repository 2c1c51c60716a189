#include "cli/program.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "utils/subprocess.h"

namespace context_delta::test {
namespace {

std::vector<std::string> base_environment() {
  std::vector<std::string> environment = {"HOME=/nonexistent", "XDG_CACHE_HOME=/nonexistent",
                                          "GIT_CONFIG_GLOBAL=/dev/null", "LC_ALL=C.UTF-8"};
  for (const char* name : {"PATH", "TMPDIR", "ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
    const char* value = std::getenv(name);
    if (value != nullptr) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

Ending run_command(subprocess::Command command) {
  Ending ending;
  const subprocess::Task task{.command = std::move(command),
                              .input = {},
                              .sink = [&](std::string_view part) { ending.out += part; }};
  auto endings = subprocess::run(std::span(&task, 1), {std::chrono::minutes(2)});
  ending.status = endings.front().status;
  ending.errors = std::move(endings.front().errors);
  return ending;
}

}  // namespace

Ending run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  std::vector<std::string> whole = base_environment();
  whole.insert(whole.end(), environment.begin(), environment.end());
  return run_command({.program = PROGRAM, .arguments = arguments, .environment = std::move(whole)});
}

Ending run_shell(const std::string& line) {
  std::vector<std::string> environment = base_environment();
  environment.push_back("program=" PROGRAM);
  return run_command(
      {.program = "/bin/sh", .arguments = {"-c", line}, .environment = std::move(environment)});
}

pid_t start(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int stream : {0, 1, 2}) dup2(nothing, stream);
    execv(pointers[0], pointers.data());
    _exit(127);
  }
  return child;
}

int wait_for(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, 0) != child) throw std::runtime_error("lost a child");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool opens(pid_t child, const std::string& file) {
  const std::filesystem::path folder = "/proc/" + std::to_string(child) + "/fd";
  while (true) {
    siginfo_t ended{};
    const int flags = WEXITED | WNOHANG | WNOWAIT;
    if (waitid(P_PID, static_cast<id_t>(child), &ended, flags) != 0 || ended.si_pid != 0) {
      return false;
    }
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
      if (std::filesystem::read_symlink(entry.path(), error) == file) return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace context_delta::test
