#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "indexer/languages/go/tables.h"
#include "indexer/languages/kit/nodes.h"

/// The nodes of the Go grammar that extraction looks at.
namespace context_delta::indexer::go {

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// Named children without comments.
std::vector<TSNode> parts(TSNode node);

/// Whether a node has a child that is this punctuation or keyword.
bool has_token(TSNode node, std::string_view token);

}  // namespace context_delta::indexer::go
