#include "indexer/languages/go/types.h"

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

constexpr std::size_t NOT_FOUND = std::string_view::npos;

/// The place of the bracket that closes the one at the start of `text`.
std::size_t closing(std::string_view text) {
  int open = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (byte == '(' || byte == '[' || byte == '{') ++open;
    if (byte == ')' || byte == ']' || byte == '}') --open;
    if (open == 0) return i;
  }
  return NOT_FOUND;
}

std::optional<std::string_view> behind(std::string_view text, std::string_view word) {
  if (!text.starts_with(word)) return std::nullopt;
  return kit::trimmed(text.substr(word.size()));
}

/// A result or parameter without the name before its type.
std::string_view without_name(std::string_view part) {
  const std::size_t space = part.find(' ');
  if (space == NOT_FOUND) return part;
  const std::string_view first = part.substr(0, space);
  if (!kit::is_identifier(first) || first == "chan" || first == "func" || first == "struct" ||
      first == "interface" || first == "map") {
    return part;
  }
  return kit::trimmed(part.substr(space));
}

}  // namespace

std::string_view without_pointers(std::string_view type) {
  type = kit::trimmed(type);
  while (!type.empty()) {
    if (type.front() == '*' || type.front() == '~') {
      type = kit::trimmed(type.substr(1));
    } else if (type.front() == '(' && closing(type) == type.size() - 1) {
      type = kit::trimmed(type.substr(1, type.size() - 2));
    } else {
      break;
    }
  }
  return type;
}

std::vector<std::string_view> split_list(std::string_view list) {
  std::vector<std::string_view> found;
  int open = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const char byte = list[i];
    if (byte == '(' || byte == '[' || byte == '{') ++open;
    if (byte == ')' || byte == ']' || byte == '}') --open;
    if (byte != ',' || open != 0) continue;
    found.push_back(kit::trimmed(list.substr(start, i - start)));
    start = i + 1;
  }
  const std::string_view last = kit::trimmed(list.substr(start));
  if (!last.empty()) found.push_back(last);
  return found;
}

std::optional<std::string_view> element_type(std::string_view type) {
  type = without_pointers(type);
  if (type.starts_with("map[")) type.remove_prefix(3);
  if (!type.starts_with('[')) return std::nullopt;
  const std::size_t end = closing(type);
  if (end == NOT_FOUND || end + 1 >= type.size()) return std::nullopt;
  return kit::trimmed(type.substr(end + 1));
}

std::optional<std::string_view> map_key(std::string_view type) {
  type = without_pointers(type);
  if (!type.starts_with("map[")) return std::nullopt;
  type.remove_prefix(3);
  const std::size_t end = closing(type);
  if (end == NOT_FOUND) return std::nullopt;
  return kit::trimmed(type.substr(1, end - 1));
}

std::optional<std::string_view> channel_element(std::string_view type) {
  type = without_pointers(type);
  for (const std::string_view start : {"<-chan ", "chan<- ", "chan "}) {
    const auto found = behind(type, start);
    if (found) return found;
  }
  return std::nullopt;
}

std::optional<std::string_view> function_parameters(std::string_view type) {
  const auto list = behind(without_pointers(type), "func");
  if (!list || !list->starts_with('(')) return std::nullopt;
  const std::size_t end = closing(*list);
  if (end == NOT_FOUND) return std::nullopt;
  return list->substr(1, end - 1);
}

std::optional<std::string_view> function_results(std::string_view type) {
  const auto list = behind(without_pointers(type), "func");
  if (!list || !list->starts_with('(')) return std::nullopt;
  const std::size_t end = closing(*list);
  if (end == NOT_FOUND) return std::nullopt;
  return kit::trimmed(list->substr(end + 1));
}

std::optional<std::string_view> result_type(std::string_view results, std::size_t number) {
  results = kit::trimmed(results);
  if (!results.starts_with('(') || closing(results) != results.size() - 1) {
    return number == 0 && !results.empty() ? std::optional(results) : std::nullopt;
  }
  const std::vector<std::string_view> list = split_list(results.substr(1, results.size() - 2));
  if (number >= list.size()) return std::nullopt;
  bool named = false;
  for (const std::string_view part : list) named = named || without_name(part) != part;
  // Of `a, b T`, the first part has its type further on.
  while (named && number + 1 < list.size() && without_name(list[number]) == list[number]) ++number;
  return without_name(list[number]);
}

NamedType named_type_of(std::string_view type) {
  type = without_pointers(type);
  std::size_t end = 0;
  while (end < type.size() &&
         (kit::is_identifier_byte(type[end]) || type[end] == '.' || type[end] == '$')) {
    ++end;
  }
  const std::string_view name = type.substr(0, end);
  const std::string_view rest = type.substr(end);
  if (name.empty() || name == "func" || name == "map") return {};
  if (rest.empty()) return {name, {}};
  if (!rest.starts_with('[') || closing(rest) != rest.size() - 1) return {};
  return {name, rest.substr(1, rest.size() - 2)};
}

}  // namespace context_delta::indexer::go
