#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "utils/cancellation.h"

/// Child processes without a shell: what they see is given in full, and none outlives its object.
namespace context_delta::subprocess {

/// A program that cannot be started, was killed at its time limit, or whose end is unknown. The
/// text is one line and names the program.
class SubprocessError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A program with its arguments (not its name) and its whole environment ("NAME=value").
struct Command {
  std::filesystem::path program;
  std::vector<std::string> arguments;
  std::vector<std::string> environment;
  /// The most memory that it may take for itself, not counting files that it maps; 0: any.
  std::size_t most_memory = 0;
};

/// The file that `name` means along the absolute folders of PATH; null when there is none.
/// Relative folders are passed over: they would find programs of an untrusted current folder.
std::optional<std::filesystem::path> find_program(std::string_view name);

/// An open file descriptor that is closed with the object.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor() { close(); }
  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  void close();

 private:
  int number_ = -1;
};

/// How long a child may keep its caller waiting, and whether it is still wanted. Time that the
/// caller spends on what it was given does not count.
class TimeLimit {
 public:
  TimeLimit(std::chrono::milliseconds limit, CancelFlag cancelled = nullptr)
      : limit_(limit), left_(limit), cancelled_(cancelled) {}

  /// Milliseconds for the next call of poll(), at least 1: few when the flag must be looked at
  /// meanwhile. Raises SubprocessError when none is left, Cancelled.
  int left(std::string_view program) const;
  void spend(std::chrono::nanoseconds time) { left_ -= time; }

 private:
  std::chrono::milliseconds limit_;
  std::chrono::nanoseconds left_;
  CancelFlag cancelled_;
};

enum class Input { NOTHING, PIPE };

/// A running child. It is killed and reaped with the object, whatever happened before.
class Process {
 public:
  /// Starts the command. Raises SubprocessError.
  Process(const Command& command, Input input);
  Process(Process&& other) noexcept;
  Process& operator=(Process&&) = delete;
  ~Process();

  /// Sends all of `text` to the child's standard input and, as long as it waits for room, gives
  /// up after `limit`. A child that no longer reads is an error. Raises SubprocessError.
  void write(std::string_view text, TimeLimit& limit);

  /// Waits for output: how many of its next bytes were put into `buffer`, 0 at its end. Raises
  /// SubprocessError at the time limit.
  std::size_t read(std::span<char> buffer, TimeLimit& limit);

  /// The beginning of what the child has written to its standard error, as far as read.
  const std::string& errors_text() const { return errors_text_; }

  /// Waits for the child's end: its exit status, or 128 plus the signal that ended it.
  /// Raises SubprocessError at the time limit.
  int wait(TimeLimit& limit);

  const std::string& program() const { return program_; }

 private:
  friend class Loop;
  void read_errors();

  std::string program_;
  pid_t id_ = -1;  // -1: reaped
  FileDescriptor input_, output_, errors_;
  std::string errors_text_;
};

/// A child that run() starts, feeds and reads.
struct Task {
  Command command;
  std::string input;                           ///< its standard input; nothing when empty
  std::function<void(std::string_view)> sink;  ///< takes its standard output as it comes
};

/// How a child ended.
struct Ending {
  int status = 0;      ///< exit status, or 128 plus the signal that ended it
  std::string errors;  ///< the first 16 KiB of its standard error
};

/// Runs the tasks at the same time on the calling thread, to their ends; the endings are in the
/// order of the tasks. Raises SubprocessError, Cancelled, and what a sink raises; all children are
/// ended then.
std::vector<Ending> run(std::span<const Task> tasks, const TimeLimit& limit);

}  // namespace context_delta::subprocess
