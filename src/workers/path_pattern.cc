#include "workers/path_pattern.h"

namespace context_delta::git_history {
namespace {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

struct Matcher {
  bool any_case;

  bool is_same(char a, char b) const { return a == b || (any_case && lower(a) == lower(b)); }

  bool starts_with(std::string_view text, std::string_view start) const {
    if (!any_case) return text.starts_with(start);
    if (text.size() < start.size()) return false;
    for (std::size_t i = 0; i < start.size(); ++i) {
      if (!is_same(text[i], start[i])) return false;
    }
    return true;
  }

  static bool holds(std::string_view set, char c) {
    const bool is_other = set.starts_with('!');
    if (is_other) set.remove_prefix(1);
    bool found = false;
    for (std::size_t i = 0; i < set.size(); ++i) {
      if (i + 2 < set.size() && set[i + 1] == '-') {
        found |= set[i] <= c && c <= set[i + 2];
        i += 2;
      } else {
        found |= set[i] == c;
      }
    }
    return found != is_other;
  }

  bool any_star(std::string_view rest, std::string_view text) const {
    if (rest.empty()) return text.find('/') == std::string_view::npos;
    const char next = rest.front();
    const bool is_plain = next != '*' && next != '{' && next != '[';
    while (true) {
      if (!is_plain || (!text.empty() && is_same(next, text.front()))) {
        if (matches(rest, text)) return true;
      }
      if (text.empty() || text.front() == '/') return false;
      text.remove_prefix(1);
    }
  }

  bool any_alternative(std::string_view pattern, std::string_view text) const {
    const auto close = pattern.find('}');
    std::string_view choices = pattern.substr(1, close - 1);
    const std::string_view rest = pattern.substr(close + 1);
    while (true) {
      const std::string_view choice = choices.substr(0, choices.find(','));
      if (starts_with(text, choice) && matches(rest, text.substr(choice.size()))) return true;
      if (choice.size() == choices.size()) return false;
      choices.remove_prefix(choice.size() + 1);
    }
  }

  // From the start of `text` to its end, or to the end of a pattern for a folder.
  bool matches(std::string_view pattern, std::string_view text) const {
    while (!pattern.empty()) {
      const char next = pattern.front();
      if (next == '*') return any_star(pattern.substr(1), text);
      if (next == '{') return any_alternative(pattern, text);
      if (text.empty()) return false;
      if (next == '[') {
        const auto close = pattern.find(']');
        if (text.front() == '/' || !holds(pattern.substr(1, close - 1), text.front())) return false;
        pattern.remove_prefix(close);
      } else if (!is_same(next, text.front())) {
        return false;
      }
      if (pattern == "/") return true;
      pattern.remove_prefix(1);
      text.remove_prefix(1);
    }
    return text.empty();
  }
};

}  // namespace

bool matches_path(std::string_view pattern, std::string_view path, LetterCase letter_case) {
  const Matcher matcher{letter_case == LetterCase::ANY};
  if (pattern.starts_with('/')) return matcher.matches(pattern.substr(1), path);
  if (pattern.find('/') == std::string_view::npos) {
    return matcher.matches(pattern, path.substr(path.rfind('/') + 1));
  }
  while (true) {
    if (matcher.matches(pattern, path)) return true;
    const auto slash = path.find('/');
    if (slash == std::string_view::npos) return false;
    path.remove_prefix(slash + 1);
  }
}

}  // namespace context_delta::git_history
