#include "indexer/languages/python/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/python.h"

namespace context_delta::indexer::python {
namespace {

using NamedKind = std::pair<std::string_view, Node>;

constexpr auto NAMES = std::to_array<NamedKind>({
    {"argument_list", Node::ARGUMENT_LIST},
    {"as_pattern", Node::AS_PATTERN},
    {"as_pattern_target", Node::AS_PATTERN_TARGET},
    {"assignment", Node::ASSIGNMENT},
    {"attribute", Node::ATTRIBUTE},
    {"augmented_assignment", Node::AUGMENTED_ASSIGNMENT},
    {"await", Node::AWAIT},
    {"call", Node::CALL},
    {"case_pattern", Node::CASE_PATTERN},
    {"class_definition", Node::CLASS},
    {"comment", Node::COMMENT},
    {"concatenated_string", Node::CONCATENATED_STRING},
    {"conditional_expression", Node::CONDITIONAL_EXPRESSION},
    {"decorated_definition", Node::DECORATED},
    {"decorator", Node::DECORATOR},
    {"default_parameter", Node::DEFAULT_PARAMETER},
    {"delete_statement", Node::DELETE},
    {"dictionary", Node::DICTIONARY},
    {"dictionary_comprehension", Node::DICTIONARY},
    {"dictionary_splat", Node::DICTIONARY_SPLAT},
    {"dictionary_splat_pattern", Node::DICTIONARY_SPLAT_PATTERN},
    {"dotted_name", Node::DOTTED_NAME},
    {"except_clause", Node::EXCEPT},
    {"float", Node::FLOAT},
    {"for_statement", Node::FOR},
    {"for_in_clause", Node::FOR_IN},
    {"function_definition", Node::FUNCTION},
    {"future_import_statement", Node::FUTURE_IMPORT},
    {"generator_expression", Node::GENERATOR},
    {"generic_type", Node::GENERIC_TYPE},
    {"global_statement", Node::GLOBAL},
    {"identifier", Node::IDENTIFIER},
    {"if_statement", Node::IF},
    {"import_statement", Node::IMPORT},
    {"import_from_statement", Node::IMPORT_FROM},
    {"aliased_import", Node::ALIASED_IMPORT},
    {"integer", Node::INTEGER},
    {"keyword_argument", Node::KEYWORD_ARGUMENT},
    {"keyword_separator", Node::KEYWORD_SEPARATOR},
    {"lambda", Node::LAMBDA},
    {"list", Node::LIST},
    {"list_comprehension", Node::LIST},
    {"list_pattern", Node::LIST_PATTERN},
    {"list_splat", Node::LIST_SPLAT},
    {"list_splat_pattern", Node::LIST_SPLAT_PATTERN},
    {"match_statement", Node::IF},
    {"named_expression", Node::NAMED_EXPRESSION},
    {"none", Node::NONE},
    {"nonlocal_statement", Node::NONLOCAL},
    {"pair", Node::PAIR},
    {"parenthesized_expression", Node::PARENTHESIZED},
    {"pattern_list", Node::PATTERN_LIST},
    {"positional_separator", Node::POSITIONAL_SEPARATOR},
    {"set", Node::SET},
    {"set_comprehension", Node::SET},
    {"splat_pattern", Node::SPLAT_PATTERN},
    {"string", Node::STRING},
    {"subscript", Node::SUBSCRIPT},
    {"try_statement", Node::TRY},
    {"tuple", Node::TUPLE},
    {"tuple_pattern", Node::TUPLE_PATTERN},
    {"type", Node::TYPE},
    {"type_alias_statement", Node::TYPE_ALIAS},
    {"typed_default_parameter", Node::TYPED_DEFAULT_PARAMETER},
    {"typed_parameter", Node::TYPED_PARAMETER},
    {"while_statement", Node::WHILE},
    {"wildcard_import", Node::WILDCARD},
});

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_python();
  const auto field = [&](std::string_view name) { return kit::field_id(language, name); };
  return {.kind = kit::NodeKinds<Node>(language, NAMES),
          .field = {.alias = field("alias"),
                    .argument = field("argument"),
                    .arguments = field("arguments"),
                    .attribute = field("attribute"),
                    .body = field("body"),
                    .definition = field("definition"),
                    .function = field("function"),
                    .left = field("left"),
                    .module_name = field("module_name"),
                    .name = field("name"),
                    .object = field("object"),
                    .parameters = field("parameters"),
                    .return_type = field("return_type"),
                    .right = field("right"),
                    .superclasses = field("superclasses"),
                    .type = field("type"),
                    .value = field("value")}};
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
