#include "indexer/languages/java/values.h"

#include <algorithm>
#include <charconv>

#include "indexer/languages/java/headers.h"
#include "indexer/languages/java/library.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

using kit::Binder;
using kit::definition_at;

/// How deep expressions and the initialisers of variables are followed.
constexpr int DEEPEST = 12;

Type of_kind(Type::Kind kind) {
  Type made;
  made.kind = kind;
  return made;
}

bool is_upper(char byte) { return byte >= 'A' && byte <= 'Z'; }
bool is_lower(char byte) { return byte >= 'a' && byte <= 'z'; }

bool is_class_name(std::string_view name) {
  return is_upper(name.front()) && std::any_of(name.begin(), name.end(), is_lower);
}

bool is_constant_name(std::string_view name) {
  return is_upper(name.front()) && std::none_of(name.begin(), name.end(), is_lower);
}

}  // namespace

std::string_view take_brackets(std::string_view& text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '(' || text[i] == '{') ++depth;
    if ((text[i] == ')' || text[i] == '}') && --depth == 0) {
      const std::string_view inner = text.substr(1, i - 1);
      text.remove_prefix(i + 1);
      return inner;
    }
  }
  text = {};
  return {};
}

std::string_view take_name(std::string_view& text) {
  std::size_t end = 0;
  while (end < text.size() && (kit::is_identifier_byte(text[end]) || text[end] == '$')) ++end;
  const std::string_view name = text.substr(0, end);
  text.remove_prefix(end);
  return name;
}

std::int16_t count_of(std::string_view values) {
  if (values == "*") return ANY_NUMBER;
  return kit::argument_count(split_outside(values, ',').size());
}

Values::Values(const Facts& facts, TypeNames& names)
    : names_(names), file_(names.file()), facts_(facts) {}

Arguments Values::arguments(DefinitionIndex scope, std::string_view values, std::int16_t count,
                            int depth) {
  Arguments made;
  made.counted = count != ANY_NUMBER;
  if (!made.counted) return made;
  const std::vector<std::string_view> parts = split_outside(values, ',');
  made.types.resize(static_cast<std::size_t>(count));
  if (parts.size() != made.types.size()) return made;
  for (std::size_t i = 0; i < parts.size(); ++i) made.types[i] = of(scope, parts[i], depth + 1);
  return made;
}

Type Values::of(DefinitionIndex scope, std::string_view expression, int depth) {
  if (depth > DEEPEST || expression.empty() || expression == "?") return {};
  if (expression.front() == '^') return lambda_parameter(scope, expression.substr(1), depth + 1);
  std::string key;
  if (expression.size() > 12) {
    key = std::to_string(scope) + ":" + std::string(expression);
    const auto known = known_.find(key);
    if (known != known_.end()) return known->second;
  }
  std::string_view text = expression;
  Type type = head(scope, text, depth);
  while (!text.empty()) {
    if (text.starts_with("[]")) {
      text.remove_prefix(2);
      type = element(type);
      continue;
    }
    if (!text.starts_with('.')) return {};
    text.remove_prefix(1);
    const std::string_view name = take_name(text);
    if (name.empty()) return {};
    if (!text.starts_with('(')) {
      type = member(scope, type, name);
      continue;
    }
    const std::string_view values = take_brackets(text);
    const Arguments passed = arguments(scope, values, count_of(values), depth);
    type = result(on(type, name, passed), name, passed);
  }
  if (!key.empty()) known_.emplace(std::move(key), type);
  return type;
}

Type Values::head(DefinitionIndex scope, std::string_view& text, int depth) {
  const char first = text.front();
  if (first == '{') {
    std::string_view written = take_brackets(text);
    const bool exact = written.starts_with("new ");
    Type made = names_.read(file_, scope, exact ? written.substr(4) : written);
    made.exact = exact;
    return made;
  }
  const bool operates = text.size() > 1 && text[1] == '(';
  if (operates && (first == '+' || first == '~' || first == '?')) {
    text.remove_prefix(1);
    return operation(scope, first, take_brackets(text), depth);
  }
  if (text.starts_with("->")) {
    Type lambda = of_kind(Type::Kind::LAMBDA);
    lambda.name = text.substr(2);
    text = {};
    return lambda;
  }
  if (text.starts_with("::")) {
    text = {};
    return of_kind(Type::Kind::FUNCTION);
  }
  const std::string_view name = take_name(text);
  if (name.empty()) {
    text.remove_prefix(1);
    return {};
  }
  if (text.starts_with('@')) {
    text.remove_prefix(1);
    return local_value(take_name(text), depth);
  }
  if (text.starts_with('(')) {
    const std::string_view values = take_brackets(text);
    const Arguments passed = arguments(scope, values, count_of(values), depth);
    return result(bare(scope, name, passed), name, passed);
  }
  return name_value(scope, name);
}

