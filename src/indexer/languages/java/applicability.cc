#include <algorithm>

#include "indexer/languages/java/library.h"
#include "indexer/languages/java/overloads.h"
#include "indexer/languages/kit/facts_builder.h"

namespace context_delta::indexer::java {
namespace {

bool is_object(const Type& type) {
  return type.kind == Type::Kind::EXTERNAL && type.dimensions == 0 &&
         type.name == "java.lang.Object";
}

Verdict external_subtype(const Type& from, const Type& to) {
  if (same_type(from, to)) return Verdict::YES;
  const LibraryType* below = library_type_of(from.name);
  const LibraryType* above = library_type_of(to.name);
  if (below == nullptr) return Verdict::MAYBE;
  // The supertypes of what is listed are listed.
  if (above == nullptr) return to.name.starts_with('?') ? Verdict::MAYBE : Verdict::NO;
  return is_library_subtype(*below, *above) ? Verdict::YES : Verdict::NO;
}

Verdict class_subtype(TypeNames& names, const Type& from, const Type& to) {
  const Ancestry& line = names.ancestry(from);
  for (const Type& each : line.classes) {
    if (same_type(each, to)) return Verdict::YES;
  }
  if (to.kind == Type::Kind::EXTERNAL) {
    const Kind kind = names.definition(from).kind;
    const std::string_view name = simple_name(to.name);
    if (kind == Kind::ENUM && (name == "Enum" || name == "Comparable" || name == "Serializable")) {
      return Verdict::YES;
    }
    Verdict best = line.known ? Verdict::NO : Verdict::MAYBE;
    for (const Type& each : line.externals) best = std::max(best, external_subtype(each, to));
    return best;
  }
  return line.known ? Verdict::NO : Verdict::MAYBE;
}

Verdict array_subtype(TypeNames& names, const Type& from, const Type& to) {
  if (to.dimensions == 0) {
    const std::string_view name = to.kind == Type::Kind::EXTERNAL ? simple_name(to.name) : "";
    const bool above = name == "Object" || name == "Cloneable" || name == "Serializable";
    return above ? Verdict::YES : Verdict::NO;
  }
  if (from.dimensions == 0) {
    return from.kind == Type::Kind::VARIABLE ? is_subtype(names, names.bound(from), to)
                                             : Verdict::NO;
  }
  Type inner = from;
  Type outer = to;
  const std::uint8_t common = std::min(from.dimensions, to.dimensions);
  inner.dimensions = static_cast<std::uint8_t>(from.dimensions - common);
  outer.dimensions = static_cast<std::uint8_t>(to.dimensions - common);
  if (inner.is_primitive() || outer.is_primitive()) {
    return same_type(inner, outer) ? Verdict::YES : Verdict::NO;
  }
  return is_subtype(names, inner, outer);
}

/// Whether a lambda fits an interface, by its parameters and by what it gives.
Verdict lambda_fits(TypeNames& names, const Type& lambda, const Type& to) {
  if (to.dimensions > 0 || to.kind == Type::Kind::PRIMITIVE || is_object(to)) return Verdict::NO;
  std::string function;
  if (to.kind == Type::Kind::CLASS) {
    const Definition* method = abstract_method(names, to);
    if (method == nullptr) return names.ancestry(to).known ? Verdict::NO : Verdict::MAYBE;
    function = std::to_string(method->parameters.size()) + (method->type == "void" ? "v" : "r");
  } else if (to.kind == Type::Kind::EXTERNAL) {
    const LibraryType* found = library_type_of(to.name);
    if (found == nullptr) return Verdict::MAYBE;
    function = found->function;
    if (function.empty()) return Verdict::NO;
  } else {
    return Verdict::MAYBE;
  }
  const std::string_view wanted = function;
  const std::string_view given = lambda.name;
  if (wanted.substr(0, wanted.size() - 1) != given.substr(0, given.size() - 1)) return Verdict::NO;
  return given.back() == 'b' || given.back() == wanted.back() ? Verdict::YES : Verdict::NO;
}

Verdict function_fits(TypeNames& names, const Type& to) {
  if (to.dimensions > 0 || to.kind == Type::Kind::PRIMITIVE || is_object(to)) return Verdict::NO;
  if (to.kind == Type::Kind::CLASS && names.ancestry(to).known) {
    return abstract_method(names, to) == nullptr ? Verdict::NO : Verdict::MAYBE;
  }
  const LibraryType* found = to.kind == Type::Kind::EXTERNAL ? library_type_of(to.name) : nullptr;
  return found != nullptr && found->function.empty() ? Verdict::NO : Verdict::MAYBE;
}

/// What stands for a value without being of a type of its own.
bool is_poly(const Type& type) {
  return type.kind == Type::Kind::LAMBDA || type.kind == Type::Kind::FUNCTION ||
         type.kind == Type::Kind::CHOICE;
}

Verdict poly_fits(TypeNames& names, const Type& from, const Type& to, bool boxing) {
  if (from.kind == Type::Kind::LAMBDA) return lambda_fits(names, from, to);
  if (from.kind == Type::Kind::FUNCTION) return function_fits(names, to);
  Verdict worst = Verdict::YES;
  for (const Type& each : from.arguments) {
    worst = std::min(worst, boxing ? converts(names, each, to) : is_subtype(names, each, to));
  }
  return worst;
}

}  // namespace

Verdict is_subtype(TypeNames& names, const Type& from, const Type& to) {
  if (from.kind == Type::Kind::UNKNOWN || to.kind == Type::Kind::UNKNOWN) return Verdict::MAYBE;
  if (from.kind == Type::Kind::PACKAGE || from.kind == Type::Kind::VOID) return Verdict::MAYBE;
  if (is_poly(from)) return poly_fits(names, from, to, false);
  if (from.is_primitive() || to.is_primitive()) {
    const bool both = from.is_primitive() && to.is_primitive();
    return both && widens(from.name, to.name) ? Verdict::YES : Verdict::NO;
  }
  if (from.kind == Type::Kind::NONE || is_object(to)) return Verdict::YES;
  if (to.kind == Type::Kind::VARIABLE) {
    if (same_type(from, to)) return Verdict::YES;
    const Verdict bounded = is_subtype(names, from, names.bound(to));
    // The parameter of a class is a type that somebody else has chosen.
    const bool chosen = kit::is_class_kind(names.definition(to).kind);
    return chosen ? std::min(bounded, Verdict::MAYBE) : bounded;
  }
  if (from.dimensions > 0 || to.dimensions > 0) return array_subtype(names, from, to);
  if (from.kind == Type::Kind::VARIABLE) return is_subtype(names, names.bound(from), to);
  if (from.kind == Type::Kind::CLASS) return class_subtype(names, from, to);
  if (to.kind == Type::Kind::CLASS) return Verdict::NO;
  return external_subtype(from, to);
}

Verdict converts(TypeNames& names, const Type& from, const Type& to) {
  if (is_poly(from)) return poly_fits(names, from, to, true);
  const Verdict strict = is_subtype(names, from, to);
  if (strict != Verdict::NO) return strict;
  if (from.is_primitive() && !to.is_primitive()) {
    return is_subtype(names, external("java.lang." + std::string(boxed(from.name))), to);
  }
  const Type value = numeric(from);
  if (!from.is_primitive() && value.is_primitive() && to.is_primitive()) {
    return is_subtype(names, value, to);
  }
  return Verdict::NO;
}

}  // namespace context_delta::indexer::java
