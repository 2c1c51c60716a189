#pragma once

#include <string_view>
#include <vector>

/// Types and paths as they are written, taken apart.
namespace context_delta::indexer::rust {

struct TypeText;
struct NamedTypeText;

/// A part of a path: `Reader<T, Offset = usize>`.
struct Segment {
  std::string_view name;
  std::vector<TypeText> arguments;
  std::vector<NamedTypeText> bindings;
};

/// References, lifetimes and `mut` are left out: `&'a mut T` is `T`. Views point into the text.
struct TypeText {
  enum class Kind {
    UNKNOWN,
    PATH,       ///< `a::b<T>::c`
    QUALIFIED,  ///< `<parts[0] as parts[1]>::path`
    TUPLE,      ///< of parts
    SLICE,      ///< of parts[0]; arrays too
    FUNCTION,   ///< that returns parts[0]
    BOUNDS,     ///< any type with the traits parts: `dyn A + B`, `impl A`
  };
  Kind kind = Kind::UNKNOWN;
  std::vector<Segment> path;
  std::vector<TypeText> parts;
};

struct NamedTypeText {
  std::string_view name;
  TypeText type;
};

/// UNKNOWN for what is no type.
TypeText parse_type(std::string_view text);

/// The traits of `A + B<T>`, as BOUNDS.
TypeText parse_bounds(std::string_view text);

}  // namespace context_delta::indexer::rust
