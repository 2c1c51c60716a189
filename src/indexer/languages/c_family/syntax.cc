#include "indexer/languages/c_family/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {
namespace {

using kit::child;
using kit::is_null;
using kit::text_of;
constexpr int DEEPEST = 40;

/// The name of a template without its arguments; any other node's text.
std::string plain_name(const Syntax& syntax, TSNode node, std::string_view text) {
  const Node kind = syntax.kind(node);
  const bool is_template = kind == Node::TEMPLATE_TYPE || kind == Node::TEMPLATE_FUNCTION ||
                           kind == Node::TEMPLATE_METHOD;
  const TSNode name = is_template ? child(node, syntax.field.name) : node;
  return kit::one_line(text_of(name, text), kit::LONGEST_EXPRESSION);
}

/// The type inside `static_cast<Type*>`, without pointers; empty for other template functions.
std::string cast_type(const Syntax& syntax, TSNode function, std::string_view text) {
  const std::string_view name = text_of(child(function, syntax.field.name), text);
  if (name != "static_cast" && name != "dynamic_cast" && name != "reinterpret_cast" &&
      name != "const_cast" && name != "down_cast") {
    return {};
  }
  const TSNode arguments = child(function, syntax.field.arguments);
  return type_text(syntax, ts_node_named_child(arguments, 0), text);
}

TSNode first_declarator(const Syntax& syntax, TSNode node) {
  const TSNode named = child(node, syntax.field.declarator);
  if (!is_null(named)) return named;
  for (const TSNode below : kit::named_children(node)) {
    switch (syntax.kind(below)) {
      case Node::ARRAY_DECLARATOR:
      case Node::ATTRIBUTED_DECLARATOR:
      case Node::FIELD_IDENTIFIER:
      case Node::FUNCTION_DECLARATOR:
      case Node::IDENTIFIER:
      case Node::OPERATOR_CAST:
      case Node::OPERATOR_NAME:
      case Node::PARENTHESIZED_DECLARATOR:
      case Node::POINTER_DECLARATOR:
      case Node::QUALIFIED:
      case Node::REFERENCE_DECLARATOR:
      case Node::STRUCTURED_BINDING:
      case Node::TYPE_IDENTIFIER:
        return below;
      default:
        break;
    }
  }
  return {};
}

}  // namespace

Syntax make_syntax(const TSLanguage* language, bool is_cpp) {
  return {.language = language,
          .is_cpp = is_cpp,
          .kind = kit::NodeKinds<Node>(language, NODE_NAMES),
          .field = fields_of(language)};
}

QualifiedName qualified_name(const Syntax& syntax, TSNode node, std::string_view text) {
  QualifiedName made;
  for (int step = 0; step < DEEPEST; ++step) {
    const Node kind = syntax.kind(node);
    if (kind == Node::QUALIFIED) {
      const TSNode scope = child(node, syntax.field.scope);
      if (is_null(scope)) {
        made.scope = "::";
      } else {
        if (!made.scope.empty() && made.scope != "::") made.scope += "::";
        made.scope += plain_name(syntax, scope, text);
      }
      node = child(node, syntax.field.name);
    } else if (kind == Node::DEPENDENT_NAME) {
      node = ts_node_named_child(node, 0);
    } else {
      break;
    }
  }
  made.name_node = node;
  made.name = plain_name(syntax, node, text);
  return made;
}

std::string type_text(const Syntax& syntax, TSNode type, std::string_view text) {
  for (int step = 0; step < DEEPEST; ++step) {
    const Node kind = syntax.kind(type);
    const bool is_tag =
        kind == Node::STRUCT || kind == Node::UNION || kind == Node::ENUM || kind == Node::CLASS;
    if (is_tag) {
      type = child(type, syntax.field.name);
    } else if (kind == Node::TYPE_DESCRIPTOR || kind == Node::MACRO_TYPE) {
      type = child(type, syntax.field.type);
    } else if (kind == Node::DEPENDENT_NAME || kind == Node::TRAILING_RETURN) {
      type = ts_node_named_child(type, 0);
    } else {
      break;
    }
  }
  return kit::one_line(text_of(type, text), kit::LONGEST_EXPRESSION);
}

