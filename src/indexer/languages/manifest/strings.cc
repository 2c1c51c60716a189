#include "indexer/languages/manifest/strings.h"

#include <vector>

namespace context_delta::indexer::manifest {
namespace {

constexpr std::size_t DEEPEST = 16;

struct Level {
  bool list = false;
  int index = 0;
  std::string key;
};

/// The place after the comment that starts at `at`.
std::size_t after_comment(std::string_view text, std::size_t at) {
  const bool line = text[at + 1] == '/';
  const std::size_t end = text.find(line ? "\n" : "*/", at + 2);
  if (end == std::string_view::npos) return text.size();
  return end + (line ? 1 : 2);
}

/// The string that starts behind the quote at `at`, which moves behind its end.
std::string string_at(std::string_view text, std::size_t& at) {
  std::string made;
  for (++at; at < text.size() && text[at] != '"'; ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) ++at;
    made += text[at];
  }
  ++at;
  return made;
}

std::string path_of(const std::vector<Level>& levels) {
  std::string path;
  for (const Level& level : levels) {
    if (!path.empty()) path += '|';
    path += level.list ? std::to_string(level.index) : level.key;
  }
  return path;
}

bool is_key(std::string_view text, std::size_t at) {
  while (at < text.size() &&
         (text[at] == ' ' || text[at] == '\n' || text[at] == '\t' || text[at] == '\r')) {
    ++at;
  }
  return at < text.size() && text[at] == ':';
}

}  // namespace

void for_each_string(std::string_view text,
                     const std::function<void(const std::string& path, std::string_view)>& found) {
  std::vector<Level> levels;
  std::size_t skipped = 0;  // levels too deep
  for (std::size_t at = 0; at < text.size();) {
    const char byte = text[at];
    if (byte == '"') {
      const std::string string = string_at(text, at);
      if (levels.empty() || skipped > 0) continue;
      if (!levels.back().list && is_key(text, at)) {
        levels.back().key = string;
      } else {
        found(path_of(levels), string);
      }
      continue;
    }
    const bool comment =
        byte == '/' && at + 1 < text.size() && (text[at + 1] == '/' || text[at + 1] == '*');
    if (comment) {
      at = after_comment(text, at);
      continue;
    }
    ++at;
    if (byte == '{' || byte == '[') {
      if (levels.size() >= DEEPEST) {
        ++skipped;
      } else {
        levels.push_back({byte == '[', 0, {}});
      }
    } else if (byte == '}' || byte == ']') {
      if (skipped > 0) {
        --skipped;
      } else if (!levels.empty()) {
        levels.pop_back();
      }
    } else if (byte == ',' && skipped == 0 && !levels.empty()) {
      ++levels.back().index;
    }
  }
}

}  // namespace context_delta::indexer::manifest
