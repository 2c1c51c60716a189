#include "utils/text_lines.h"

#include <cstddef>

namespace context_delta::text_lines {
namespace {

/// Bytes that a boundary may start with, so that all others are passed over at once.
constexpr bool may_start_boundary(unsigned char byte) {
  return (byte >= 0x0A && byte <= 0x0D) || (byte >= 0x1C && byte <= 0x1E) || byte == 0xC2 ||
         byte == 0xE2;
}

/// Length in bytes of the boundary at the start of `text`, 0 when there is none.
std::size_t boundary_length(std::string_view text) {
  switch (static_cast<unsigned char>(text.front())) {
    case '\r':
      return text.size() > 1 && text[1] == '\n' ? 2 : 1;
    case 0xC2:  // U+0085 is C2 85
      return text.substr(0, 2) == "\xC2\x85" ? 2 : 0;
    case 0xE2:  // U+2028 and U+2029 are E2 80 A8 and E2 80 A9
      return text.substr(0, 3) == "\xE2\x80\xA8" || text.substr(0, 3) == "\xE2\x80\xA9" ? 3 : 0;
    default:
      return 1;
  }
}

}  // namespace

std::vector<std::string_view> split_lines(std::string_view text) {
  std::vector<std::string_view> lines;
  std::size_t start = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    if (!may_start_boundary(static_cast<unsigned char>(text[at]))) {
      ++at;
      continue;
    }
    const std::size_t length = boundary_length(text.substr(at));
    if (length == 0) {
      ++at;
      continue;
    }
    lines.push_back(text.substr(start, at - start));
    at += length;
    start = at;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

}  // namespace context_delta::text_lines
