#include <algorithm>
#include <cctype>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/evaluator.h"
#include "indexer/languages/rust/library.h"

namespace context_delta::indexer::rust {
namespace {

using kit::Binder;

constexpr int DEEPEST = 60;
constexpr int MOST_DEREFERENCES = 4;

/// The end of what the bracket at the start of `text` opens, behind the bracket that closes it.
std::size_t bracket_end(std::string_view text) {
  int open = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    const bool arrow = byte == '>' && i > 0 && text[i - 1] == '-';
    if (byte == '(' || byte == '[' || byte == '<' || byte == '{') ++open;
    if (byte == ')' || byte == ']' || byte == '}' || (byte == '>' && !arrow)) --open;
    if (open == 0) return i + 1;
  }
  return text.size();
}

std::size_t name_end(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size() && kit::is_identifier_byte(text[end])) ++end;
  return end;
}

/// The end of the path at the start of `text`: `a::b<T>::c`, `<T as A>::f`.
std::size_t path_end(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size()) {
    if (text[end] == '<') {
      end += bracket_end(text.substr(end));
    } else if (text.substr(end).starts_with("::")) {
      end += 2;
    } else {
      const std::size_t more = name_end(text.substr(end));
      if (more == 0) break;
      end += more;
    }
  }
  return end;
}

/// The parts of `(a, b)`.
std::vector<std::string_view> tuple_parts(std::string_view text) {
  std::vector<std::string_view> parts;
  text = text.substr(1, text.size() >= 2 ? text.size() - 2 : 0);
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ',') {
      parts.push_back(kit::trimmed(text.substr(start, i - start)));
      start = ++i;
    } else if (text[i] == '(' || text[i] == '[' || text[i] == '<' || text[i] == '{') {
      i += bracket_end(text.substr(i));
    } else {
      ++i;
    }
  }
  parts.push_back(kit::trimmed(text.substr(start)));
  return parts;
}

Type external(std::string_view name, std::vector<Type> arguments = {}) {
  Type made;
  made.kind = Type::Kind::EXTERNAL;
  made.name = name;
  made.arguments = std::move(arguments);
  return made;
}

}  // namespace

Type Evaluator::value_type(DefinitionIndex scope, std::string_view text, int depth) {
  if (depth > DEEPEST || text.empty()) return {};
  Type at = head_type(scope, text, depth + 1);
  while (!text.empty()) {
    const std::size_t before = text.size();
    at = stepped(scope, at, text, depth + 1);
    if (text.size() == before) return {};
  }
  return at;
}

/// The type of what a text starts with; `text` goes on behind it.
Type Evaluator::head_type(DefinitionIndex scope, std::string_view& text, int depth) {
  const auto take = [&](std::size_t size) {
    const std::string_view taken = text.substr(0, size);
    text.remove_prefix(size);
    return taken;
  };
  if (text.starts_with('?') || text.starts_with('!')) {
    take(1);
    return {};
  }
  if (text.starts_with('(')) {
    Type made;
    made.kind = Type::Kind::TUPLE;
    for (const std::string_view part : tuple_parts(take(bracket_end(text)))) {
      made.arguments.push_back(value_type(scope, part, depth + 1));
    }
    return made;
  }
  const std::size_t bracket = text.starts_with('<') ? bracket_end(text) : 0;
  if (bracket > 1 && !text.substr(bracket).starts_with("::")) {
    return type_of_text(file_, scope, take(bracket).substr(1, bracket - 2));
  }
  const std::size_t word = name_end(text);
  if (text.substr(word).starts_with('@')) {
    std::size_t end = word + 1;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0) ++end;
    return binding_type(scope, take(end), depth + 1);
  }
  if (text.substr(0, word) == "self" && !text.substr(word).starts_with("::")) {
    take(word);
    return self_type(file_, scope);
  }
  const std::size_t end = path_end(text);
  if (end == 0) return {};
  const TypeText path = parse_type(take(end));
  const bool called = text.starts_with("()") || text.starts_with('{');
  if (!called) return constant_type(scope, path);
  const std::string_view arguments = take(bracket_end(text));
  Type given;
  if (arguments != "()") {
    given = value_type(scope, arguments.substr(1, arguments.size() - 2), depth + 1);
  }
  return called_type(scope, path, given);
}

