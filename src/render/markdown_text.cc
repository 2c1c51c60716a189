#include "render/markdown_text.h"

#include <algorithm>
#include <utility>

namespace context_delta::render {
namespace {

constexpr std::size_t LONGEST_NUMBER = 6;
constexpr std::size_t LONGEST_RUN = 24;  // parsers give up on spans and fences beyond some length
constexpr std::size_t SHORTEST_COMMIT_ID = 7;

std::size_t longest_run(std::string_view text) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char byte : text) {
    run = byte == '`' ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return longest;
}

/// `text` with backticks written out where more than LONGEST_RUN of them stand together.
std::string without_long_runs(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t start = std::min(text.find('`'), text.size());
    const std::size_t end = std::min(text.find_first_not_of('`', start), text.size());
    result += text.substr(0, start);
    for (std::size_t i = start; i < end; ++i) result += end - start > LONGEST_RUN ? "\\x60" : "`";
    text.remove_prefix(end);
  }
  return result;
}

bool is_letter(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }

/// Letters, with single apostrophes and hyphens within. Not what could name a commit: hosts turn
/// that into a link.
bool is_word(std::string_view text) {
  if (text.empty() || !is_letter(text.front()) || !is_letter(text.back())) return false;
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {
    const bool joint = text[i] == '\'' || text[i] == '-';
    if (joint ? !is_letter(text[i + 1]) : !is_letter(text[i])) return false;
  }
  return text.size() < SHORTEST_COMMIT_ID ||
         text.find_first_not_of("0123456789abcdefABCDEF") != text.npos;
}

bool is_number(std::string_view text) {
  return !text.empty() && text.size() <= LONGEST_NUMBER &&
         text.find_first_not_of("0123456789") == text.npos;
}

/// A word of a sentence with the marks around it, which are safe outside code spans.
struct Word {
  std::string_view before;
  std::string_view core;
  std::string_view after;
};

Word split_marks(std::string_view text) {
  const bool opened = text.starts_with('(') && text.size() > 1;
  const std::string_view core = text.substr(opened ? 1 : 0);
  const bool closes = opened || core.find('(') == core.npos;
  const std::size_t last = core.find_last_not_of(closes ? ".,;:)" : ".,;:");
  if (last == core.npos) return {text.substr(0, 0), text, text.substr(text.size())};
  return {text.substr(0, opened ? 1 : 0), core.substr(0, last + 1), core.substr(last + 1)};
}

bool is_harmless(const Word& word) {
  return is_word(word.core) || (is_number(word.core) && word.after.find('.') == word.after.npos);
}

}  // namespace

std::string code_span(std::string_view written) {
  if (written.empty()) return "(empty)";
  const std::string text = without_long_runs(written);
  const std::string ticks(longest_run(text) + 1, '`');
  const bool at_edge = text.front() == '`' || text.back() == '`';
  const bool blank_edges = text.front() == ' ' || text.back() == ' ';
  const std::string_view padding = at_edge || blank_edges ? " " : "";
  return std::string(ticks).append(padding).append(text).append(padding).append(ticks);
}

std::string code_cell(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t bar = std::min(text.find('|'), text.size());
    if (bar > 0) result += code_span(text.substr(0, bar));
    if (bar < text.size()) result += "&#124;";
    text.remove_prefix(std::min(bar + 1, text.size()));
  }
  return result.empty() ? code_span(text) : result;
}

std::string prose(std::string_view text) {
  std::string result;
  std::string held;  // words for one code span
  const auto put = [&](std::string_view words) {
    if (!result.empty()) result += ' ';
    result += words;
  };
  const auto release = [&] {
    if (!held.empty()) put(code_span(std::exchange(held, {})));
  };
  while (!text.empty()) {
    const std::size_t space = std::min(text.find(' '), text.size());
    const Word word = split_marks(text.substr(0, space));
    text.remove_prefix(std::min(space + 1, text.size()));
    if (word.core.empty()) continue;
    const bool harmless = is_harmless(word);
    if (harmless || !word.before.empty()) release();
    if (harmless) {
      put(std::string(word.before).append(word.core).append(word.after));
      continue;
    }
    held.append(held.empty() ? "" : " ").append(word.core);
    if (word.before.empty() && word.after.empty()) continue;
    put(std::string(word.before).append(code_span(std::exchange(held, {}))).append(word.after));
  }
  release();
  return result;
}

std::string fenced(std::string_view written, std::string_view language) {
  const std::string lines = without_long_runs(written);
  const std::string fence(std::max<std::size_t>(longest_run(lines) + 1, 3), '`');
  return std::string(fence)
      .append(language)
      .append("\n")
      .append(lines)
      .append(lines.empty() || lines.ends_with('\n') ? "" : "\n")
      .append(fence)
      .append("\n");
}

std::string_view fence_language(std::string_view path) {
  constexpr std::pair<std::string_view, std::string_view> LANGUAGES[] = {
      {"c", "c"},         {"cc", "cpp"},    {"cpp", "cpp"},     {"cs", "csharp"}, {"css", "css"},
      {"cxx", "cpp"},     {"go", "go"},     {"h", "cpp"},       {"hh", "cpp"},    {"hpp", "cpp"},
      {"html", "html"},   {"java", "java"}, {"js", "js"},       {"json", "json"}, {"jsx", "jsx"},
      {"kt", "kotlin"},   {"mjs", "js"},    {"php", "php"},     {"py", "python"}, {"pyi", "python"},
      {"rb", "ruby"},     {"rs", "rust"},   {"scala", "scala"}, {"sh", "sh"},     {"sql", "sql"},
      {"swift", "swift"}, {"toml", "toml"}, {"ts", "ts"},       {"tsx", "tsx"},   {"xml", "xml"},
      {"yaml", "yaml"},   {"yml", "yaml"},
  };
  const std::size_t dot = path.find_last_of("./");
  if (dot == path.npos || path[dot] == '/') return "";
  for (const auto& [suffix, language] : LANGUAGES) {
    if (path.substr(dot + 1) == suffix) return language;
  }
  return "";
}

}  // namespace context_delta::render
