#include <algorithm>
#include <array>

#include "indexer/languages/cpp/lookup.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::cpp {
namespace {

using kit::Binder;
using kit::definition_at;

constexpr int DEEPEST = 12;

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 6> POINTERS = {
    "unique_ptr", "shared_ptr", "weak_ptr", "optional", "atomic", "reference_wrapper"};
constexpr std::array<std::string_view, 13> SEQUENCES = {
    "vector",           "deque",    "list",  "set",
    "unordered_set",    "array",    "span",  "queue",
    "initializer_list", "multiset", "stack", "priority_queue",
    "forward_list"};
constexpr std::array<std::string_view, 4> MAPPINGS = {"map", "unordered_map", "multimap",
                                                      "unordered_multimap"};
constexpr std::array<std::string_view, 6> ELEMENTS = {"back", "front", "at", "top", "value", "get"};

/// The length of a name with scopes and template arguments at the start of an expression.
std::size_t name_length(std::string_view text) {
  std::size_t at = 0;
  int angles = 0;
  while (at < text.size()) {
    const char byte = text[at];
    if (byte == '<') ++angles;
    const bool inside = angles > 0;
    if (byte == '>' && angles > 0) --angles;
    const bool part =
        kit::is_identifier_byte(byte) || byte == '~' ||
        (byte == ':' && (text.substr(at, 2) == "::" || (at > 0 && text[at - 1] == ':')));
    if (!inside && !part) break;
    ++at;
  }
  return at;
}

/// The arguments of `name<a, b>`.
std::vector<std::string_view> template_arguments(std::string_view written) {
  std::vector<std::string_view> parts;
  const std::size_t open = written.find('<');
  if (open == std::string_view::npos || !written.ends_with('>')) return parts;
  const std::string_view inner = written.substr(open + 1, written.size() - open - 2);
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < inner.size(); ++i) {
    if (inner[i] == '<' || inner[i] == '(') ++depth;
    if (inner[i] == '>' || inner[i] == ')') --depth;
    if (inner[i] != ',' || depth != 0) continue;
    parts.push_back(kit::trimmed(inner.substr(start, i - start)));
    start = i + 1;
  }
  parts.push_back(kit::trimmed(inner.substr(start)));
  return parts;
}

/// `const Foo*` and `Foo&` as `Foo`.
std::string_view without_qualifiers(std::string_view type) {
  type = kit::trimmed(type);
  while (type.ends_with('*') || type.ends_with('&')) {
    type = kit::trimmed(type.substr(0, type.size() - 1));
  }
  for (const std::string_view word : {"const ", "struct ", "class ", "typename "}) {
    if (type.starts_with(word)) type = kit::trimmed(type.substr(word.size()));
  }
  if (type.ends_with(" const")) type = kit::trimmed(type.substr(0, type.size() - 6));
  return type;
}

}  // namespace

Type Lookup::templated(const Context& context, std::string_view written, int) {
  const std::string path = dotted(written);
  const std::string name =
      path.substr(path.rfind('.') == std::string::npos ? 0 : path.rfind('.') + 1);
  const bool is_std = path.starts_with("std.");
  const bool known = is_std || world_.definitions(name).empty();
  Type made;
  // A single letter or an unknown name may be a template parameter.
  if (!is_std && (!known || name.size() < 3)) return made;
  made.kind = Type::Kind::EXTERNAL;
  made.name = name;
  made.context = context;
  const std::size_t open = written.find('<');
  if (open != std::string_view::npos) made.arguments = std::string(written);
  return made;
}

Type Lookup::pointee(const Type& type) {
  if (type.kind != Type::Kind::EXTERNAL || !is_one_of(type.name, POINTERS)) return type;
  const std::vector<std::string_view> arguments = template_arguments(type.arguments);
  if (arguments.empty()) return type;
  return type_named(type.context, without_qualifiers(arguments[0]));
}

Type Lookup::type_of(const Context& context, std::string_view expression, int depth) {
  if (depth > DEEPEST || expression.empty()) return {};
  const std::size_t end = name_length(expression);
  if (end == 0) return {};
  const std::string_view head = expression.substr(0, end);
  std::string_view rest = expression.substr(end);
  const bool called = rest.starts_with("()");
  if (called) rest.remove_prefix(2);
  Type type = head_type(context, head, called, depth + 1);
  for (int step = 0; step < DEEPEST && !rest.empty(); ++step) {
    if (rest.starts_with("[]")) {
      type = element_type(type, depth + 1);
      rest.remove_prefix(2);
    } else if (rest.starts_with('.')) {
      rest.remove_prefix(1);
      const std::size_t size = name_length(rest);
      const std::string_view name = rest.substr(0, size);
      rest.remove_prefix(size);
      const bool method = rest.starts_with("()");
      if (method) rest.remove_prefix(2);
      if (size == 0) return {};
      type = member_type(type, name, method, depth + step + 1);
    } else {
      return {};
    }
  }
  return type;
}

