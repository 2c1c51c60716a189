#pragma once

#include <string_view>
#include <vector>

#include "indexer/languages/java/type_names.h"
#include "indexer/languages/java/types.h"

/// Methods, constructors and fields of classes.
namespace context_delta::indexer::java {

/// A method or constructor as seen from a receiver.
struct Method {
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  Type owner;                    ///< its class, with the type arguments that the receiver gives it
  std::vector<Type> parameters;  ///< without the dots of a variadic one
  bool variadic = false;
};

/// What a name means among the methods that a class has and inherits.
struct Methods {
  std::vector<Method> all;  ///< nearest class first; what one of them overrides is left out
  bool open = false;        ///< a supertype outside the repository may have more
  bool known = true;        ///< every supertype is understood
};

Methods methods_of(TypeNames& names, const Type& receiver, std::string_view name);
std::vector<Method> constructors_of(TypeNames& names, const Type& type);

/// The type that a method gives back, by its declaration alone.
Type declared_result(TypeNames& names, const Method& method);

/// The type of a field; UNKNOWN when there is none. `found` tells the difference.
Type field_of(TypeNames& names, const Type& receiver, std::string_view name, bool& found);

/// Types below `owner` that define the method anew.
std::vector<Candidate> overrides_of(TypeNames& names, const Type& owner, const Method& method);

/// The single method without a body of an interface; null when it has none or several.
const Definition* abstract_method(TypeNames& names, const Type& type);

}  // namespace context_delta::indexer::java
