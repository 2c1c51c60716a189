#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/c_family/syntax.h"
#include "indexer/model/facts.h"

/// Definitions and parameters of C and C++, one node at a time.
namespace context_delta::indexer::c_family {

/// A function by its declarator. `node` is the whole definition or declaration, `in_class` whether
/// it stands in a class. Traits are those the declaration itself says.
Definition function_definition(const Syntax& syntax, TSNode node, const Declarator& declarator,
                               std::string_view text, bool in_class);

/// A class, struct, union or enum; the name may be empty.
Definition class_definition(const Syntax& syntax, TSNode node, std::string_view text);

/// A definition of another kind that covers `node`.
Definition plain_definition(Kind kind, std::string name, TSNode node, TSNode name_node,
                            std::string_view text);

/// Whether the text between the starts of two nodes has this keyword among its words.
bool has_keyword(TSNode node, TSNode before, std::string_view text, std::string_view keyword);

/// What the parameters of a function bind.
std::vector<Binding> parameter_bindings(const Syntax& syntax, TSNode parameters,
                                        std::string_view text, DefinitionIndex scope);

/// Whether a function-like definition is a macro that makes a definition, such as
/// `TEST(Suite, Name) { ... }`: no type, and parameters without names.
bool is_macro_definition(const Syntax& syntax, TSNode node, const Declarator& declarator,
                         std::string_view text);

/// The names of the base classes, as written without template arguments.
std::vector<std::string> base_names(const Syntax& syntax, TSNode clause, std::string_view text);

}  // namespace context_delta::indexer::c_family
