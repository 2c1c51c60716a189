#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What types, paths and calls mean.
namespace context_delta::indexer::rust {

struct NamedType;

/// A type, references to it aside.
struct Type {
  enum class Kind {
    UNKNOWN,
    NAMED,      ///< a struct, enum or union of the repository; among bounds, a trait
    PARAMETER,  ///< a type parameter, or a type that a trait leaves to its impls
    BOUNDED,    ///< any type with the traits `arguments`: `dyn`, `impl`, `Self` of a trait
    EXTERNAL,   ///< of another crate, by its last name; "[]" is a slice, "fn" a function
    TUPLE,      ///< of arguments
  };
  Kind kind = Kind::UNKNOWN;
  const File* file = nullptr;            ///< NAMED: of the definition; PARAMETER: of what binds it
  DefinitionIndex definition = NOWHERE;  ///< PARAMETER: the definition that binds it
  std::string name;                      ///< of PARAMETER and EXTERNAL
  std::vector<Type> arguments;
  std::vector<NamedType> bindings;  ///< of a trait: `Item = T`
  std::string_view doubt = {};      ///< why it may be another type; empty when nothing says so
  bool known() const { return kind != Kind::UNKNOWN; }
};

struct NamedType {
  std::string name;
  Type type;
};

bool same_definition(const Type& a, const Type& b);

/// What the parameters of an item stand for where it is used.
struct Environment {
  const Type* self = nullptr;
  std::vector<NamedType> parameters;
};

/// The names that a path may end with.
enum class Space { TYPE, VALUE, MACRO };

/// What a path means.
struct Meaning {
  enum class Kind {
    UNKNOWN,
    EXTERNAL,  ///< something that the repository does not define
    MODULE,    ///< `definition` is NOWHERE for a file
    DEFINITION,
    VARIANT,  ///< of the enum `definition`: the binding `variant` of its file
  };
  Kind kind = Kind::UNKNOWN;
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  std::int32_t variant = -1;
  bool sure = true;
  std::string_view rule = {};   ///< how it was reached
  std::string_view doubt = {};  ///< why not sure
};

/// What a call calls.
struct Callee {
  enum class Kind {
    UNKNOWN,   ///< the receiver's type or the path's meaning is not known
    EXTERNAL,  ///< nothing of the repository
    FOUND,     ///< `file` and `definition`
    MISSING,   ///< the type is known, and no method of this name was found
  };
  Kind kind = Kind::UNKNOWN;
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  Type self = {};  ///< the type that `Self` of the callee stands for
  bool sure = true;
  std::string_view rule = {};
  std::string_view doubt = {};
};

}  // namespace context_delta::indexer::rust
