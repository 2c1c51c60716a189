#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/languages/go/locals.h"

/// Expressions and types as facts hold them.
namespace context_delta::indexer::go {

/// What names mean at the node being visited.
struct Names {
  std::string_view text;
  const Locals& locals;
  const TypeParameters& type_parameters;
  AnonymousStructs& structs;
};

/// An expression as receivers and values are written; "?" for what has no readable type.
std::string expression_text(TSNode node, const Names& names);

/// The values of `count` names to which `right` (an expression list) is assigned.
std::vector<std::string> assigned_values(TSNode right, std::size_t count, const Names& names);

/// A type on one line, with its type parameters and a struct without a name replaced by what stands
/// for them; empty for a null node.
std::string type_text(TSNode node, const Names& names);

/// The results of a function, without their names: `T`, `(T, error)`; empty when there are none.
std::string result_text(TSNode result, const Names& names);

/// The type of a function literal, without its body.
std::string literal_type(TSNode function, const Names& names);

/// From the node's start to the start of `end`; the whole node without one.
std::string_view text_until(TSNode node, TSNode end, std::string_view text);

/// The name at the root of a type: `T` of `*T[int]`, `pkg.T` of `pkg.T`; null for other types.
TSNode named_type(TSNode type);

}  // namespace context_delta::indexer::go
