#include "indexer/languages/ecmascript/jsdoc.h"

#include <algorithm>

#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::trimmed;

constexpr std::size_t LONGEST_COMMENT = 20000;

/// The text in the braces that `text` starts with, and what follows; both empty without braces.
std::pair<std::string_view, std::string_view> braced(std::string_view text) {
  if (!text.starts_with('{')) return {};
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '{') ++depth;
    if (text[i] == '}' && --depth == 0) return {text.substr(1, i - 1), text.substr(i + 1)};
  }
  return {};
}

std::string type_text(std::string_view written) {
  std::string made;
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (written[i] == '*' && i > 0 && written[i - 1] == '\n') continue;
    if (written.substr(i, 2) == ".<") continue;
    made += written[i];
  }
  made = kit::one_line(made);
  std::string_view type = made;
  if (type.starts_with("...")) type.remove_prefix(3);
  while (!type.empty() && (type.front() == '?' || type.front() == '!')) type.remove_prefix(1);
  while (!type.empty() && (type.back() == '=' || type.back() == '?')) type.remove_suffix(1);
  return type == "*" ? std::string() : std::string(trimmed(type));
}

/// The name at the start of `text`, brackets of an optional parameter left out; empty for the
/// property of a parameter.
std::string_view name_in(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('[')) text.remove_prefix(1);
  std::size_t end = 0;
  while (end < text.size() && is_name_byte(text[end])) ++end;
  const bool property = end < text.size() && (text[end] == '.' || text[end] == '[');
  return property ? std::string_view() : text.substr(0, end);
}

void read_tag(Documentation& made, std::string_view tag, std::string_view rest) {
  const auto [written, after] = braced(trimmed(rest));
  if (written.empty()) return;
  const std::string type = type_text(written);
  if (type.empty()) return;
  if (tag == "param" || tag == "arg" || tag == "argument") {
    const std::string_view name = name_in(after);
    if (!name.empty()) made.parameters.emplace_back(name, type);
  } else if (tag == "returns" || tag == "return") {
    made.returns = type;
  } else if (tag == "type") {
    made.type = type;
  } else if (tag == "typedef") {
    const std::string_view name = name_in(after);
    if (!name.empty()) made.types.emplace_back(name, type);
  }
}

}  // namespace

std::string_view Documentation::parameter(std::string_view name) const {
  const auto found = std::find_if(parameters.begin(), parameters.end(),
                                  [&](const auto& each) { return each.first == name; });
  return found == parameters.end() ? std::string_view() : std::string_view(found->second);
}

Documentation read_documentation(std::string_view comment) {
  Documentation made;
  if (!comment.starts_with("/**") || !comment.ends_with("*/") || comment.size() < 5) return made;
  if (comment.size() > LONGEST_COMMENT) return made;
  comment = comment.substr(3, comment.size() - 5);
  std::string lines;  // without the stars that lines begin with
  for (const std::string_view line : kit::split(comment, '\n')) {
    std::string_view content = trimmed(line);
    if (content.starts_with('*')) content = trimmed(content.substr(1));
    lines += std::string(content) + "\n";
  }
  std::size_t at = 0;
  while ((at = lines.find('@', at)) != std::string::npos) {
    ++at;
    std::size_t end = at;
    while (end < lines.size() && is_name_byte(lines[end])) ++end;
    const std::size_t next = std::min(lines.find("\n@", end), lines.size());
    read_tag(made, std::string_view(lines).substr(at, end - at),
             std::string_view(lines).substr(end, next - end));
    at = end;
  }
  return made;
}

}  // namespace context_delta::indexer::ecmascript
