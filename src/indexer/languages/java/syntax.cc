#include "indexer/languages/java/syntax.h"

#include <array>
#include <utility>

#include "indexer/languages/java/java.h"

namespace context_delta::indexer::java {
namespace {

using NamedKind = std::pair<std::string_view, Node>;

constexpr auto NAMES = std::to_array<NamedKind>({
    {"annotated_type", Node::ANNOTATED_TYPE},
    {"annotation", Node::ANNOTATION},
    {"annotation_type_body", Node::CLASS_BODY},
    {"annotation_type_declaration", Node::ANNOTATION_TYPE},
    {"annotation_type_element_declaration", Node::ANNOTATION_ELEMENT},
    {"argument_list", Node::ARGUMENT_LIST},
    {"array_access", Node::ARRAY_ACCESS},
    {"array_creation_expression", Node::ARRAY_CREATION},
    {"array_initializer", Node::ARRAY_INITIALIZER},
    {"array_type", Node::ARRAY_TYPE},
    {"assignment_expression", Node::ASSIGNMENT},
    {"asterisk", Node::ASTERISK},
    {"binary_expression", Node::BINARY},
    {"binary_integer_literal", Node::INTEGER},
    {"block", Node::BLOCK},
    {"block_comment", Node::COMMENT},
    {"boolean_type", Node::PRIMITIVE_TYPE},
    {"cast_expression", Node::CAST},
    {"catch_clause", Node::CATCH},
    {"catch_formal_parameter", Node::CATCH_PARAMETER},
    {"catch_type", Node::CATCH_TYPE},
    {"character_literal", Node::CHARACTER},
    {"class_body", Node::CLASS_BODY},
    {"class_declaration", Node::CLASS},
    {"class_literal", Node::CLASS_LITERAL},
    {"compact_constructor_declaration", Node::COMPACT_CONSTRUCTOR},
    {"constant_declaration", Node::FIELD},
    {"constructor_body", Node::BLOCK},
    {"constructor_declaration", Node::CONSTRUCTOR},
    {"decimal_floating_point_literal", Node::FLOATING},
    {"decimal_integer_literal", Node::INTEGER},
    {"dimensions", Node::DIMENSIONS},
    {"dimensions_expr", Node::DIMENSIONS_EXPRESSION},
    {"enhanced_for_statement", Node::ENHANCED_FOR},
    {"enum_body", Node::ENUM_BODY},
    {"enum_body_declarations", Node::ENUM_BODY_DECLARATIONS},
    {"enum_constant", Node::ENUM_CONSTANT},
    {"enum_declaration", Node::ENUM},
    {"explicit_constructor_invocation", Node::EXPLICIT_CONSTRUCTOR},
    {"expression_statement", Node::EXPRESSION_STATEMENT},
    {"extends_interfaces", Node::BASES},
    {"false", Node::BOOLEAN},
    {"field_access", Node::FIELD_ACCESS},
    {"field_declaration", Node::FIELD},
    {"floating_point_type", Node::PRIMITIVE_TYPE},
    {"for_statement", Node::FOR},
    {"formal_parameter", Node::PARAMETER},
    {"formal_parameters", Node::PARAMETERS},
    {"generic_type", Node::GENERIC_TYPE},
    {"hex_floating_point_literal", Node::FLOATING},
    {"hex_integer_literal", Node::INTEGER},
    {"identifier", Node::IDENTIFIER},
    {"import_declaration", Node::IMPORT},
    {"inferred_parameters", Node::INFERRED_PARAMETERS},
    {"instanceof_expression", Node::INSTANCEOF},
    {"integral_type", Node::PRIMITIVE_TYPE},
    {"interface_body", Node::CLASS_BODY},
    {"interface_declaration", Node::INTERFACE},
    {"lambda_expression", Node::LAMBDA},
    {"line_comment", Node::COMMENT},
    {"local_variable_declaration", Node::LOCAL_VARIABLE},
    {"marker_annotation", Node::ANNOTATION},
    {"method_declaration", Node::METHOD},
    {"method_invocation", Node::CALL},
    {"method_reference", Node::METHOD_REFERENCE},
    {"modifiers", Node::MODIFIERS},
    {"module_declaration", Node::MODULE},
    {"null_literal", Node::NULL_LITERAL},
    {"object_creation_expression", Node::OBJECT_CREATION},
    {"octal_integer_literal", Node::INTEGER},
    {"package_declaration", Node::PACKAGE},
    {"parenthesized_expression", Node::PARENTHESIZED},
    {"provides_module_directive", Node::MODULE_TYPES},
    {"record_declaration", Node::RECORD},
    {"record_pattern_component", Node::PATTERN},
    {"resource", Node::RESOURCE},
    {"return_statement", Node::RETURN},
    {"scoped_identifier", Node::SCOPED_IDENTIFIER},
    {"scoped_type_identifier", Node::SCOPED_TYPE},
    {"spread_parameter", Node::SPREAD_PARAMETER},
    {"static_initializer", Node::STATIC_INITIALIZER},
    {"string_literal", Node::STRING},
    {"super", Node::SUPER},
    {"super_interfaces", Node::BASES},
    {"superclass", Node::BASES},
    {"switch_block", Node::BLOCK},
    {"switch_block_statement_group", Node::GROUP},
    {"switch_expression", Node::SWITCH},
    {"switch_rule", Node::BLOCK},
    {"template_expression", Node::STRING},
    {"ternary_expression", Node::TERNARY},
    {"this", Node::THIS},
    {"throw_statement", Node::THROW},
    {"true", Node::BOOLEAN},
    {"try_with_resources_statement", Node::FOR},
    {"type_arguments", Node::TYPE_ARGUMENTS},
    {"type_identifier", Node::TYPE_IDENTIFIER},
    {"type_list", Node::TYPE_LIST},
    {"type_parameter", Node::TYPE_PARAMETER},
    {"type_parameters", Node::TYPE_PARAMETERS},
    {"type_pattern", Node::PATTERN},
    {"unary_expression", Node::UNARY},
    {"update_expression", Node::UPDATE},
    {"uses_module_directive", Node::MODULE_TYPES},
    {"variable_declarator", Node::DECLARATOR},
    {"void_type", Node::PRIMITIVE_TYPE},
    {"while_statement", Node::WHILE},
});

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_java();
  const auto field = [&](std::string_view name) { return kit::field_id(language, name); };
  return {.kind = kit::NodeKinds<Node>(language, NAMES),
          .field = {.alternative = field("alternative"),
                    .arguments = field("arguments"),
                    .array = field("array"),
                    .body = field("body"),
                    .consequence = field("consequence"),
                    .constructor = field("constructor"),
                    .declarator = field("declarator"),
                    .dimensions = field("dimensions"),
                    .element = field("element"),
                    .field = field("field"),
                    .interfaces = field("interfaces"),
                    .left = field("left"),
                    .name = field("name"),
                    .object = field("object"),
                    .operand = field("operand"),
                    .operation = field("operator"),
                    .parameters = field("parameters"),
                    .right = field("right"),
                    .superclass = field("superclass"),
                    .type = field("type"),
                    .type_parameters = field("type_parameters"),
                    .value = field("value")}};
}

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

TSNode first_child(TSNode node) {
  if (kit::is_null(node)) return node;
  const std::uint32_t count = ts_node_named_child_count(node);
  for (std::uint32_t i = 0; i < count; ++i) {
    const TSNode found = ts_node_named_child(node, i);
    if (syntax().kind(found) != Node::COMMENT) return found;
  }
  return {};
}

TSNode child_of_kind(TSNode node, Node kind) {
  for (const TSNode found : kit::named_children(node)) {
    if (syntax().kind(found) == kind) return found;
  }
  return {};
}

bool is_statement_expression(Node kind) {
  return kind == Node::CALL || kind == Node::ASSIGNMENT || kind == Node::UPDATE ||
         kind == Node::OBJECT_CREATION;
}

}  // namespace context_delta::indexer::java
