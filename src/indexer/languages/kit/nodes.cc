#include "indexer/languages/kit/nodes.h"

namespace context_delta::indexer::kit {

std::string_view text_of(TSNode node, std::string_view text) {
  if (ts_node_is_null(node)) return {};
  const std::size_t start = ts_node_start_byte(node);
  const std::size_t end = ts_node_end_byte(node);
  if (start >= text.size() || end <= start) return {};
  return text.substr(start, end - start);
}

std::int32_t first_line(TSNode node) {
  return static_cast<std::int32_t>(ts_node_start_point(node).row) + 1;
}

std::int32_t last_line(TSNode node) {
  const TSPoint end = ts_node_end_point(node);
  const bool after_break = end.column == 0 && end.row > ts_node_start_point(node).row;
  return static_cast<std::int32_t>(end.row) + (after_break ? 0 : 1);
}

TSFieldId field_id(const TSLanguage* language, std::string_view name) {
  return ts_language_field_id_for_name(language, name.data(),
                                       static_cast<std::uint32_t>(name.size()));
}

std::vector<TSNode> named_children(TSNode node) {
  std::vector<TSNode> found;
  if (is_null(node)) return found;
  Cursor cursor(node);
  if (!ts_tree_cursor_goto_first_child(cursor.get())) return found;
  do {
    const TSNode below = ts_tree_cursor_current_node(cursor.get());
    if (ts_node_is_named(below)) found.push_back(below);
  } while (ts_tree_cursor_goto_next_sibling(cursor.get()));
  return found;
}

std::vector<TSNode> children(TSNode node, TSFieldId field) {
  std::vector<TSNode> found;
  if (is_null(node)) return found;
  Cursor cursor(node);
  if (!ts_tree_cursor_goto_first_child(cursor.get())) return found;
  do {
    if (ts_tree_cursor_current_field_id(cursor.get()) == field) {
      found.push_back(ts_tree_cursor_current_node(cursor.get()));
    }
  } while (ts_tree_cursor_goto_next_sibling(cursor.get()));
  return found;
}

}  // namespace context_delta::indexer::kit
