#include "indexer/languages/java/types.h"

#include <algorithm>
#include <array>
#include <utility>

namespace context_delta::indexer::java {
namespace {

using Pair = std::pair<std::string_view, std::string_view>;

constexpr auto BOXES = std::to_array<Pair>({{"boolean", "Boolean"},
                                            {"byte", "Byte"},
                                            {"char", "Character"},
                                            {"double", "Double"},
                                            {"float", "Float"},
                                            {"int", "Integer"},
                                            {"long", "Long"},
                                            {"short", "Short"}});

/// Position among the numeric types; -1 for boolean.
int rank(std::string_view primitive) {
  constexpr auto ORDER =
      std::to_array<std::string_view>({"byte", "short", "int", "long", "float", "double"});
  if (primitive == "char") return 1;
  const auto* found = std::find(ORDER.begin(), ORDER.end(), primitive);
  return found == ORDER.end() ? -1 : static_cast<int>(found - ORDER.begin());
}

bool is_string(const Type& type) {
  return type.kind == Type::Kind::EXTERNAL && type.dimensions == 0 &&
         type.name == "java.lang.String";
}

}  // namespace

bool same_class(const Type& a, const Type& b) {
  return a.kind == Type::Kind::CLASS && b.kind == Type::Kind::CLASS && a.file->id == b.file->id &&
         a.definition == b.definition;
}

bool same_type(const Type& a, const Type& b) {
  if (a.kind != b.kind || a.dimensions != b.dimensions) return false;
  switch (a.kind) {
    case Type::Kind::CLASS:
      return same_class(a, b);
    case Type::Kind::VARIABLE:
      return a.file->id == b.file->id && a.definition == b.definition && a.name == b.name;
    case Type::Kind::EXTERNAL: {
      const bool open = a.name.starts_with('?') || b.name.starts_with('?');
      return open ? simple_name(a.name) == simple_name(b.name) : a.name == b.name;
    }
    case Type::Kind::PRIMITIVE:
      return a.name == b.name;
    default:
      return a.kind != Type::Kind::UNKNOWN;
  }
}

Type primitive(std::string_view name) {
  Type made;
  made.kind = Type::Kind::PRIMITIVE;
  made.name = name;
  return made;
}

Type external(std::string_view qualified_name) {
  Type made;
  made.kind = Type::Kind::EXTERNAL;
  made.name = qualified_name;
  return made;
}

bool is_primitive_name(std::string_view name) { return !boxed(name).empty(); }

bool widens(std::string_view from, std::string_view to) {
  if (from == to) return true;
  if (to == "char" || rank(from) < 0 || rank(to) < 0) return false;
  if (from == "char") return rank(to) >= rank("int");
  return rank(from) < rank(to);
}

std::string_view boxed(std::string_view primitive) {
  for (const auto& [name, box] : BOXES) {
    if (name == primitive) return box;
  }
  return {};
}

std::string_view unboxed(std::string_view simple_name) {
  for (const auto& [name, box] : BOXES) {
    if (box == simple_name) return name;
  }
  return {};
}

std::string_view simple_name(std::string_view qualified) {
  return qualified.substr(qualified.rfind('.') + 1);
}

Type numeric(const Type& type) {
  if (type.is_primitive()) return type;
  if (type.kind != Type::Kind::EXTERNAL || type.dimensions > 0) return {};
  if (!type.name.starts_with("java.lang.")) return {};
  const std::string_view name = unboxed(simple_name(type.name));
  return name.empty() ? Type{} : primitive(name);
}

Type promoted(const Type& a, const Type& b) {
  if (is_string(a)) return a;
  if (is_string(b)) return b;
  const Type left = numeric(a);
  const Type right = numeric(b);
  if (!left.is_primitive() || !right.is_primitive()) return {};
  if (left.name == "boolean" || right.name == "boolean") return primitive("boolean");
  const int highest = std::max({rank(left.name), rank(right.name), rank("int")});
  return primitive(highest == rank("int")     ? "int"
                   : highest == rank("long")  ? "long"
                   : highest == rank("float") ? "float"
                                              : "double");
}

}  // namespace context_delta::indexer::java
