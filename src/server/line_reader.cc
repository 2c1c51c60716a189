#include "server/line_reader.h"

#include <cerrno>

#include <unistd.h>

namespace context_delta::server {
namespace {

constexpr std::size_t READ_BYTES = 64 * 1024;

}  // namespace

bool LineReader::read() {
  buffer_.erase(0, start_);
  scanned_ -= start_;
  start_ = 0;
  const std::size_t before = buffer_.size();
  buffer_.resize(before + READ_BYTES);
  ssize_t count = 0;
  do {
    count = ::read(descriptor_, buffer_.data() + before, READ_BYTES);
  } while (count < 0 && errno == EINTR);
  buffer_.resize(before + (count > 0 ? static_cast<std::size_t>(count) : 0));
  ended_ = count == 0 || (count < 0 && errno != EAGAIN);
  return !ended_;
}

std::optional<LineReader::Line> LineReader::next() {
  const std::size_t end = buffer_.find('\n', scanned_);
  if (end != buffer_.npos) return take(end - start_, 1);
  scanned_ = buffer_.size();
  const std::size_t length = buffer_.size() - start_;
  if (ended_ && length > 0) return take(length, 0);
  if (length <= most_bytes_ && !skipping_) return std::nullopt;
  // The line is reported when it ends; until then nothing of it is kept.
  skipping_ = true;
  start_ = buffer_.size();
  return std::nullopt;
}

std::optional<LineReader::Line> LineReader::take(std::size_t length, std::size_t line_feed) {
  Line line;
  line.too_long = skipping_ || length > most_bytes_;
  if (!line.too_long) line.text = buffer_.substr(start_, length);
  start_ += length + line_feed;
  scanned_ = start_;
  skipping_ = false;
  return line;
}

}  // namespace context_delta::server
