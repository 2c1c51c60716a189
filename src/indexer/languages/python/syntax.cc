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
      return "str()";
    case Node::INTEGER:
      return "int()";
    case Node::FLOAT:
      return "float()";
    case Node::LIST:
      return "list()";
    case Node::DICTIONARY:
      return "dict()";
    case Node::SET:
      return "set()";
    case Node::TUPLE:
      return "tuple()";
    case Node::NONE:
      return "None";
    default:
      return {};
  }
}

constexpr int LONGEST_CHAIN = 40;

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

std::string expression_text(TSNode node, std::string_view text) {
  const Syntax& python = syntax();
  std::string suffix;  // built from the outside in, so in front
  for (int step = 0; step < LONGEST_CHAIN && suffix.size() < kit::LONGEST_EXPRESSION; ++step) {
    const Node kind = python.kind(node);
    if (kind == Node::IDENTIFIER) {
      return kit::one_line(kit::text_of(node, text), kit::LONGEST_EXPRESSION) + suffix;
    }
    if (kind == Node::ATTRIBUTE) {
      const TSNode name = kit::child(node, python.field.attribute);
      suffix = "." + kit::one_line(kit::text_of(name, text)) + suffix;
      node = kit::child(node, python.field.object);
    } else if (kind == Node::CALL) {
      suffix = "()" + suffix;
      node = kit::child(node, python.field.function);
    } else if (kind == Node::SUBSCRIPT) {
      suffix = "[]" + suffix;
      node = kit::child(node, python.field.value);
    } else if (kind == Node::PARENTHESIZED || kind == Node::AWAIT) {
      node = ts_node_named_child(node, 0);
    } else {
      const std::string_view type = literal_type(kind);
      return (type.empty() ? "?" : std::string(type)) + suffix;
    }
  }
  return "?" + suffix;
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
