#include "cli/output.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace context_delta::cli {
namespace {

constexpr std::size_t BUFFER_BYTES = 64 * 1024;

mode_t mode_of_new_files() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

/// The file that `target` names, through links; `target` itself when it does not exist.
std::filesystem::path file_behind(const std::string& target) {
  std::error_code error;
  std::filesystem::path file = std::filesystem::canonical(target, error);
  return error ? std::filesystem::path(target) : file;
}

}  // namespace

Output::Output(const std::string& target) : name_(target) {
  if (target == "-") {
    name_ = "standard output";
    descriptor_ = STDOUT_FILENO;
    return;
  }
  const std::filesystem::path file = file_behind(target);
  struct stat status {};
  const bool exists = stat(file.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor_ = open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0) fail(errno);
    return;
  }
  std::string temporary = (file.parent_path() / ".context-delta-XXXXXX").native();
  descriptor_ = mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor_ < 0) fail(errno);
  temporary_ = temporary;
  file_ = file;
  if (fchmod(descriptor_, exists ? status.st_mode & 0777 : mode_of_new_files()) != 0) fail(errno);
}

Output::~Output() {
  if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO) close(descriptor_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void Output::write(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= BUFFER_BYTES) flush();
}

void Output::finish() {
  flush();
  if (file_.empty()) return;
  if (fsync(descriptor_) != 0 || rename(temporary_.c_str(), file_.c_str()) != 0) fail(errno);
  temporary_.clear();
}

void Output::flush() {
  std::string_view left = buffer_;
  while (!left.empty()) {
    const ssize_t written = ::write(descriptor_, left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EPIPE) throw ClosedPipe();
    if (written < 0) fail(errno);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  buffer_.clear();
}

void Output::fail(int error) const {
  throw OutputError("cannot write " + name_ + ": " + std::generic_category().message(error));
}

}  // namespace context_delta::cli
