#include "indexer/languages/go/syntax.h"

#include <array>
#include <string_view>
#include <utility>

#include "indexer/languages/go/go.h"

namespace context_delta::indexer::go {
namespace {

using NamedKind = std::pair<std::string_view, Node>;

constexpr auto NAMES = std::to_array<NamedKind>({
    {"argument_list", Node::ARGUMENT_LIST},
    {"array_type", Node::ARRAY_TYPE},
    {"assignment_statement", Node::ASSIGNMENT},
    {"binary_expression", Node::BINARY},
    {"blank_identifier", Node::BLANK},
    {"block", Node::BLOCK},
    {"call_expression", Node::CALL},
    {"channel_type", Node::CHANNEL_TYPE},
    {"comment", Node::COMMENT},
    {"communication_case", Node::CASE},
    {"composite_literal", Node::COMPOSITE_LITERAL},
    {"const_declaration", Node::CONST_DECLARATION},
    {"const_spec", Node::CONST_SPEC},
    {"default_case", Node::CASE},
    {"dot", Node::DOT},
    {"expression_case", Node::CASE},
    {"expression_switch_statement", Node::SWITCH},
    {"false", Node::TRUE_OR_FALSE},
    {"field_declaration", Node::FIELD_DECLARATION},
    {"field_declaration_list", Node::FIELD_LIST},
    {"float_literal", Node::FLOAT},
    {"for_statement", Node::FOR},
    {"func_literal", Node::FUNCTION_LITERAL},
    {"function_declaration", Node::FUNCTION},
    {"function_type", Node::FUNCTION_TYPE},
    {"generic_type", Node::GENERIC_TYPE},
    {"identifier", Node::IDENTIFIER},
    {"if_statement", Node::IF},
    {"imaginary_literal", Node::FLOAT},
    {"implicit_length_array_type", Node::ARRAY_TYPE},
    {"import_spec", Node::IMPORT_SPEC},
    {"index_expression", Node::INDEX},
    {"int_literal", Node::INTEGER},
    {"interface_type", Node::INTERFACE_TYPE},
    {"iota", Node::IOTA},
    {"interpreted_string_literal", Node::STRING},
    {"literal_element", Node::LITERAL_ELEMENT},
    {"literal_value", Node::LITERAL_VALUE},
    {"map_type", Node::MAP_TYPE},
    {"method_declaration", Node::METHOD},
    {"method_elem", Node::METHOD_ELEMENT},
    {"negated_type", Node::NEGATED_TYPE},
    {"nil", Node::NIL},
    {"package_clause", Node::PACKAGE_CLAUSE},
    {"package_identifier", Node::PACKAGE_IDENTIFIER},
    {"parameter_declaration", Node::PARAMETER},
    {"parameter_list", Node::PARAMETER_LIST},
    {"parenthesized_expression", Node::PARENTHESIZED},
    {"parenthesized_type", Node::PARENTHESIZED_TYPE},
    {"pointer_type", Node::POINTER_TYPE},
    {"qualified_type", Node::QUALIFIED_TYPE},
    {"range_clause", Node::RANGE},
    {"raw_string_literal", Node::STRING},
    {"receive_statement", Node::RECEIVE},
    {"rune_literal", Node::RUNE},
    {"select_statement", Node::SWITCH},
    {"selector_expression", Node::SELECTOR},
    {"short_var_declaration", Node::SHORT_VARIABLES},
    {"slice_expression", Node::SLICE},
    {"slice_type", Node::SLICE_TYPE},
    {"struct_type", Node::STRUCT_TYPE},
    {"true", Node::TRUE_OR_FALSE},
    {"type_alias", Node::TYPE_ALIAS},
    {"type_arguments", Node::TYPE_ARGUMENTS},
    {"type_assertion_expression", Node::TYPE_ASSERTION},
    {"type_case", Node::TYPE_CASE},
    {"type_conversion_expression", Node::CONVERSION},
    {"type_elem", Node::TYPE_ELEMENT},
    {"type_identifier", Node::TYPE_IDENTIFIER},
    {"type_instantiation_expression", Node::TYPE_INSTANTIATION},
    {"type_parameter_declaration", Node::TYPE_PARAMETER},
    {"type_spec", Node::TYPE_SPEC},
    {"type_switch_statement", Node::TYPE_SWITCH},
    {"unary_expression", Node::UNARY},
    {"var_declaration", Node::VARIABLE_DECLARATION},
    {"var_spec", Node::VARIABLE_SPEC},
    {"variadic_argument", Node::VARIADIC_ARGUMENT},
    {"variadic_parameter_declaration", Node::VARIADIC_PARAMETER},
});

Syntax make_syntax() {
  const TSLanguage* language = tree_sitter_go();
  const auto field = [&](std::string_view name) { return kit::field_id(language, name); };
  return {.kind = kit::NodeKinds<Node>(language, NAMES),
          .field = {.alias = field("alias"),
                    .arguments = field("arguments"),
                    .body = field("body"),
                    .element = field("element"),
                    .field = field("field"),
                    .function = field("function"),
                    .initializer = field("initializer"),
                    .left = field("left"),
                    .name = field("name"),
                    .operand = field("operand"),
                    .operation = field("operator"),
                    .package = field("package"),
                    .parameters = field("parameters"),
                    .path = field("path"),
                    .receiver = field("receiver"),
                    .result = field("result"),
                    .right = field("right"),
                    .type = field("type"),
                    .type_arguments = field("type_arguments"),
                    .type_parameters = field("type_parameters"),
                    .value = field("value")}};
}

}  // namespace

const Syntax& syntax() {
  static const Syntax made = make_syntax();
  return made;
}

std::vector<TSNode> parts(TSNode node) {
  std::vector<TSNode> found = kit::named_children(node);
  std::erase_if(found, [](TSNode each) { return syntax().kind(each) == Node::COMMENT; });
  return found;
}

bool has_token(TSNode node, std::string_view token) {
  if (kit::is_null(node)) return false;
  kit::Cursor cursor(node);
  if (!ts_tree_cursor_goto_first_child(cursor.get())) return false;
  do {
    if (ts_node_type(ts_tree_cursor_current_node(cursor.get())) == token) return true;
  } while (ts_tree_cursor_goto_next_sibling(cursor.get()));
  return false;
}

}  // namespace context_delta::indexer::go
