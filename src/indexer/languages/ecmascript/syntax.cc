#include "indexer/languages/ecmascript/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using NamedKind = std::pair<std::string_view, Node>;

constexpr auto NAMES = std::to_array<NamedKind>({
    {"abstract_class_declaration", Node::CLASS_DECLARATION},
    {"abstract_method_signature", Node::METHOD_SIGNATURE},
    {"ambient_declaration", Node::AMBIENT},
    {"arguments", Node::ARGUMENTS},
    {"array", Node::ARRAY},
    {"array_pattern", Node::ARRAY_PATTERN},
    {"arrow_function", Node::ARROW_FUNCTION},
    {"as_expression", Node::AS_EXPRESSION},
    {"assignment_expression", Node::ASSIGNMENT},
    {"assignment_pattern", Node::ASSIGNMENT_PATTERN},
    {"augmented_assignment_expression", Node::AUGMENTED_ASSIGNMENT},
    {"await_expression", Node::AWAIT},
    {"binary_expression", Node::BINARY},
    {"call_expression", Node::CALL},
    {"catch_clause", Node::CATCH},
    {"class", Node::CLASS_EXPRESSION},
    {"class_body", Node::CLASS_BODY},
    {"class_declaration", Node::CLASS_DECLARATION},
    {"class_heritage", Node::HERITAGE},
    {"class_static_block", Node::STATIC_BLOCK},
    {"comment", Node::COMMENT},
    {"computed_property_name", Node::COMPUTED_NAME},
    {"decorator", Node::DECORATOR},
    {"else_clause", Node::BRANCH},
    {"enum_declaration", Node::ENUM},
    {"export_clause", Node::EXPORT_CLAUSE},
    {"export_statement", Node::EXPORT},
    {"expression_statement", Node::EXPRESSION_STATEMENT},
    {"extends_clause", Node::EXTENDS},
    {"extends_type_clause", Node::EXTENDS},
    {"field_definition", Node::FIELD},
    {"for_in_statement", Node::FOR_IN},
    {"for_statement", Node::FOR},
    {"function_declaration", Node::FUNCTION_DECLARATION},
    {"function_expression", Node::FUNCTION_EXPRESSION},
    {"function_signature", Node::FUNCTION_SIGNATURE},
    {"function_type", Node::FUNCTION_TYPE},
    {"generator_function", Node::FUNCTION_EXPRESSION},
    {"generator_function_declaration", Node::FUNCTION_DECLARATION},
    {"generic_type", Node::GENERIC_TYPE},
    {"identifier", Node::IDENTIFIER},
    {"if_statement", Node::BRANCH},
    {"implements_clause", Node::IMPLEMENTS},
    {"import", Node::IMPORT_KEYWORD},
    {"import_alias", Node::IMPORT_ALIAS},
    {"import_clause", Node::IMPORT_CLAUSE},
    {"import_require_clause", Node::IMPORT_REQUIRE},
    {"import_specifier", Node::IMPORT_SPECIFIER},
    {"import_statement", Node::IMPORT},
    {"interface_body", Node::OBJECT_TYPE},
    {"interface_declaration", Node::INTERFACE},
    {"internal_module", Node::NAMESPACE},
    {"jsx_namespace_name", Node::JSX_NAME},
    {"jsx_opening_element", Node::JSX_OPENING},
    {"jsx_self_closing_element", Node::JSX_OPENING},
    {"lexical_declaration", Node::LEXICAL},
    {"member_expression", Node::MEMBER},
    {"method_definition", Node::METHOD},
    {"method_signature", Node::METHOD_SIGNATURE},
    {"module", Node::NAMESPACE},
    {"named_imports", Node::NAMED_IMPORTS},
    {"namespace_export", Node::NAMESPACE_EXPORT},
    {"namespace_import", Node::NAMESPACE_IMPORT},
    {"nested_identifier", Node::MEMBER},
    {"nested_type_identifier", Node::NESTED_TYPE},
    {"new_expression", Node::NEW},
    {"non_null_expression", Node::NON_NULL},
    {"null", Node::NULL_VALUE},
    {"number", Node::NUMBER},
    {"object", Node::OBJECT},
    {"object_assignment_pattern", Node::OBJECT_ASSIGNMENT_PATTERN},
    {"object_pattern", Node::OBJECT_PATTERN},
    {"object_type", Node::OBJECT_TYPE},
    {"optional_parameter", Node::PARAMETER},
    {"pair", Node::PAIR},
    {"pair_pattern", Node::PAIR_PATTERN},
    {"parenthesized_expression", Node::PARENTHESIZED},
    {"private_property_identifier", Node::PRIVATE_NAME},
    {"program", Node::PROGRAM},
    {"property_identifier", Node::PROPERTY_NAME},
    {"property_signature", Node::PROPERTY_SIGNATURE},
    {"public_field_definition", Node::FIELD},
    {"regex", Node::REGEX},
    {"required_parameter", Node::PARAMETER},
    {"rest_pattern", Node::REST},
    {"return_statement", Node::RETURN},
    {"satisfies_expression", Node::SATISFIES},
    {"sequence_expression", Node::SEQUENCE},
    {"shorthand_property_identifier", Node::SHORTHAND},
    {"shorthand_property_identifier_pattern", Node::SHORTHAND_PATTERN},
    {"spread_element", Node::SPREAD},
    {"statement_block", Node::BLOCK},
    {"string", Node::STRING},
    {"subscript_expression", Node::SUBSCRIPT},
    {"super", Node::SUPER},
    {"switch_body", Node::BLOCK},
    {"template_string", Node::TEMPLATE},
    {"ternary_expression", Node::TERNARY},
    {"this", Node::THIS},
    {"try_statement", Node::BRANCH},
    {"type_alias_declaration", Node::TYPE_ALIAS},
    {"type_annotation", Node::TYPE},
    {"type_arguments", Node::TYPE_ARGUMENTS},
    {"type_identifier", Node::TYPE_NAME},
    {"type_parameter", Node::TYPE_PARAMETER},
    {"undefined", Node::NULL_VALUE},
    {"update_expression", Node::UPDATE},
    {"variable_declaration", Node::VARIABLE_DECLARATION},
    {"variable_declarator", Node::VARIABLE_DECLARATOR},
    {"while_statement", Node::BRANCH},
});

constexpr int DEEPEST_WRAPPING = 20;

}  // namespace

Syntax make_syntax(const TSLanguage* language, bool typed) {
  const auto field = [&](std::string_view name) { return kit::field_id(language, name); };
  return {.kind = kit::NodeKinds<Node>(language, NAMES),
          .field = {.alias = field("alias"),
                    .alternative = field("alternative"),
                    .arguments = field("arguments"),
                    .body = field("body"),
                    .consequence = field("consequence"),
                    .constraint = field("constraint"),
                    .constructor = field("constructor"),
                    .declaration = field("declaration"),
                    .function = field("function"),
                    .index = field("index"),
                    .key = field("key"),
                    .kind = field("kind"),
                    .left = field("left"),
                    .module = field("module"),
                    .name = field("name"),
                    .object = field("object"),
                    .operator_ = field("operator"),
                    .parameter = field("parameter"),
                    .parameters = field("parameters"),
                    .pattern = field("pattern"),
                    .property = field("property"),
                    .return_type = field("return_type"),
                    .right = field("right"),
                    .source = field("source"),
                    .type = field("type"),
                    .type_parameters = field("type_parameters"),
                    .value = field("value")},
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
