#include "utils/subprocess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace context_delta::subprocess {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t ERROR_BYTES = 16 * 1024;
constexpr std::size_t READ_BYTES = 256 * 1024;
constexpr int PIPE_BYTES = 1024 * 1024;

/// How long a call of poll() lasts at most while a flag must be looked at.
constexpr std::int64_t MOST_UNSEEN_MILLISECONDS = 10;

[[noreturn]] void fail(std::string_view program, std::string_view what, int error) {
  throw SubprocessError(std::string(program) + ": " + std::string(what) + ": " +
                        std::strerror(error));
}

// Below 3 a descriptor could be the one that the child's own is put on.
FileDescriptor above_standard(FileDescriptor descriptor) {
  if (descriptor.get() > 2) return descriptor;
  FileDescriptor copy(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, 3));
  if (!copy) fail("subprocess", "no descriptor for a pipe", errno);
  return copy;
}

struct Ends {
  FileDescriptor ours, theirs;
};

Ends make_output_pipe(const std::string& program) {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) fail(program, "no pipe", errno);
  FileDescriptor read(ends[0]), write(ends[1]);
  return {above_standard(std::move(read)), above_standard(std::move(write))};
}

// A socket, because send() can be told not to raise SIGPIPE.
Ends make_input_socket(const std::string& program) {
  std::array<int, 2> ends;
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    fail(program, "no socket", errno);
  }
  FileDescriptor first(ends[0]), second(ends[1]);
  shutdown(first.get(), SHUT_RD);
  return {above_standard(std::move(first)), above_standard(std::move(second))};
}

class SpawnActions {
 public:
  SpawnActions() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &defaults);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnActions() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  void connect(const FileDescriptor& descriptor, int target) {
    posix_spawn_file_actions_adddup2(&actions_, descriptor.get(), target);
  }
  void open_nothing(int target) {
    posix_spawn_file_actions_addopen(&actions_, target, "/dev/null", O_RDONLY, 0);
  }
  // Descriptors that the rest of this program left open for its children.
  void close_all_others() { posix_spawn_file_actions_addclosefrom_np(&actions_, 3); }
  int start(pid_t& id, const char* program, char** arguments, char** environment) {
    return posix_spawn(&id, program, &actions_, &attributes_, arguments, environment);
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

std::vector<char*> pointers(std::vector<std::string>& strings) {
  std::vector<char*> result;
  for (std::string& string : strings) result.push_back(string.data());
  result.push_back(nullptr);
  return result;
}

// poll() that counts its waiting against the limit and goes on after signals.
void wait_for(std::span<pollfd> descriptors, TimeLimit& limit, std::string_view program) {
  while (true) {
    const int most = limit.left(program);
    const auto start = Clock::now();
    const int ready = poll(descriptors.data(), descriptors.size(), most);
    const int error = errno;
    limit.spend(Clock::now() - start);
    if (ready > 0) return;
    if (ready < 0 && error != EINTR) fail(program, "cannot wait for it", error);
  }
}

// Bytes read into the buffer, 0 at the end.
std::size_t read_some(int descriptor, std::span<char> buffer, std::string_view program) {
  while (true) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) fail(program, "cannot read its output", errno);
  }
}

// Bytes taken by the child, 0 when there is no room now; null when it no longer reads.
std::optional<std::size_t> send_some(int descriptor, std::string_view text,
                                     std::string_view program) {
  while (true) {
    const ssize_t count = send(descriptor, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EAGAIN || errno == EWOULDBLOCK) return 0;
    if (errno == EPIPE || errno == ECONNRESET) return std::nullopt;
    if (errno != EINTR) fail(program, "cannot write its input", errno);
  }
}

int exit_status(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    number_ = std::exchange(other.number_, -1);
  }
  return *this;
}

void FileDescriptor::close() {
  if (number_ >= 0) ::close(std::exchange(number_, -1));
}

std::optional<std::filesystem::path> find_program(std::string_view name) {
  const char* path = std::getenv("PATH");
  std::string_view rest = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
  while (!rest.empty()) {
    const std::string_view folder = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
    if (!folder.starts_with('/')) continue;
    const std::filesystem::path file = std::filesystem::path(folder) / name;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(file, ignored) && access(file.c_str(), X_OK) == 0) {
      return file;
    }
  }
  return std::nullopt;
}

