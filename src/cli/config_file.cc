#include "cli/config_file.h"

#include <algorithm>

// Project files are anyone's, and the TOML libraries at hand end or overrun on malformed ones.

namespace context_delta::cli {
namespace {

constexpr std::string_view BLANK = " \t";

void skip_blanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(BLANK), text.size()));
}

bool is_control(char letter) {
  return (static_cast<unsigned char>(letter) < 0x20 && letter != '\t') || letter == 0x7F;
}

bool is_bare(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') || letter == '-' || letter == '_' || letter == '+';
}

std::string take_bare(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), is_bare);
  std::string word(text.begin(), end);
  text.remove_prefix(word.size());
  return word;
}

/// Takes a text up to its closing mark. Escapes are those of one character.
std::string take_quoted(std::string_view& text, ConfigEntry& entry) {
  const char mark = text.front();
  text.remove_prefix(1);
  std::string value;
  while (!text.empty() && text.front() != mark) {
    char letter = text.front();
    text.remove_prefix(1);
    if (mark == '"' && letter == '\\') {
      const std::size_t known = text.empty() ? text.npos : std::string_view("\"\\tn").find(text[0]);
      if (known == text.npos) {
        entry.problem = "has an escape that is not understood; write it between apostrophes";
        return value;
      }
      letter = "\"\\\t\n"[known];
      text.remove_prefix(1);
    }
    value += letter;
  }
  if (text.empty()) {
    entry.problem = "has a text without its closing mark";
  } else {
    text.remove_prefix(1);
  }
  return value;
}

bool is_number(std::string_view word) {
  if (!word.empty() && (word[0] == '-' || word[0] == '+')) word.remove_prefix(1);
  return !word.empty() && word.find_first_not_of("0123456789_") == word.npos && word[0] != '_';
}

void take_value(std::string_view& text, ConfigEntry& entry) {
  if (!text.empty() && (text[0] == '"' || text[0] == '\'')) {
    entry.value = take_quoted(text, entry);
    return;
  }
  std::string word = take_bare(text);
  if (is_number(word)) {
    word.erase(std::remove(word.begin(), word.end(), '_'), word.end());
    if (word[0] == '+') word.erase(0, 1);
  } else if (word != "true" && word != "false") {
    entry.problem = "takes a text in quotation marks, a whole number, true or false";
  }
  entry.value = std::move(word);
}

/// Reads a line that is neither blank nor a comment.
ConfigEntry entry_of(std::string_view line, std::size_t number) {
  ConfigEntry entry{.line = number, .key = "", .value = "", .problem = ""};
  if (std::any_of(line.begin(), line.end(), is_control)) {
    entry.problem = "a control character";
    return entry;
  }
  const bool quoted = line[0] == '"' || line[0] == '\'';
  entry.key = quoted ? take_quoted(line, entry) : take_bare(line);
  skip_blanks(line);
  if (!entry.problem.empty()) return entry;
  if (entry.key.empty() || line.empty() || line[0] != '=') {
    entry.key.clear();
    entry.problem = "not understood; write one key = value a line";
    return entry;
  }
  line.remove_prefix(1);
  skip_blanks(line);
  take_value(line, entry);
  skip_blanks(line);
  if (entry.problem.empty() && !line.empty() && line[0] != '#') {
    entry.problem = "has more than one value";
  }
  return entry;
}

}  // namespace

std::vector<ConfigEntry> read_config(std::string_view text) {
  std::vector<ConfigEntry> entries;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    skip_blanks(line);
    if (!line.empty() && line[0] != '#') entries.push_back(entry_of(line, number));
  }
  return entries;
}

}  // namespace context_delta::cli
