#pragma once

#include <cstdint>

#include <tree_sitter/api.h>

#include "indexer/languages/kit/nodes.h"
#include "indexer/languages/rust/tables.h"

/// The nodes of the Rust grammar that extraction looks at.
namespace context_delta::indexer::rust {

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// The only child of a node with the kind, or a null node.
TSNode child_of_kind(TSNode node, Node kind);

}  // namespace context_delta::indexer::rust
