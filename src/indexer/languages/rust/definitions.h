#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/model/facts.h"

/// Items of Rust, one node at a time.
namespace context_delta::indexer::rust {

/// A definition with its name, lines and signature: the text from the node's start to its body.
Definition item_definition(TSNode node, std::string_view text, Kind kind);

/// Adds the return type and the number of parameters, `self` aside.
void read_signature(Definition& function, TSNode node, std::string_view text);

/// The type and const parameters of an item as bindings of its scope: MEMBER bindings with the
/// trait GENERIC whose type is their bounds, those of the where clause included.
std::vector<Binding> generic_parameters(TSNode node, std::string_view text, DefinitionIndex scope);

/// The traits after the colon of a trait, joined by `+`; empty when there are none.
std::string bounds_text(TSNode bounds, std::string_view text);

/// Whether an item is visible in its module alone.
bool is_private(TSNode node);

/// The name of a path's last part, without type arguments: `Foo` of `&'a m::Foo<T>`.
std::string last_name(std::string_view type);

}  // namespace context_delta::indexer::rust
