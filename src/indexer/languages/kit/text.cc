#include "indexer/languages/kit/text.h"

#include <algorithm>
#include <cctype>

#include "utils/utf8.h"

namespace context_delta::indexer::kit {
namespace {

bool is_space(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r' || byte == '\f' ||
         byte == '\v';
}

/// Whether one_line() has nothing to do: ASCII with single spaces between words.
bool is_one_line(std::string_view text) {
  char before = ' ';
  for (const char byte : text) {
    if (byte < ' ' || byte > '~' || (byte == ' ' && before == ' ')) return false;
    before = byte;
  }
  return before != ' ' || text.empty();
}

}  // namespace

std::string one_line(std::string_view text, std::size_t most_bytes) {
  if (text.size() <= most_bytes && is_one_line(text)) return std::string(text);
  std::string line;
  for (const char byte : text) {
    if (line.size() > most_bytes) break;
    if (!is_space(byte)) {
      line += byte;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  if (!line.empty() && line.back() == ' ') line.pop_back();
  const bool cut = line.size() > most_bytes;
  if (!cut && utf8::is_valid(line)) return line;
  if (cut) line.resize(most_bytes);  // perhaps inside a character, which is mended away below
  line = utf8::replaced(line);
  if (!cut && line.size() <= most_bytes) return line;
  std::size_t end = std::min(line.size(), most_bytes) - 3;
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
  return line.substr(0, end) + "...";
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  if (text.empty()) return parts;
  while (true) {
    const std::size_t at = text.find(separator);
    parts.push_back(text.substr(0, at));
    if (at == std::string_view::npos) return parts;
    text.remove_prefix(at + 1);
  }
}

bool is_identifier(std::string_view text) {
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text.front()))) return false;
  for (const char byte : text) {
    if (!is_identifier_byte(byte)) return false;
  }
  return true;
}

std::string_view folder_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string_view base_name(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace context_delta::indexer::kit