/// What a call of a path returns.
Type Evaluator::called_type(DefinitionIndex scope, const TypeText& path, const Type& given) {
  const Callee callee = path_callee(file_, scope, path);
  if (callee.kind != Callee::Kind::EXTERNAL) return returned_type(callee);
  const std::string_view name = path.path.empty() ? std::string_view() : path.path.back().name;
  if (name == "Some") return external("Option", {given});
  if (name == "Ok") return external("Result", {given, Type{}});
  if (name == "Err") return external("Result", {Type{}, given});
  if (name == "take") return given;
  const bool makes_itself = name == "new" || name == "from" || name == "default" ||
                            name == "with_capacity" || name == "pin";
  if (!makes_itself || callee.self.kind != Type::Kind::EXTERNAL) return {};
  Type made = callee.self;
  if (made.arguments.empty() && given.known()) made.arguments.push_back(given);
  return made;
}

/// The type of a constant, a static variable or a unit struct.
Type Evaluator::constant_type(DefinitionIndex scope, const TypeText& path) {
  if (path.kind != TypeText::Kind::PATH) return {};
  if (path.path.front().name == "Self" && path.path.size() == 2) {
    return impl_member(self_type(file_, scope), path.path.back().name, "const", 0);
  }
  std::size_t used = 0;
  const Meaning meaning = path_meaning(file_, scope, path.path, Space::VALUE, used);
  if (used + 1 == path.path.size()) {
    return impl_member(named_type(meaning, {}, 0), path.path.back().name, "const", 0);
  }
  if (used != path.path.size()) return {};
  if (meaning.kind == Meaning::Kind::VARIANT) return named_type(meaning, {}, 0);
  if (meaning.kind != Meaning::Kind::DEFINITION) return {};
  const Definition& found = definition(*meaning.file, meaning.definition);
  if (found.kind == Kind::STRUCT) return named_type(meaning, {}, 0);
  if (found.kind != Kind::VARIABLE) return {};
  return type_of_text(*meaning.file, found.parent, found.type);
}

/// The type after one step of an expression; `text` goes on behind it.
Type Evaluator::stepped(DefinitionIndex scope, const Type& type, std::string_view& text,
                        int depth) {
  const char operation = text.front();
  text.remove_prefix(1);
  if (operation == '?') return unwrapped(type, "Ok");
  if (operation == '%') return element(type);
  if (operation == '[') {
    text.remove_prefix(std::min<std::size_t>(1, text.size()));
    return indexed(type);
  }
  if (operation == '@') {
    const std::size_t end = name_end(text);
    const std::string_view name = text.substr(0, end);
    text.remove_prefix(end);
    const Type found = closure_argument(type, name);
    return found.known() || type.kind == Type::Kind::EXTERNAL ? found : element(type);
  }
  if (operation == '~') {
    const std::size_t end = path_end(text);
    const std::string_view path = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t field_end = name_end(text);
    const std::string_view name = text.substr(0, field_end);
    text.remove_prefix(field_end);
    return matched(scope, type, path, name);
  }
  if (operation != '.') return {};
  const std::size_t end = name_end(text);
  const std::string_view name = text.substr(0, end);
  text.remove_prefix(end);
  Type asked;
  if (text.starts_with("::<")) {
    text.remove_prefix(2);
    const std::size_t bracket = bracket_end(text);
    asked = type_of_text(file_, scope, text.substr(1, bracket >= 2 ? bracket - 2 : 0));
    text.remove_prefix(bracket);
  }
  const bool called = text.starts_with("()") || text.starts_with('{');
  if (!called) return field(type, name);
  const std::size_t bracket = bracket_end(text);
  const std::string_view arguments = text.substr(0, bracket);
  text.remove_prefix(bracket);
  Type given = asked;
  if (arguments != "()") {
    given = value_type(scope, arguments.substr(1, arguments.size() - 2), depth + 1);
  }
  return method_result(type, name, given, asked);
}

/// What a call of the method `name` returns; `given` is what its closure returns, `asked` what its
/// type arguments say.
Type Evaluator::method_result(const Type& type, std::string_view name, const Type& given,
                              const Type& asked) {
  const Callee callee = method(type, name);
  if (callee.kind == Callee::Kind::FOUND) return returned_type(callee);
  if (name == "parse" && asked.known()) return external("Result", {asked, Type{}});
  Type behind = type;
  for (int step = 0; behind.known() && step < MOST_DEREFERENCES; ++step) {
    const Type found = result_of(behind, name, given);
    if (found.known()) return found;
    behind = dereferenced(behind);
  }
  if (type.kind == Type::Kind::EXTERNAL) return {};
  // What derive makes, and what every iterator has.
  if (name == "clone" || name == "to_owned" || name == "borrow" || name == "by_ref" ||
      name == "into_iter" || name == "as_ref") {
    return type;
  }
  const Type item = element(type);
  return item.known() ? result_of(external("Iterator", {item}), name, given) : Type{};
}

