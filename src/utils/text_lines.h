#pragma once

#include <string_view>
#include <vector>

namespace context_delta::text_lines {

/// The lines of a UTF-8 text, without their boundaries. A boundary is CR LF, or any one of LF, CR,
/// U+000B, U+000C, U+001C, U+001D, U+001E, U+0085, U+2028 and U+2029. An empty text has no lines;
/// a boundary at the very end adds none. The views point into `text`.
std::vector<std::string_view> split_lines(std::string_view text);

}  // namespace context_delta::text_lines
