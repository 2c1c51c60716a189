#include "render/display_text.h"

#include <array>
#include <charconv>

#include "utils/utf8.h"

namespace context_delta::render {
namespace {

constexpr std::size_t TAB_COLUMNS = 4;

struct Character {
  char32_t code = 0;
  std::string_view bytes;
  bool valid = true;
};

/// The first character of `text`, which is not empty.
Character first_character(std::string_view text) {
  const std::size_t length = utf8::sequence_length(text);
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (length == 0) return {byte(0), text.substr(0, 1), false};
  constexpr std::array<unsigned char, 5> LEAD_MASK = {0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t code = static_cast<char32_t>(byte(0) & LEAD_MASK[length]);
  for (std::size_t i = 1; i < length; ++i) code = (code << 6) | (byte(i) & 0x3FU);
  return {code, text.substr(0, length), true};
}

bool is_control(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

/// Format characters without a shape of their own, and noncharacters. The joiners and variation
/// selectors, which scripts and emoji need, are not among them.
bool is_invisible(char32_t code) {
  return code == 0xAD || code == 0x61C || code == 0x180E || code == 0x200B || code == 0x200E ||
         code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF ||
         (code >= 0xFFF9 && code <= 0xFFFB) || (code >= 0xE0000 && code <= 0xE007F) ||
         (code & 0xFFFE) == 0xFFFE || (code >= 0xFDD0 && code <= 0xFDEF);
}

bool is_odd(const Character& character) {
  return !character.valid || is_control(character.code) || character.code >= 0x10FF00 ||
         is_invisible(character.code);
}

/// Bytes at the start of `text` whose characters are all odd, or all not.
std::size_t run_length(std::string_view text, bool odd) {
  std::size_t length = 0;
  while (length < text.size()) {
    const Character character = first_character(text.substr(length));
    if (is_odd(character) != odd) break;
    length += character.bytes.size();
  }
  return length;
}

std::string hexadecimal(char32_t number) {
  std::array<char, 8> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                 static_cast<std::uint32_t>(number), 16)
                       .ptr;
  return {digits.data(), end};
}

std::string byte_escape(char32_t byte) {
  return std::string(byte < 0x10 ? "\\x0" : "\\x") + hexadecimal(byte);
}

void append_plain(std::string& result, const Character& character) {
  const char32_t code = character.code;
  if (!character.valid || is_control(code)) {
    result += byte_escape(code);
  } else if (code >= 0x10FF00) {
    result += byte_escape(code & 0xFF);
  } else if (is_invisible(code)) {
    result += "\\u{" + hexadecimal(code) + "}";
  } else {
    result += character.bytes;
  }
}

/// As many bytes of the beginning of `text` as fit `columns`.
std::size_t prefix_length(std::string_view text, std::size_t columns) {
  std::size_t length = 0;
  std::size_t width = 0;
  while (length < text.size()) {
    const Character character = first_character(text.substr(length));
    width += character_width(character.code);
    if (width > columns) break;
    length += character.bytes.size();
  }
  return length;
}

/// As much of the end of `text` as fits `columns`, without a combining character at its front.
std::string_view suffix(std::string_view text, std::size_t columns) {
  std::size_t width = display_width(text);
  while (!text.empty()) {
    const Character character = first_character(text);
    const std::size_t taken = character_width(character.code);
    if (width <= columns && taken > 0) break;
    width -= taken;
    text.remove_prefix(character.bytes.size());
  }
  return text;
}

}  // namespace

std::size_t plain_prefix(std::string_view text) { return run_length(text, false); }

std::size_t odd_prefix(std::string_view text) { return run_length(text, true); }

std::string plain_text(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Character character = first_character(text);
    append_plain(result, character);
    text.remove_prefix(character.bytes.size());
  }
  return result;
}

std::string plain_line(std::string_view line) {
  std::string result;
  std::size_t start = 0;
  std::size_t column = 0;
  while (true) {
    const std::size_t tab = line.find('\t', start);
    const std::string part = plain_text(line.substr(start, tab - start));
    result += part;
    if (tab == std::string_view::npos) return result;
    column += display_width(part);
    const std::size_t spaces = TAB_COLUMNS - column % TAB_COLUMNS;
    result.append(spaces, ' ');
    column += spaces;
    start = tab + 1;
  }
}

std::size_t display_width(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Character character = first_character(text);
    width += character_width(character.code);
    text.remove_prefix(character.bytes.size());
  }
  return width;
}

std::string shortened_end(std::string_view text, std::size_t columns, std::string_view mark) {
  if (display_width(text) <= columns) return std::string(text);
  const std::size_t mark_width = display_width(mark);
  if (columns <= mark_width) return std::string(text.substr(0, prefix_length(text, columns)));
  return std::string(text.substr(0, prefix_length(text, columns - mark_width))) + std::string(mark);
}

std::string shortened_middle(std::string_view text, std::size_t columns, std::string_view mark) {
  if (display_width(text) <= columns) return std::string(text);
  const std::size_t mark_width = display_width(mark);
  if (columns < mark_width + 4) return shortened_end(text, columns, mark);
  const std::size_t kept = columns - mark_width;
  std::string_view tail = suffix(text, kept - kept / 3);
  const std::size_t slash = tail.find('/');
  if (slash <= tail.size() / 3) tail.remove_prefix(slash);
  const std::size_t head = prefix_length(text, kept - display_width(tail));
  return std::string(text.substr(0, head)) + std::string(mark) + std::string(tail);
}

std::string shortened_start(std::string_view text, std::size_t columns, std::string_view mark) {
  if (display_width(text) <= columns) return std::string(text);
  const std::size_t mark_width = display_width(mark);
  if (columns < mark_width + 4) return shortened_end(text, columns, mark);
  std::string_view tail = suffix(text, columns - mark_width);
  const std::size_t separator = tail.find_first_of(".:/#");
  if (separator < tail.size() / 2) tail.remove_prefix(separator + 1);
  while (tail.starts_with(':')) tail.remove_prefix(1);
  return std::string(mark) + std::string(tail);
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> lines;
  std::size_t used = 0;
  while (!text.empty()) {
    const std::size_t space = text.find(' ');
    const std::string_view word = text.substr(0, space);
    const std::size_t width = display_width(word);
    if (lines.empty() || used + 1 + width > columns) {
      lines.emplace_back(word);
      used = width;
    } else {
      lines.back().append(" ").append(word);
      used += 1 + width;
    }
    text.remove_prefix(space == std::string_view::npos ? text.size() : space + 1);
  }
  return lines;
}

}  // namespace context_delta::render