Type Values::operation(DefinitionIndex scope, char sign, std::string_view operands, int depth) {
  std::vector<Type> types;
  for (const std::string_view each : split_outside(operands, ',')) {
    types.push_back(of(scope, each, depth + 1));
  }
  if (types.empty()) return {};
  if (sign != '?') {
    Type made = types.size() == 1 ? promoted(types[0], types[0]) : types[0];
    for (std::size_t i = 1; i < types.size(); ++i) {
      const bool text = made.name == "java.lang.String";
      made = text ? made : promoted(made, types[i]);
    }
    return made;
  }
  if (types.size() != 2) return {};
  if (types[0].kind == Type::Kind::NONE) std::swap(types[0], types[1]);
  if (types[1].kind == Type::Kind::NONE && !types[0].is_primitive()) return types[0];
  types[0].exact = types[1].exact = false;
  if (same_type(types[0], types[1])) return types[0];
  const Type number = promoted(types[0], types[1]);
  if (number.is_primitive()) return number;
  Type made = of_kind(Type::Kind::CHOICE);
  made.arguments = std::move(types);
  return made;
}

Type Values::local_value(std::string_view index, int depth) {
  std::int32_t number = -1;
  std::from_chars(index.data(), index.data() + index.size(), number);
  if (number < 0 || static_cast<std::size_t>(number) >= facts_.bindings.size()) return {};
  const auto known = locals_.find(number);
  if (known != locals_.end()) return known->second;
  const Binding& binding = facts_.bindings[static_cast<std::size_t>(number)];
  const bool inferred_type = binding.type.empty() || binding.type == "var";
  Type made;
  if (!inferred_type) made = names_.read(file_, binding.scope, binding.type);
  if (!binding.value.empty()) {
    const Type value = of(binding.scope, binding.value, depth + 1);
    if (inferred_type) made = value;
    const bool kept = (binding.traits & REASSIGNED) == 0;
    made.exact = kept && value.exact && same_type(made, value);
  }
  if (depth < 2) locals_.emplace(number, made);
  return made;
}

Type Values::name_value(DefinitionIndex scope, std::string_view name) {
  if (name == "null") return of_kind(Type::Kind::NONE);
  if (name == "super") return superclass(scope);
  Type owner = names_.enclosing_class(file_, scope);
  if (name == "this") {
    owner.is_this = true;
    return owner;
  }
  bool found = false;
  while (owner.kind == Type::Kind::CLASS) {
    const Type field = field_of(names_, owner, name, found);
    if (found) return field;
    owner = names_.enclosing_class(file_, definition_at(facts_, owner.definition).parent);
  }
  Type type = names_.named(file_, scope, name);
  type.names_type = true;
  const bool is_type = type.kind != Type::Kind::UNKNOWN && type.kind != Type::Kind::PACKAGE;
  if (is_type && type.kind != Type::Kind::VARIABLE) return type;
  const Type field = static_field(name);
  return field.kind == Type::Kind::UNKNOWN ? type : field;
}

Type Values::static_field(std::string_view name) {
  for (const Import& import : facts_.imports) {
    if ((import.traits & STATIC_MEMBER) == 0) continue;
    if (import.name != name && import.name != "*") continue;
    const Type owner = names_.imported(file_, NOWHERE, import.module);
    bool found = false;
    if (owner.kind == Type::Kind::CLASS) {
      const Type field = field_of(names_, owner, name, found);
      if (found) return field;
    } else if (import.name == name) {
      Type made;
      made.outside = true;
      return made;
    }
  }
  return {};
}

Type Values::superclass(DefinitionIndex scope) {
  const Type own = names_.enclosing_class(file_, scope);
  if (own.kind != Type::Kind::CLASS) return {};
  const Ancestry& line = names_.ancestry(own);
  const std::vector<std::string>& bases = definition_at(facts_, own.definition).bases;
  Type made = external("java.lang.Object");
  for (const Type& each : line.classes) {
    if (same_class(each, own)) continue;
    made = each;
    break;
  }
  // With a superclass outside, the nearest class of the repository is an interface.
  const bool is_interface =
      made.kind == Type::Kind::CLASS && names_.definition(made).kind == Kind::INTERFACE;
  if (is_interface && !line.externals.empty() && bases.size() > 1) made = line.externals.front();
  if (!line.externals.empty() && made.kind == Type::Kind::EXTERNAL) made = line.externals.front();
  if (made.kind == Type::Kind::EXTERNAL && !line.known) return {};
  made.is_this = made.is_super = true;
  return made;
}

