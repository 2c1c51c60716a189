#include "indexer/languages/rust/syntax.h"

#include <array>
#include <string_view>
#include <utility>

#include "indexer/languages/rust/rust.h"

namespace context_delta::indexer::rust {
namespace {}  // namespace

const Syntax& syntax() {
  static const Syntax tables = {kit::NodeKinds<Node>(tree_sitter_rust(), NODE_NAMES),
                                fields_of(tree_sitter_rust())};
  return tables;
}

TSNode child_of_kind(TSNode node, Node kind) {
  for (const TSNode below : kit::named_children(node)) {
    if (syntax().kind(below) == kind) return below;
  }
  return {};
}

}  // namespace context_delta::indexer::rust