Type Lookup::head_type(const Context& context, std::string_view head, bool called, int depth) {
  if (depth > DEEPEST) return {};
  if (head == "this") return enclosing_class(context);
  if (!called) return variable_type(context, head, depth + 1);
  const std::string path = dotted(head);
  const std::size_t dot = path.rfind('.');
  const std::string name = dot == std::string::npos ? path : path.substr(dot + 1);
  if (name == "make_unique" || name == "make_shared" || name == "get_if") {
    const std::vector<std::string_view> arguments = template_arguments(head);
    return arguments.empty() ? Type{}
                             : type_named(context, without_qualifiers(arguments[0]), depth + 1);
  }
  const std::size_t colons = head.rfind("::");
  if (is_local(context, head)) return {};
  Callees callees;
  if (colons != std::string_view::npos && head.find('<') == std::string_view::npos) {
    callees = qualified_function(context, head.substr(0, colons + 2), name, ANY_NUMBER);
  } else {
    const Type owner = enclosing_class(context);
    if (owner.kind == Type::Kind::CLASS) callees = method(owner.in, name, ANY_NUMBER, false);
    if (!callees.found) callees = function(context, name, ANY_NUMBER);
  }
  if (callees.found && !callees.external) return result_type(callees, depth + 1);
  return type_named(context, head, depth + 1);
}

/// The type that all callees agree on.
Type Lookup::result_type(const Callees& callees, int depth) {
  Type common;
  bool first = true;
  for (const Candidate& each : callees.fitting) {
    const Context there = {.file = each.file, .scope = each.container};
    const Type type = type_named(there, without_qualifiers(definition(each).type), depth + 1);
    const bool same = !first && type.kind == common.kind &&
                      (type.kind != Type::Kind::CLASS || type.in == common.in);
    if (!first && !same) return {};
    common = type;
    first = false;
  }
  return common;
}

Type Lookup::variable_type(const Context& context, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  for (DefinitionIndex at = context.definition; at != NOWHERE;
       at = definition_at(facts_, at).parent) {
    if (!kit::is_function_kind(definition_at(facts_, at).kind)) continue;
    Type common;
    bool found = false;
    for (const Binder& binder : scopes_.find(at, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      const Type type =
          binding_type(context, facts_.bindings[static_cast<std::size_t>(binder.index)], depth + 1);
      const bool same =
          type.kind == common.kind && (type.kind != Type::Kind::CLASS || type.in == common.in);
      if (found && !same) return {};
      common = type;
      found = true;
    }
    if (found) return common;
  }
  const Type owner = enclosing_class(context);
  if (owner.kind == Type::Kind::CLASS && name.find(':') == std::string_view::npos) {
    for (const Class& each : bases(owner.in).classes) {
      if (!outline(*each.file).find(each.definition, name).empty()) {
        return member_type(owner, name, false, depth + 1);
      }
    }
  }
  const std::string path = dotted(name);
  const std::size_t dot = path.rfind('.');
  const std::string last = dot == std::string::npos ? path : path.substr(dot + 1);
  for (const Candidate& candidate : world_.definitions(last)) {
    if (candidate.kind != Kind::VARIABLE || !is_visible(*candidate.file)) continue;
    return type_named({.file = candidate.file, .scope = candidate.container},
                      without_qualifiers(definition(candidate).type), depth + 1);
  }
  return {};
}

Type Lookup::binding_type(const Context& context, const Binding& binding, int depth) {
  const std::string_view type = without_qualifiers(binding.type);
  if (type != "auto" && !type.empty()) return type_named(context, type, depth + 1);
  if (binding.value.empty() || binding.value == binding.name) return {};
  return type_of(context, binding.value, depth + 1);
}

Type Lookup::member_type(const Type& owner, std::string_view name, bool called, int depth) {
  if (depth > DEEPEST) return {};
  if (owner.kind == Type::Kind::EXTERNAL) {
    const std::vector<std::string_view> arguments = template_arguments(owner.arguments);
    if (!arguments.empty() && is_one_of(owner.name, POINTERS)) {
      const Type inner = type_named(owner.context, without_qualifiers(arguments[0]), depth + 1);
      if (name == "get" || name == "value" || name == "load") return inner;
      return inner.kind == Type::Kind::CLASS ? member_type(inner, name, called, depth + 1) : inner;
    }
    if (called && is_one_of(name, ELEMENTS)) return element_type(owner, depth + 1);
    Type made;
    made.kind = Type::Kind::EXTERNAL;
    return made;
  }
  if (owner.kind != Type::Kind::CLASS) return {};
  if (called) return result_type(method(owner.in, name, ANY_NUMBER, false), depth + 1);
  for (const Class& each : bases(owner.in).classes) {
    for (const Binder& binder : outline(*each.file).find(each.definition, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      const std::string& type = outline(*each.file).binding(binder).type;
      return type_named({.file = each.file, .scope = each.name}, without_qualifiers(type),
                        depth + 1);
    }
  }
  return {};
}

/// Behind `[]`: the element of a container; a pointer's target has the pointer's type.
Type Lookup::element_type(const Type& container, int depth) {
  if (depth > DEEPEST) return {};
  if (container.kind == Type::Kind::CLASS) {
    const Callees callees = method(container.in, "operator[]", ANY_NUMBER, false);
    return callees.found ? result_type(callees, depth + 1) : container;
  }
  if (container.kind != Type::Kind::EXTERNAL) return {};
  const std::vector<std::string_view> arguments = template_arguments(container.arguments);
  if (arguments.empty()) return {};
  if (is_one_of(container.name, SEQUENCES) || container.name == "unique_ptr") {
    return type_named(container.context, without_qualifiers(arguments[0]), depth + 1);
  }
  if (is_one_of(container.name, MAPPINGS) && arguments.size() > 1) {
    return type_named(container.context, without_qualifiers(arguments[1]), depth + 1);
  }
  return {};
}

}  // namespace context_delta::indexer::cpp
