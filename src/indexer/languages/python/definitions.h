#pragma once

#include <string_view>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/model/facts.h"

/// Definitions, parameters and arguments of Python, one node at a time.
namespace context_delta::indexer::python {

/// What the decorators of a function say.
struct Decorators {
  bool is_static = false;    ///< no first parameter is bound
  bool is_class = false;     ///< the first parameter is the class
  std::uint16_t traits = 0;  ///< of the decorated definition
};

Decorators decorators_of(TSNode decorated, std::string_view text);

Definition function_definition(TSNode node, std::string_view text, bool in_class,
                               const Decorators& decorators);
Definition class_definition(TSNode node, std::string_view text);

/// The base classes of a class, without keyword arguments and type arguments.
std::vector<TSNode> base_nodes(TSNode superclasses);

/// What the parameters bind in `scope`; with `has_receiver` the first one is bound to SELF, through
/// which a method reaches its class.
std::vector<Binding> parameter_bindings(TSNode parameters, kit::FactsBuilder& builder,
                                        DefinitionIndex scope, bool has_receiver);

/// How many arguments a call passes; ANY_NUMBER when some are spread.
std::int16_t call_arguments(TSNode arguments, std::string_view text);

/// The definition of a module's variable `name`, made by an assignment statement.
Definition variable_definition(TSNode statement, TSNode name, std::string_view text);

/// The target `Owner.name` of an assignment at the top level: a variable with the written scope
/// `Owner`, so that rules see that a member may be replaced.
void add_patch(kit::FactsBuilder& builder, TSNode target, TSNode name, std::string_view owner);

/// The dotted names in the text of a type, such as a quoted annotation.
std::vector<std::string_view> names_in_type(std::string_view type);

}  // namespace context_delta::indexer::python
