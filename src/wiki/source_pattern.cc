#include "wiki/source_pattern.h"

#include <algorithm>
#include <vector>

namespace context_delta::wiki {
namespace {

constexpr std::size_t MOST_SOURCE_BYTES = 1024;

}  // namespace

std::string normal_source(std::string_view written) {
  std::string source;
  if (written.size() > MOST_SOURCE_BYTES) return source;
  if (std::any_of(written.begin(), written.end(),
                  [](char byte) { return static_cast<unsigned char>(byte) < 0x20; })) {
    return source;
  }
  while (!written.empty()) {
    const std::size_t slash = std::min(written.find('/'), written.size());
    const std::string_view name = written.substr(0, slash);
    written.remove_prefix(std::min(slash + 1, written.size()));
    if (name == "..") return "";
    if (name.empty() || name == ".") continue;
    if (!source.empty()) source += '/';
    source += name;
  }
  return source;
}

bool is_glob(std::string_view source) { return source.find_first_of("*?") != source.npos; }

bool glob_matches(std::string_view glob, std::string_view path) {
  // reached[i]: the part of the glob read so far matches the first i bytes of the path.
  std::vector<char> reached(path.size() + 1, 0);
  reached[0] = 1;
  while (!glob.empty()) {
    const bool any_depth = glob.starts_with("**");
    const bool star = glob.front() == '*';
    const bool optional_folders = glob.starts_with("**/");
    std::vector<char> next(path.size() + 1, 0);
    for (std::size_t i = 0; i <= path.size(); ++i) {
      if (star && !optional_folders) {
        next[i] = reached[i] || (i > 0 && next[i - 1] && (any_depth || path[i - 1] != '/'));
      } else if (optional_folders) {
        // `next` carries "some folder names read" until a '/' ends them.
        next[i] = reached[i] || (i > 0 && next[i - 1]);
      } else {
        next[i] = i > 0 && reached[i - 1] &&
                  (glob.front() == '?' ? path[i - 1] != '/' : path[i - 1] == glob.front());
      }
    }
    if (optional_folders) {
      for (std::size_t i = 0; i <= path.size(); ++i) {
        next[i] = reached[i] || (next[i] && i > 0 && path[i - 1] == '/');
      }
    }
    glob.remove_prefix(optional_folders ? 3 : any_depth ? 2 : 1);
    reached = std::move(next);
  }
  return reached[path.size()] != 0;
}

}  // namespace context_delta::wiki
