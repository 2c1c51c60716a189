#include <array>
#include <string>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/builtins.h"
#include "indexer/languages/python/values.h"

namespace context_delta::indexer::python {
namespace {

constexpr int DEEPEST = 14;

/// The parts of a type between top-level separators.
std::vector<std::string_view> parts_of(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  int brackets = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '[' || text[i] == '(') ++brackets;
    if (text[i] == ']' || text[i] == ')') --brackets;
    if (text[i] != separator || brackets != 0) continue;
    parts.push_back(kit::trimmed(text.substr(start, i - start)));
    start = i + 1;
  }
  parts.push_back(kit::trimmed(text.substr(start)));
  return parts;
}

std::string_view without_quotes(std::string_view text) {
  text = kit::trimmed(text);
  while (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
         text.back() == text.front()) {
    text = kit::trimmed(text.substr(1, text.size() - 2));
  }
  return text;
}

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& names) {
  for (const std::string_view each : names) {
    if (each == name) return true;
  }
  return false;
}

constexpr std::array<std::string_view, 9> WRAPPERS = {"Optional", "Annotated", "Final",
                                                      "ClassVar", "Required",  "NotRequired",
                                                      "ReadOnly", "Awaitable", "Union"};
constexpr std::array<std::string_view, 6> MAPPINGS = {
    "dict", "Dict", "Mapping", "MutableMapping", "defaultdict", "OrderedDict"};
constexpr std::array<std::string_view, 19> SEQUENCES = {"list",
                                                        "List",
                                                        "Sequence",
                                                        "MutableSequence",
                                                        "Iterable",
                                                        "Iterator",
                                                        "Collection",
                                                        "set",
                                                        "Set",
                                                        "AbstractSet",
                                                        "frozenset",
                                                        "FrozenSet",
                                                        "deque",
                                                        "Deque",
                                                        "tuple",
                                                        "Tuple",
                                                        "Generator",
                                                        "ContextManager",
                                                        "AbstractContextManager"};

}  // namespace

Value Evaluator::annotation_value(const File& file, DefinitionIndex scope, std::string_view text,
                                  int depth) {
  if (depth > DEEPEST) return {};
  text = without_quotes(text);
  std::string_view only;
  for (const std::string_view part : parts_of(text, '|')) {
    if (part == "None") continue;
    if (!only.empty()) return {};
    only = part;
  }
  only = without_quotes(only);
  const std::size_t bracket = only.find('[');
  if (bracket != std::string_view::npos && only.back() == ']') {
    const std::string_view arguments = only.substr(bracket + 1, only.size() - bracket - 2);
    return generic_annotation(file, scope, kit::trimmed(only.substr(0, bracket)), arguments,
                              depth + 1);
  }
  const std::string_view name = only.substr(only.rfind('.') + 1);
  if (name == "Any" || name == "object" || name == "Callable") return {};
  if (name == "Self") {
    Value made = enclosing_class(file, scope);
    if (made.kind == Value::Kind::CLASS) made.kind = Value::Kind::INSTANCE;
    return made;
  }
  Value type = dotted_value(file, scope, only, depth + 1);
  if (type.kind == Value::Kind::EXTERNAL) return type;
  if (type.kind != Value::Kind::CLASS) return {};
  type.kind = Value::Kind::INSTANCE;
  type.exact = false;
  return type;
}

Value Evaluator::generic_annotation(const File& file, DefinitionIndex scope, std::string_view head,
                                    std::string_view arguments, int depth) {
  const std::string_view name = head.substr(head.rfind('.') + 1);
  const std::vector<std::string_view> parts = parts_of(arguments, ',');
  if (is_one_of(name, WRAPPERS)) {
    if (name != "Union") return annotation_value(file, scope, parts.front(), depth + 1);
    std::string joined;
    for (const std::string_view part : parts)
      joined += (joined.empty() ? "" : "|") + std::string(part);
    return annotation_value(file, scope, joined, depth + 1);
  }
  if (name == "type" || name == "Type") {
    Value made = annotation_value(file, scope, parts.front(), depth + 1);
    if (made.kind == Value::Kind::INSTANCE) made.kind = Value::Kind::CLASS;
    return made;
  }
  const bool is_mapping = is_one_of(name, MAPPINGS);
  if (!is_mapping && !is_one_of(name, SEQUENCES)) {
    return annotation_value(file, scope, head, depth + 1);
  }
  Value made;
  made.kind = Value::Kind::EXTERNAL;
  made.file = &file;
  made.definition = scope;
  made.element = std::string(is_mapping && parts.size() > 1 ? parts[1] : parts.front());
  return made;
}

}  // namespace context_delta::indexer::python
