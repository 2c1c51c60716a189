#include "indexer/languages/java/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/java/java.h"

namespace context_delta::indexer::java {
namespace {

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_java();
  return {.kind = kit::NodeKinds<Node>(language, NODE_NAMES), .field = fields_of(language)};
}

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

TSNode first_child(TSNode node) {
  if (kit::is_null(node)) return node;
  const std::uint32_t count = ts_node_named_child_count(node);
  for (std::uint32_t i = 0; i < count; ++i) {
    const TSNode found = ts_node_named_child(node, i);
    if (syntax().kind(found) != Node::COMMENT) return found;
  }
  return {};
}

TSNode child_of_kind(TSNode node, Node kind) {
  for (const TSNode found : kit::named_children(node)) {
    if (syntax().kind(found) == kind) return found;
  }
  return {};
}

bool is_statement_expression(Node kind) {
  return kind == Node::CALL || kind == Node::ASSIGNMENT || kind == Node::UPDATE ||
         kind == Node::OBJECT_CREATION;
}

}  // namespace context_delta::indexer::java
