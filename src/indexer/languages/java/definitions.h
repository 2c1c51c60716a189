#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/java/syntax.h"
#include "indexer/model/facts.h"

/// Definitions and parameters of Java, one node at a time.
namespace context_delta::indexer::java {

/// The words of a declaration's modifiers that rules ask for.
struct Modifiers {
  bool is_static = false;
  bool is_final = false;
  bool is_abstract = false;
  bool is_private = false;
  bool is_native = false;
};

Modifiers modifiers_of(TSNode declaration);

/// A class, interface, enum, record or annotation type.
Definition type_definition(TSNode node, std::string_view text);

/// A method, constructor or annotation element. `parameters` is its list of parameters: of a
/// compact constructor, that of the record.
Definition function_definition(TSNode node, TSNode parameters, std::string_view text);

/// The class that `body` makes of `creation`, a `new` expression or an enum constant.
Definition anonymous_definition(TSNode creation, TSNode body, std::string name, std::string base,
                                std::string_view text);

struct Parameter {
  TSNode name = {};
  std::string type;  ///< `T...` when it takes any number of arguments
};

/// The parameters of a method, lambda or record; those without a type have none.
std::vector<Parameter> parameters_of(TSNode parameters, std::string_view text);

/// A type without its type arguments, annotations and array dimensions: `a.B` of `a.B<C>[]`.
std::string erased_text(std::string_view type);

}  // namespace context_delta::indexer::java
