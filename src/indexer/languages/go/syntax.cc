#include "indexer/languages/go/syntax.h"

#include <array>
#include <string_view>
#include <utility>

#include "indexer/languages/go/go.h"

namespace context_delta::indexer::go {
namespace {

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_go();
  return {.kind = kit::NodeKinds<Node>(language, NODE_NAMES), .field = fields_of(language)};
}

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

std::vector<TSNode> parts(TSNode node) {
  std::vector<TSNode> found = kit::named_children(node);
  std::erase_if(found, [](TSNode each) { return syntax().kind(each) == Node::COMMENT; });
  return found;
}

bool has_token(TSNode node, std::string_view token) {
  if (kit::is_null(node)) return false;
  kit::Cursor cursor(node);
  if (!ts_tree_cursor_goto_first_child(cursor.get())) return false;
  do {
    if (ts_node_type(ts_tree_cursor_current_node(cursor.get())) == token) return true;
  } while (ts_tree_cursor_goto_next_sibling(cursor.get()));
  return false;
}

}  // namespace context_delta::indexer::go
