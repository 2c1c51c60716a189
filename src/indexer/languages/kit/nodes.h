#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tree_sitter/api.h>

/// Reading syntax trees: text, lines and kinds of nodes, and a walk without recursion.
namespace context_delta::indexer::kit {

/// The source text of a node; empty for a null node.
std::string_view text_of(TSNode node, std::string_view text);

/// Lines from 1. A node that ends right after a line break ends on the line before.
std::int32_t first_line(TSNode node);
std::int32_t last_line(TSNode node);

inline bool is_null(TSNode node) { return ts_node_is_null(node); }

/// What a grammar calls its nodes, as values of an enumeration with OTHER = 0 and ERROR = 1.
template <class Kind>
class NodeKinds {
 public:
  NodeKinds(const TSLanguage* language, std::span<const std::pair<std::string_view, Kind>> names) {
    const std::uint32_t count = ts_language_symbol_count(language);
    kinds_.resize(count, Kind::OTHER);
    for (std::uint32_t symbol = 0; symbol < count; ++symbol) {
      const auto id = static_cast<TSSymbol>(symbol);
      if (ts_language_symbol_type(language, id) != TSSymbolTypeRegular) continue;
      const std::string_view symbol_name = ts_language_symbol_name(language, id);
      for (const auto& [name, kind] : names) {
        if (name == symbol_name) kinds_[symbol] = kind;
      }
    }
  }

  Kind operator()(TSNode node) const {
    if (ts_node_is_null(node)) return Kind::OTHER;
    const TSSymbol symbol = ts_node_symbol(node);
    return symbol < kinds_.size() ? kinds_[symbol] : Kind::ERROR;
  }

 private:
  std::vector<Kind> kinds_;
};

/// The id of a grammar's field, to be looked up once.
TSFieldId field_id(const TSLanguage* language, std::string_view name);

inline TSNode child(TSNode node, TSFieldId field) {
  return ts_node_is_null(node) ? node : ts_node_child_by_field_id(node, field);
}

/// The named children of a node, comments included.
std::vector<TSNode> named_children(TSNode node);

/// The children of a node that stand in `field`.
std::vector<TSNode> children(TSNode node, TSFieldId field);

/// Owns a cursor.
class Cursor {
 public:
  explicit Cursor(TSNode root) : cursor_(ts_tree_cursor_new(root)) {}
  ~Cursor() { ts_tree_cursor_delete(&cursor_); }
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  TSTreeCursor* get() { return &cursor_; }

 private:
  TSTreeCursor cursor_;
};

/// Visits the named nodes below and with `root` in the order of the text, however deep the tree:
/// `visitor.enter(node, depth)` says whether to go below the node, `visitor.leave(depth)` follows
/// after everything below it.
template <class Visitor>
void walk(TSNode root, Visitor& visitor) {
  Cursor cursor(root);
  std::uint32_t depth = 0;
  while (true) {
    const TSNode node = ts_tree_cursor_current_node(cursor.get());
    const bool below = ts_node_is_named(node) && visitor.enter(node, depth);
    if (below && ts_tree_cursor_goto_first_child(cursor.get())) {
      ++depth;
      continue;
    }
    visitor.leave(depth);
    while (!ts_tree_cursor_goto_next_sibling(cursor.get())) {
      if (!ts_tree_cursor_goto_parent(cursor.get())) return;
      visitor.leave(--depth);
    }
  }
}

}  // namespace context_delta::indexer::kit
