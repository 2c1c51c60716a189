#include "indexer/languages/ecmascript/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

constexpr int DEEPEST_WRAPPING = 20;

}  // namespace

Syntax make_syntax(const TSLanguage* language, bool typed) {
  return {.kind = kit::NodeKinds<Node>(language, NODE_NAMES),
          .field = fields_of(language),
          .typed = typed};
}

std::string_view string_content(TSNode literal, std::string_view text) {
  std::string_view content = kit::text_of(literal, text);
  if (content.size() < 2) return {};
  const char quote = content.front();
  const bool quoted = quote == '"' || quote == '\'' || quote == '`';
  return quoted ? content.substr(1, content.size() - 2) : content;
}

TSNode first_child(const Syntax& syntax, TSNode node) {
  if (kit::is_null(node)) return node;
  const std::uint32_t count = ts_node_named_child_count(node);
  for (std::uint32_t i = 0; i < count && i < 8; ++i) {
    const TSNode below = ts_node_named_child(node, i);
    if (syntax.kind(below) != Node::COMMENT) return below;
  }
  return {};
}

TSNode unwrapped(const Syntax& syntax, TSNode node) {
  for (int step = 0; step < DEEPEST_WRAPPING; ++step) {
    const Node kind = syntax.kind(node);
    if (kind != Node::PARENTHESIZED && kind != Node::AS_EXPRESSION && kind != Node::SATISFIES &&
        kind != Node::NON_NULL && kind != Node::AWAIT) {
      break;
    }
    node = first_child(syntax, node);
  }
  return node;
}

bool is_function_value(Node kind) {
  return kind == Node::ARROW_FUNCTION || kind == Node::FUNCTION_EXPRESSION;
}

bool has_keyword(TSNode node, std::string_view keyword) {
  if (kit::is_null(node)) return false;
  const std::uint32_t count = ts_node_child_count(node);
  for (std::uint32_t i = 0; i < count && i < 8; ++i) {
    const TSNode below = ts_node_child(node, i);
    if (ts_node_type(below) == keyword) return true;
  }
  return false;
}

}  // namespace context_delta::indexer::ecmascript
