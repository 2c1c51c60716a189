#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "indexer/languages/java/tables.h"
#include "indexer/languages/kit/nodes.h"

/// The nodes of the Java grammar that extraction looks at.
namespace context_delta::indexer::java {

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// The first named child that is no comment; a null node when there is none.
TSNode first_child(TSNode node);

/// The first child of a kind; a null node when there is none.
TSNode child_of_kind(TSNode node, Node kind);

/// Whether a node is an expression that also stands as a statement: a call, an assignment, ...
bool is_statement_expression(Node kind);

}  // namespace context_delta::indexer::java