Type Evaluator::indexed(const Type& type) {
  Type at = type;
  for (int step = 0; at.known() && step < MOST_DEREFERENCES; ++step) {
    const Type found = element_of(at);
    // The elements of maps are pairs; their values are what an index finds.
    if (found.kind == Type::Kind::TUPLE && !at.arguments.empty()) return at.arguments.back();
    if (found.known()) return found;
    const Type output = associated(at, "Output");
    if (output.known()) return output;
    at = dereferenced(at);
  }
  return {};
}

Type Evaluator::element(const Type& type) {
  const Type found = element_of(type);
  if (found.known() || type.kind == Type::Kind::EXTERNAL) return found;
  return associated(type, "Item");
}

Type Evaluator::binding_type(DefinitionIndex scope, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  const auto [known, added] = values_.try_emplace({0, scope, std::string(name)});
  if (!added) return known->second;
  Type made;
  for (const Binder& binder : outline(file_).find(scope, name)) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    const Binding& each = outline(file_).binding(binder);
    made = each.type.empty() ? value_type(scope, each.value, depth + 1)
                             : type_of_text(file_, scope, each.type);
    break;
  }
  values_[{0, scope, std::string(name)}] = made;
  return made;
}

/// The field of what a pattern takes apart.
Type Evaluator::matched(DefinitionIndex scope, const Type& type, std::string_view path,
                        std::string_view name) {
  if (path == "Some" || path == "Ok" || path == "Err") return unwrapped(type, path);
  const TypeText text = parse_type(path);
  if (text.kind != TypeText::Kind::PATH) return {};
  if (text.path.front().name == "Self" && text.path.size() == 1) return field(type, name);
  Type owner;
  std::int32_t variant = -1;
  if (text.path.front().name == "Self") {
    owner = self_type(file_, scope);
    if (owner.kind != Type::Kind::NAMED || text.path.size() != 2) return {};
    variant = variant_of(*owner.file, owner.definition, text.path[1].name).variant;
  } else {
    std::size_t used = 0;
    Meaning meaning = path_meaning(file_, scope, text.path, Space::VALUE, used);
    if (meaning.kind == Meaning::Kind::UNKNOWN) {
      meaning = path_meaning(file_, scope, text.path, Space::TYPE, used);
    }
    if (used != text.path.size()) return {};
    variant = meaning.variant;
    owner = named_type(meaning, {}, 0);
  }
  if (owner.kind != Type::Kind::NAMED) return {};
  Type whole = same_definition(type, owner) ? type : owner;
  if (!same_definition(type, owner)) {
    const Type inner = dereferenced(type);
    if (same_definition(inner, owner)) whole = inner;
  }
  if (variant < 0) return field(whole, name);
  const std::string_view written = outline(*whole.file).binding(variant).type;
  const Environment environment = environment_of(*whole.file, whole.definition, whole);
  if (written.starts_with('(')) {
    return field(type_of_text(*whole.file, whole.definition, written, &environment), name);
  }
  if (!written.starts_with('{')) return {};
  for (const std::string_view part : tuple_parts(written)) {
    const std::size_t colon = part.find(':');
    if (colon == std::string_view::npos || kit::trimmed(part.substr(0, colon)) != name) continue;
    return type_of_text(*whole.file, whole.definition, part.substr(colon + 1), &environment);
  }
  return {};
}

Type Evaluator::returned_type(const Callee& callee) {
  if (callee.kind != Callee::Kind::FOUND) return {};
  const Definition& found = definition(*callee.file, callee.definition);
  if (!kit::is_function_kind(found.kind)) return callee.self;
  if (found.type.empty()) return external("()");
  Environment environment;
  if (found.kind == Kind::METHOD) {
    environment = environment_of(*callee.file, callee.definition, callee.self);
  }
  for (const std::string_view name : generics(*callee.file, callee.definition)) {
    environment.parameters.push_back({std::string(name), Type{}});
  }
  Type made = type_of_text(*callee.file, callee.definition, found.type, &environment);
  if (!callee.sure && made.doubt.empty()) made.doubt = callee.doubt;
  return made;
}

}  // namespace context_delta::indexer::rust
