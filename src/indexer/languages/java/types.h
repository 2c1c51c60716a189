#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/world/world.h"

/// Types of Java.
namespace context_delta::indexer::java {

/// The type of an expression, or what a name stands for.
struct Type {
  enum class Kind : std::uint8_t {
    UNKNOWN,
    VOID,
    PRIMITIVE,  ///< `name` says which
    NONE,       ///< of the constant null
    CLASS,      ///< a class or interface of the repository
    EXTERNAL,   ///< one that the repository does not define
    VARIABLE,   ///< the type parameter `name` of the definition
    PACKAGE,    ///< no type but the first part of a qualified name
    LAMBDA,     ///< `name` is how many parameters it has and what it gives, as "2v"
    FUNCTION,   ///< of a method reference
    CHOICE,     ///< of one of two values, whose types are the arguments
  };
  Kind kind = Kind::UNKNOWN;
  bool names_type = false;  ///< the expression is the type's name, not a value
  bool exact = false;       ///< of this class and not of a subclass
  bool is_this = false;     ///< `this` or `super`: what is private and protected can be reached
  bool is_super = false;    ///< members are those of the superclass, whatever overrides them
  bool outside = false;     ///< of an UNKNOWN: no class of the repository
  bool sure = true;         ///< nothing seen can give the name another meaning
  std::uint8_t dimensions = 0;
  const File* file = nullptr;  ///< of a CLASS or VARIABLE
  DefinitionIndex definition = NOWHERE;
  std::string name;             ///< of an EXTERNAL: qualified, `?.Name` when the package is open
  std::vector<Type> arguments;  ///< type arguments; empty when raw or not written

  bool is_class() const { return kind == Kind::CLASS && dimensions == 0; }
  bool is_primitive() const { return kind == Kind::PRIMITIVE && dimensions == 0; }
};

/// The same class, primitive or variable, with the same dimensions; type arguments do not count.
bool same_type(const Type& a, const Type& b);
bool same_class(const Type& a, const Type& b);

Type primitive(std::string_view name);
Type external(std::string_view qualified_name);

/// Whether the name is one of the eight primitive types.
bool is_primitive_name(std::string_view name);

/// Whether a primitive converts to another without losing its magnitude: `int` to `long`.
bool widens(std::string_view from, std::string_view to);

/// The simple name of the class that wraps a primitive, and back; empty when there is none.
std::string_view boxed(std::string_view primitive);
std::string_view unboxed(std::string_view simple_name);

std::string_view simple_name(std::string_view qualified);

/// The type as a primitive: itself or what it unboxes to; UNKNOWN for others.
Type numeric(const Type& type);

/// The type of an arithmetic operation on two operands, of a string when either is one.
Type promoted(const Type& a, const Type& b);

}  // namespace context_delta::indexer::java
