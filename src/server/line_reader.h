#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace context_delta::server {

/// Cuts what comes over a descriptor into lines of a bounded length.
class LineReader {
 public:
  struct Line {
    std::string text;       ///< without its line feed
    bool too_long = false;  ///< it was passed over, and `text` is empty
  };

  /// Lines of more than `most_bytes` are passed over up to their line feed.
  LineReader(int descriptor, std::size_t most_bytes)
      : descriptor_(descriptor), most_bytes_(most_bytes) {}

  /// Reads what is there, waiting for the first byte; false at the end and when it cannot be read.
  bool read();

  /// The next whole line of what was read; null when there is none. After the end, what stands
  /// there without a line feed is a line.
  std::optional<Line> next();

 private:
  std::optional<Line> take(std::size_t length, std::size_t line_feed);

  int descriptor_;
  std::size_t most_bytes_;
  std::string buffer_;
  std::size_t start_ = 0;    // of the next line
  std::size_t scanned_ = 0;  // no line feed from the start up to here
  bool skipping_ = false;    // within a line that is too long
  bool ended_ = false;
};

}  // namespace context_delta::server
