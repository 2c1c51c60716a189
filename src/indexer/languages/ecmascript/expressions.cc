#include "indexer/languages/ecmascript/expressions.h"

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::child;
using kit::text_of;

constexpr int LONGEST_CHAIN = 40;
constexpr std::size_t LONGEST_CAST = 80;

/// The language's own class whose literal a node is; empty for other expressions.
std::string_view literal_class(Node kind) {
  switch (kind) {
    case Node::STRING:
    case Node::TEMPLATE:
      return "~String";
    case Node::NUMBER:
      return "~Number";
    case Node::ARRAY:
      return "~Array";
    case Node::REGEX:
      return "~RegExp";
    case Node::NULL_VALUE:
      return "null";
    default:
      return {};
  }
}

std::string cast_text(const Syntax& syntax, TSNode node, std::string_view text) {
  TSNode type = {};
  for (const TSNode below : kit::named_children(node)) {
    if (syntax.kind(below) != Node::COMMENT) type = below;
  }
  std::string written = kit::one_line(text_of(type, text), kit::LONGEST_EXPRESSION);
  if (written == "const" || written == "any" || written == "unknown") return {};
  return written.size() < LONGEST_CAST ? "<" + written + ">" : "?";
}

}  // namespace

std::string_view loaded_module(const Syntax& syntax, TSNode call, std::string_view text) {
  if (syntax.kind(call) != Node::CALL) return {};
  const TSNode function = child(call, syntax.field.function);
  const bool loads =
      syntax.kind(function) == Node::IMPORT_KEYWORD ||
      (syntax.kind(function) == Node::IDENTIFIER && text_of(function, text) == "require");
  if (!loads) return {};
  const TSNode argument = first_child(syntax, child(call, syntax.field.arguments));
  if (syntax.kind(argument) != Node::STRING) return {};
  return string_content(argument, text);
}

std::string expression_text(const Syntax& syntax, TSNode node, std::string_view text,
                            ExpressionContext& context) {
  const Fields& field = syntax.field;
  std::string suffix;  // built from the outside in, so in front
  for (int step = 0; step < LONGEST_CHAIN && suffix.size() < kit::LONGEST_EXPRESSION; ++step) {
    const Node kind = syntax.kind(node);
    const std::string_view literal = literal_class(kind);
    if (!literal.empty()) return std::string(literal) + suffix;
    switch (kind) {
      case Node::IDENTIFIER:
      case Node::SHORTHAND:
        return kit::one_line(text_of(node, text), kit::LONGEST_EXPRESSION) + suffix;
      case Node::THIS:
        return context.this_text() + suffix;
      case Node::SUPER:
        return "super" + suffix;
      case Node::OBJECT:
        return context.object_text(node) + suffix;
      case Node::MEMBER: {
        const TSNode name = child(node, field.property);
        suffix = "." + kit::one_line(text_of(name, text), kit::LONGEST_EXPRESSION) + suffix;
        node = child(node, field.object);
        break;
      }
      case Node::CALL: {
        const std::string_view module = loaded_module(syntax, node, text);
        if (!module.empty()) return context.module_text(module, node) + suffix;
        suffix = "()" + suffix;
        node = child(node, field.function);
        break;
      }
      case Node::NEW:
        suffix = "~" + suffix;
        node = child(node, field.constructor);
        break;
      case Node::SUBSCRIPT:
        suffix = "[]" + suffix;
        node = child(node, field.object);
        break;
      case Node::ASSIGNMENT:
        node = child(node, field.right);
        break;
      case Node::AS_EXPRESSION: {
        const std::string cast = cast_text(syntax, node, text);
        if (!cast.empty()) return cast + suffix;
        node = first_child(syntax, node);
        break;
      }
      case Node::PARENTHESIZED:
      case Node::SATISFIES:
      case Node::NON_NULL:
      case Node::AWAIT:
        node = first_child(syntax, node);
        break;
      default: {
        const std::string definition = context.definition_text(node);
        return (definition.empty() ? "?" : definition) + suffix;
      }
    }
  }
  return "?" + suffix;
}

}  // namespace context_delta::indexer::ecmascript
