#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Short texts made from source text.
namespace context_delta::indexer::kit {

/// Most bytes that signatures, types and receivers take; what is longer is cut.
inline constexpr std::size_t LONGEST_SIGNATURE = 240;
inline constexpr std::size_t LONGEST_EXPRESSION = 160;

/// The text on one line: each run of white space is one space, none at the ends, valid UTF-8, at
/// most `most_bytes` long, the last three of which are "..." when something was cut.
std::string one_line(std::string_view text, std::size_t most_bytes = LONGEST_SIGNATURE);

/// The text without leading and trailing white space.
std::string_view trimmed(std::string_view text);

/// `text` split at every `separator`; an empty text has no parts.
std::vector<std::string_view> split(std::string_view text, char separator);

inline bool is_identifier_byte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  const auto letter = static_cast<unsigned char>(value | 0x20);
  return (letter >= 'a' && letter <= 'z') || (value >= '0' && value <= '9') || value == '_' ||
         value >= 0x80;
}
/// Whether the text is one identifier (letters beyond ASCII count).
bool is_identifier(std::string_view text);

/// The folder of a path, "" for a file at the top; and the name without its folder.
std::string_view folder_of(std::string_view path);
std::string_view base_name(std::string_view path);

}  // namespace context_delta::indexer::kit
