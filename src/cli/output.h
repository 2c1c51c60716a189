#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace context_delta::cli {

/// The answer cannot be written. The text is one line: where, and why.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whoever read the answer has closed the pipe.
class ClosedPipe {};

/// Where the answer goes: standard output for "-", else a file that appears whole or not at all.
/// What exists and is no regular file (a device, a pipe) is written to as it is.
class Output {
 public:
  /// Raises OutputError.
  explicit Output(const std::string& target);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  /// Without finish() nothing is left of a file.
  ~Output();

  /// Raises OutputError, ClosedPipe.
  void write(std::string_view text);
  /// Writes what is still held back and puts the file in its place. Raises like write().
  void finish();

 private:
  void flush();
  [[noreturn]] void fail(int error) const;

  std::string name_;                 // in messages
  std::filesystem::path file_;       // to be replaced; empty when written to directly
  std::filesystem::path temporary_;  // until it is renamed; empty then
  int descriptor_ = -1;
  std::string buffer_;
};

}  // namespace context_delta::cli