int TimeLimit::left(std::string_view program) const {
  check_cancelled(cancelled_);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(left_).count();
  if (left <= 0) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(limit_).count();
    throw SubprocessError(std::string(program) + ": stopped at its time limit of " +
                          std::to_string(seconds) + " s");
  }
  return static_cast<int>(
      std::min<std::int64_t>(left, cancelled_ == nullptr ? 60'000 : MOST_UNSEEN_MILLISECONDS));
}

Process::Process(const Command& command, Input input) : program_(command.program.filename()) {
  SpawnActions actions;
  Ends in, out = make_output_pipe(program_), errors = make_output_pipe(program_);
  fcntl(out.ours.get(), F_SETPIPE_SZ, PIPE_BYTES);  // fewer turns; refused at the user's quota
  if (input == Input::PIPE) {
    in = make_input_socket(program_);
    actions.connect(in.theirs, 0);
  } else {
    actions.open_nothing(0);
  }
  actions.connect(out.theirs, 1);
  actions.connect(errors.theirs, 2);
  actions.close_all_others();
  std::vector<std::string> arguments = {program_};
  arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
  std::vector<std::string> environment = command.environment;
  const int error = actions.start(id_, command.program.c_str(), pointers(arguments).data(),
                                  pointers(environment).data());
  if (error != 0) {
    id_ = -1;
    fail(program_, "cannot be started", error);
  }
  if (command.most_memory > 0) {
    const rlimit limit{command.most_memory, command.most_memory};
    prlimit(id_, RLIMIT_DATA, &limit, nullptr);  // refused when it may have no more anyway
  }
  input_ = std::move(in.ours);
  output_ = std::move(out.ours);
  errors_ = std::move(errors.ours);
}

Process::Process(Process&& other) noexcept
    : program_(other.program_),
      id_(std::exchange(other.id_, -1)),
      input_(std::move(other.input_)),
      output_(std::move(other.output_)),
      errors_(std::move(other.errors_)),
      errors_text_(std::move(other.errors_text_)) {}

Process::~Process() {
  if (id_ < 0) return;
  kill(id_, SIGKILL);
  while (waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void Process::write(std::string_view text, TimeLimit& limit) {
  while (true) {
    const std::optional<std::size_t> sent = send_some(input_.get(), text, program_);
    if (!sent) throw SubprocessError(program_ + ": ended too early");
    text.remove_prefix(*sent);
    if (text.empty()) return;
    pollfd room{input_.get(), POLLOUT, 0};
    wait_for({&room, 1}, limit, program_);
  }
}

std::size_t Process::read(std::span<char> buffer, TimeLimit& limit) {
  while (true) {
    std::array<pollfd, 2> ready = {{{output_.get(), POLLIN, 0}, {errors_.get(), POLLIN, 0}}};
    wait_for(ready, limit, program_);
    if (ready[1].revents != 0) read_errors();
    if (ready[0].revents != 0) return read_some(output_.get(), buffer, program_);
  }
}

void Process::read_errors() {
  std::array<char, 4096> buffer;
  const std::size_t count = read_some(errors_.get(), buffer, program_);
  if (count == 0) errors_.close();
  errors_text_.append(buffer.data(), std::min(count, ERROR_BYTES - errors_text_.size()));
}

int Process::wait(TimeLimit& limit) {
  auto pause = std::chrono::microseconds(20);
  while (true) {
    int status = 0;
    const pid_t ended = waitpid(id_, &status, WNOHANG);
    if (ended == id_) {
      id_ = -1;
      return exit_status(status);
    }
    if (ended < 0 && errno == ECHILD) {
      id_ = -1;
      throw SubprocessError(program_ + ": its exit status is lost (is SIGCHLD ignored?)");
    }
    limit.left(program_);
    std::this_thread::sleep_for(pause);
    limit.spend(pause);
    pause = std::min(pause * 2, std::chrono::microseconds(5000));
  }
}

// The children of one run() and what is still to be moved.
class Loop {
 public:
  Loop(std::span<const Task> tasks, const TimeLimit& limit)
      : tasks_(tasks),
        limit_(limit),
        unsent_(tasks.size()),
        buffer_(std::make_unique<std::array<char, READ_BYTES>>()) {
    processes_.reserve(tasks.size());
    for (std::size_t i = 0; i < tasks.size(); ++i) {
      unsent_[i] = tasks[i].input;
      processes_.emplace_back(tasks[i].command,
                              tasks[i].input.empty() ? Input::NOTHING : Input::PIPE);
    }
  }

  std::vector<Ending> finish() {
    while (turn()) {
    }
    std::vector<Ending> endings;
    for (std::size_t i = 0; i < processes_.size(); ++i) {
      const int status = processes_[i].wait(limit_);
      endings.push_back({status, processes_[i].errors_text_});
    }
    return endings;
  }

 private:
  // Moves what is ready; false when nothing is left to be moved.
  bool turn() {
    std::vector<pollfd> waiting;
    for (const Process& process : processes_) {
      // poll() passes over negative descriptors: those that are closed.
      waiting.push_back({process.output_.get(), POLLIN, 0});
      waiting.push_back({process.errors_.get(), POLLIN, 0});
      waiting.push_back({process.input_.get(), POLLOUT, 0});
    }
    if (std::all_of(waiting.begin(), waiting.end(), [](auto& each) { return each.fd < 0; })) {
      return false;
    }
    wait_for(waiting, limit_, processes_.front().program());
    for (std::size_t i = 0; i < processes_.size(); ++i) {
      if (waiting[3 * i].revents != 0) take_output(i);
      if (waiting[3 * i + 1].revents != 0) processes_[i].read_errors();
      if (waiting[3 * i + 2].revents != 0) give_input(i);
    }
    return true;
  }

  void take_output(std::size_t i) {
    Process& process = processes_[i];
    const std::size_t count = read_some(process.output_.get(), *buffer_, process.program());
    if (count == 0) {
      process.output_.close();
    } else {
      tasks_[i].sink({buffer_->data(), count});
    }
  }

  void give_input(std::size_t i) {
    Process& process = processes_[i];
    // A child that stops reading has ended or has read enough; its ending tells which.
    const auto sent = send_some(process.input_.get(), unsent_[i], process.program());
    unsent_[i].remove_prefix(sent.value_or(unsent_[i].size()));
    if (unsent_[i].empty()) process.input_.close();
  }

  std::span<const Task> tasks_;
  TimeLimit limit_;
  std::vector<Process> processes_;
  std::vector<std::string_view> unsent_;
  std::unique_ptr<std::array<char, READ_BYTES>> buffer_;
};

std::vector<Ending> run(std::span<const Task> tasks, const TimeLimit& limit) {
  return Loop(tasks, limit).finish();
}

}  // namespace context_delta::subprocess
