#include "indexer/languages/python/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/python.h"

namespace context_delta::indexer::python {
namespace {

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_python();
  return {.kind = kit::NodeKinds<Node>(language, NODE_NAMES), .field = fields_of(language)};
}

/// The type whose literal a node is; empty for other expressions.
std::string_view literal_type(Node kind) {
  switch (kind) {
    case Node::STRING:
    case Node::CONCATENATED_STRING:
      return "str";
    case Node::INTEGER:
      return "int";
    case Node::FLOAT:
      return "float";
    case Node::LIST:
      return "list";
    case Node::DICTIONARY:
      return "dict";
    case Node::SET:
      return "set";
    case Node::TUPLE:
      return "tuple";
    default:
      return {};
  }
}

/// What a chain of attributes, calls and subscripts starts with.
ExpressionIndex head_of(TSNode node, std::string_view text, kit::ExpressionTable& table) {
  const Node kind = syntax().kind(node);
  if (kind == Node::IDENTIFIER) {
    return table.add(ExpressionKind::NAME,
                     kit::one_line(kit::text_of(node, text), kit::LONGEST_EXPRESSION));
  }
  if (kind == Node::NONE) return table.add(ExpressionKind::NONE);
  const std::string_view type = literal_type(kind);
  if (!type.empty()) return table.add(ExpressionKind::LITERAL, std::string(type));
  return table.unknown();
}

constexpr int LONGEST_CHAIN = 40;

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

ExpressionIndex expression_of(TSNode node, std::string_view text, kit::ExpressionTable& table) {
  const Syntax& python = syntax();
  std::vector<TSNode> chain;  // from the outside in
  for (int step = 0; step < LONGEST_CHAIN; ++step) {
    const Node kind = python.kind(node);
    if (kind == Node::PARENTHESIZED || kind == Node::AWAIT) {
      node = ts_node_named_child(node, 0);
      continue;
    }
    const TSFieldId inner = kind == Node::ATTRIBUTE   ? python.field.object
                            : kind == Node::CALL      ? python.field.function
                            : kind == Node::SUBSCRIPT ? python.field.value
                                                      : TSFieldId{0};
    if (inner == 0) break;
    chain.push_back(node);
    node = kit::child(node, inner);
  }
  ExpressionIndex made = head_of(node, text, table);
  for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
    const Node kind = python.kind(*each);
    if (kind == Node::ATTRIBUTE) {
      const TSNode name = kit::child(*each, python.field.attribute);
      made = table.add(ExpressionKind::MEMBER, kit::one_line(kit::text_of(name, text)), {made});
    } else if (kind == Node::SUBSCRIPT) {
      made = table.add(ExpressionKind::INDEX, {}, {made});
    } else {
      const Expression& callee = table.at(made);
      const bool is_super = callee.kind == ExpressionKind::NAME && callee.name == "super";
      made =
          is_super ? table.add(ExpressionKind::SUPER) : table.add(ExpressionKind::CALL, {}, {made});
    }
  }
  return made;
}

ExpressionIndex dotted_expression(std::string_view dotted, kit::ExpressionTable& table) {
  ExpressionIndex made = NO_EXPRESSION;
  for (const std::string_view name : kit::split(dotted, '.')) {
    made = made == NO_EXPRESSION ? table.add(ExpressionKind::NAME, std::string(name))
                                 : table.add(ExpressionKind::MEMBER, std::string(name), {made});
  }
  return made;
}

std::string dotted_name(TSNode node, std::string_view text) {
  const Syntax& python = syntax();
  const TSNode whole = node;
  for (int step = 0; python.kind(node) == Node::ATTRIBUTE && step < LONGEST_CHAIN; ++step) {
    node = kit::child(node, python.field.object);
  }
  if (python.kind(node) != Node::IDENTIFIER) return {};
  std::string name = kit::one_line(kit::text_of(whole, text), kit::LONGEST_EXPRESSION);
  std::erase(name, ' ');
  return name;
}

std::vector<TSNode> bound_names(TSNode target) {
  const Syntax& python = syntax();
  std::vector<TSNode> names;
  std::vector<TSNode> pending = {target};
  while (!pending.empty()) {
    const TSNode node = pending.back();
    pending.pop_back();
    switch (python.kind(node)) {
      case Node::IDENTIFIER:
        names.push_back(node);
        break;
      case Node::PATTERN_LIST:
      case Node::TUPLE_PATTERN:
      case Node::LIST_PATTERN:
      case Node::LIST_SPLAT_PATTERN:
      case Node::DICTIONARY_SPLAT_PATTERN:
      case Node::AS_PATTERN_TARGET:
      case Node::TUPLE:
      case Node::LIST:
      case Node::PARENTHESIZED: {
        const std::vector<TSNode> below = kit::named_children(node);
        pending.insert(pending.end(), below.rbegin(), below.rend());
        break;
      }
      default:
        break;
    }
  }
  return names;
}

}  // namespace context_delta::indexer::python
