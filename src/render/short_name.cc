#include "render/short_name.h"

#include <cstddef>

namespace context_delta::render {
namespace {

constexpr std::string_view SEPARATORS = ".:#/";

bool has_part(std::string_view path, std::string_view name) {
  while (true) {
    const std::size_t slash = path.find('/');
    const std::string_view part = path.substr(0, slash);
    // Of the file its name without suffixes.
    if (name == (slash == path.npos ? part.substr(0, part.find('.', 1)) : part)) return true;
    if (slash == path.npos) return false;
    path.remove_prefix(slash + 1);
  }
}

/// Calls `visit(start, end)` for each part that another follows, but for those inside brackets.
template <class Visit>
void each_outer_part(std::string_view fqn, Visit visit) {
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < fqn.size(); ++i) {
    const char byte = fqn[i];
    if (byte == '<' || byte == '(' || byte == '[' || byte == '{') ++depth;
    if ((byte == '>' || byte == ')' || byte == ']' || byte == '}') && depth > 0) --depth;
    if (depth > 0 || SEPARATORS.find(byte) == SEPARATORS.npos) continue;
    visit(start, i);
    start = i + 1;
  }
}

}  // namespace

std::string_view beyond_file(std::string_view fqn, std::string_view file) {
  std::size_t said = 0;
  if (fqn.starts_with(file) && fqn.size() > file.size() + 1 && fqn[file.size()] == ':') {
    said = file.size() + 1;
  }
  each_outer_part(fqn, [&](std::size_t start, std::size_t end) {
    if (start >= said && end > start && has_part(file, fqn.substr(start, end - start))) {
      said = end + 1;
    }
  });
  std::string_view rest = fqn.substr(said);
  while (!rest.empty() && SEPARATORS.find(rest.front()) != SEPARATORS.npos) rest.remove_prefix(1);
  return rest.empty() ? fqn : rest;
}

std::string_view last_name(std::string_view fqn) {
  std::size_t last = 0;
  each_outer_part(fqn, [&](std::size_t, std::size_t end) { last = end + 1; });
  return last < fqn.size() ? fqn.substr(last) : fqn;
}

}  // namespace context_delta::render