std::string expression_text(const Syntax& syntax, TSNode node, std::string_view text) {
  const Fields& field = syntax.field;
  std::string suffix;
  for (int step = 0; step < DEEPEST && suffix.size() < kit::LONGEST_EXPRESSION; ++step) {
    switch (syntax.kind(node)) {
      case Node::IDENTIFIER:
      case Node::FIELD_IDENTIFIER:
      case Node::NAMESPACE_IDENTIFIER:
      case Node::TYPE_IDENTIFIER:
      case Node::TEMPLATE_FUNCTION:
      case Node::TEMPLATE_TYPE:
      case Node::QUALIFIED:
      case Node::THIS:
        return kit::one_line(text_of(node, text), kit::LONGEST_EXPRESSION) + suffix;
      case Node::FIELD_EXPRESSION:
        suffix = "." + qualified_name(syntax, child(node, field.field), text).name + suffix;
        node = child(node, field.argument);
        break;
      case Node::CALL: {
        node = child(node, field.function);
        suffix = "()" + suffix;
        if (syntax.kind(node) != Node::TEMPLATE_FUNCTION) break;
        const std::string type = cast_type(syntax, node, text);
        if (!type.empty()) return type + suffix;
        break;
      }
      case Node::SUBSCRIPT:
        suffix = "[]" + suffix;
        node = child(node, field.argument);
        break;
      case Node::POINTER_EXPRESSION:
        node = child(node, field.argument);
        break;
      case Node::PARENTHESIZED:
        node = ts_node_named_child(node, 0);
        break;
      case Node::CAST:
      case Node::NEW:
      case Node::COMPOUND_LITERAL: {
        const std::string type = type_text(syntax, child(node, field.type), text);
        return (type.empty() ? "?" : type + "()") + suffix;
      }
      default:
        return "?" + suffix;
    }
  }
  return "?" + suffix;
}

Declarator declarator_of(const Syntax& syntax, TSNode node) {
  Declarator made;
  for (int step = 0; step < DEEPEST && !is_null(node); ++step) {
    switch (syntax.kind(node)) {
      case Node::INIT_DECLARATOR:
        made.value = child(node, syntax.field.value);
        node = child(node, syntax.field.declarator);
        break;
      case Node::FUNCTION_DECLARATOR:
        made.function = node;
        made.parameters = child(node, syntax.field.parameters);
        node = child(node, syntax.field.declarator);
        break;
      case Node::POINTER_DECLARATOR:
      case Node::REFERENCE_DECLARATOR:
      case Node::ARRAY_DECLARATOR:
        made.is_pointer = made.is_pointer || syntax.kind(node) != Node::REFERENCE_DECLARATOR;
        made.parameters = {};
        node = first_declarator(syntax, node);
        break;
      case Node::PARENTHESIZED_DECLARATOR:
      case Node::ATTRIBUTED_DECLARATOR:
        node = first_declarator(syntax, node);
        break;
      case Node::OPERATOR_CAST:
        made.name = node;
        made.function = child(node, syntax.field.declarator);
        made.parameters = child(made.function, syntax.field.parameters);
        return made;
      case Node::QUALIFIED: {
        made.name = node;
        TSNode last = node;
        for (int below = 0; below < DEEPEST && syntax.kind(last) == Node::QUALIFIED; ++below) {
          last = child(last, syntax.field.name);
        }
        if (syntax.kind(last) == Node::OPERATOR_CAST) {
          made.function = child(last, syntax.field.declarator);
          made.parameters = child(made.function, syntax.field.parameters);
        }
        return made;
      }
      default:
        made.name = node;
        return made;
    }
  }
  return made;
}

std::int16_t call_arguments(const Syntax& syntax, TSNode arguments, std::string_view text) {
  if (is_null(arguments)) return 0;
  // Nothing else than a pack or a comment makes a difference, and few calls have either.
  const std::string_view written = text_of(arguments, text);
  if (written.find('/') == std::string_view::npos &&
      written.find("...") == std::string_view::npos) {
    return kit::argument_count(ts_node_named_child_count(arguments));
  }
  std::size_t count = 0;
  for (const TSNode node : kit::named_children(arguments)) {
    const Node kind = syntax.kind(node);
    if (kind == Node::PACK_EXPANSION) return ANY_NUMBER;
    if (kind != Node::COMMENT) ++count;
  }
  return kit::argument_count(count);
}

}  // namespace context_delta::indexer::c_family
