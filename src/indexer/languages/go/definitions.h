#pragma once

#include <string_view>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/languages/go/expressions.h"
#include "indexer/model/facts.h"

/// Definitions, parameters and fields of Go, one node at a time.
namespace context_delta::indexer::go {

/// A function, or a method when the node has a receiver; `names` knows its type parameters.
Definition function_definition(TSNode node, const Names& names);
/// A method that an interface lists.
Definition interface_method(TSNode node, const Names& names);
/// A type or alias. An alias has a type that starts with '='; structs and interfaces have none.
Definition type_definition(TSNode spec, const Names& names);
/// A package's variable or constant; `keyword` is "var" or "const".
Definition variable_definition(TSNode spec, TSNode name, std::string_view keyword,
                               const Names& names);
/// The function literal to which `name` is bound by a statement.
Definition closure_definition(TSNode literal, std::string_view name, std::int32_t first_line,
                              const Names& names);

/// Binds each name of a parameter list, as written.
struct Parameter {
  TSNode name;
  std::string type;
};
std::vector<Parameter> parameters_of(TSNode list, const Names& names);

/// What a struct's fields bind, embedded ones under the name of their type; `prefix` stands in
/// front of each name.
std::vector<Binding> field_bindings(TSNode struct_type, DefinitionIndex scope,
                                    const std::string& prefix, const Names& names);
/// The types that a struct or interface embeds, without type arguments.
std::vector<TSNode> embedded_types(TSNode type);

/// What type parameters bind, and what stands for them: `$0` of a type, `$T` of a function.
TypeParameters type_parameters_of(TSNode list, bool of_type, std::string_view text);
/// The type parameters that a method's receiver names: `$0` for `K` of `(m *Map[K, V])`.
TypeParameters receiver_parameters(TSNode receiver, std::string_view text);
std::vector<Binding> parameter_bindings(TSNode list, DefinitionIndex scope, const Names& names);

/// How many arguments a call passes; ANY_NUMBER when one of them may stand for several.
std::int16_t call_arguments(TSNode arguments);

}  // namespace context_delta::indexer::go