Type Values::member(DefinitionIndex scope, const Type& owner, std::string_view name) {
  if (owner.dimensions > 0) return name == "length" ? primitive("int") : Type{};
  switch (owner.kind) {
    case Type::Kind::PACKAGE: {
      Type made = names_.named(file_, scope, owner.name + "." + std::string(name));
      made.names_type = true;
      return made;
    }
    case Type::Kind::CLASS: {
      if (owner.names_type && (name == "this" || name == "super")) {
        Type made = owner;
        made.names_type = false;
        made.is_this = true;
        if (name == "this") return made;
        // `Outer.super` is the superclass of a class around, `Interface.super` the interface.
        if (names_.definition(made).kind != Kind::INTERFACE) return superclass(made.definition);
        made.is_super = true;
        return made;
      }
      bool found = false;
      Type field = field_of(names_, owner, name, found);
      if (found) return field;
      Type made = names_.member_class(owner, name);
      made.names_type = true;
      made.outside = !names_.ancestry(owner).externals.empty();
      return made;
    }
    case Type::Kind::VARIABLE:
      return member(scope, names_.bound(owner), name);
    case Type::Kind::EXTERNAL: {
      const LibraryType* library = library_type_of(owner.name);
      if (library != nullptr) {
        std::string_view type = library_member(*library, std::string(name) + ".");
        if (type.empty() && is_constant_name(name)) type = library_member(*library, "*.");
        if (!type.empty()) return library_value(type, owner);
      }
      const bool is_class = owner.names_type && is_class_name(name);
      Type made = is_class ? external(owner.name + "." + std::string(name)) : Type{};
      made.names_type = is_class;
      made.outside = true;
      return made;
    }
    default: {
      Type made;
      made.outside = owner.outside;
      return made;
    }
  }
}

Type Values::element(const Type& type) {
  Type made = type;
  made.exact = false;
  if (type.dimensions > 0) {
    --made.dimensions;
    return made;
  }
  const bool generic = type.kind == Type::Kind::EXTERNAL && type.arguments.size() == 1;
  return generic ? type.arguments.front() : Type{};
}

Type Values::result(const Callee& callee, std::string_view name, const Arguments& arguments) {
  const std::vector<Method>& fitting = callee.choice.fitting;
  if (fitting.empty()) {
    const bool may_return_it = !callee.outside || (callee.receiver.kind == Type::Kind::UNKNOWN &&
                                                   !callee.receiver.outside);
    if (may_return_it) return {};
    return library_result(callee.receiver, name, arguments);
  }
  Type made = method_result(fitting.front(), callee.receiver, arguments);
  if (callee.choice.sure) return made;
  for (const Method& each : fitting) {
    if (!same_type(method_result(each, callee.receiver, arguments), made)) return {};
  }
  return made;
}

Type Values::method_result(const Method& method, const Type& receiver, const Arguments& arguments) {
  Type made = inferred(declared_result(names_, method), method, arguments);
  // Somebody has chosen a type for the class's parameter, but where is not known.
  const bool chosen = made.kind == Type::Kind::VARIABLE && !receiver.is_this;
  return chosen && same_class(receiver, names_.enclosing_class(*made.file, made.definition))
             ? Type{}
             : made;
}

/// The result of a generic method, read off the arguments where they show it.
Type Values::inferred(const Type& result, const Method& method, const Arguments& arguments) {
  Type made = result;
  for (Type& each : made.arguments) each = inferred(each, method, arguments);
  const bool own = result.kind == Type::Kind::VARIABLE && result.file->id == method.file->id &&
                   result.definition == method.definition;
  if (!own) return made;
  for (std::size_t i = 0; i < method.parameters.size() && i < arguments.types.size(); ++i) {
    const Type& parameter = method.parameters[i];
    Type value = arguments.types[i];
    if (value.is_primitive()) value = external("java.lang." + std::string(boxed(value.name)));
    value.exact = value.names_type = false;
    const bool whole = parameter.kind == Type::Kind::VARIABLE && parameter.name == result.name &&
                       value.kind != Type::Kind::NONE;
    if (whole && value.dimensions >= parameter.dimensions) {
      const int dimensions = value.dimensions - parameter.dimensions + result.dimensions;
      value.dimensions = static_cast<std::uint8_t>(dimensions);
      return value;
    }
    if (!same_type(parameter, value) || parameter.arguments.size() != value.arguments.size()) {
      continue;
    }
    for (std::size_t j = 0; j < parameter.arguments.size(); ++j) {
      const Type& inner = parameter.arguments[j];
      if (inner.kind == Type::Kind::VARIABLE && inner.name == result.name) {
        Type found = value.arguments[j];
        found.dimensions = static_cast<std::uint8_t>(found.dimensions + result.dimensions);
        return found;
      }
    }
  }
  return {};
}

}  // namespace context_delta::indexer::java
