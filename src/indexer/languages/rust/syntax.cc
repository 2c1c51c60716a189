#include "indexer/languages/rust/syntax.h"

#include <array>
#include <string_view>
#include <utility>

#include "indexer/languages/rust/rust.h"

namespace context_delta::indexer::rust {
namespace {

constexpr auto NAMES = std::to_array<std::pair<std::string_view, Node>>({
    {"abstract_type", Node::ABSTRACT_TYPE},
    {"arguments", Node::ARGUMENTS},
    {"array_expression", Node::ARRAY},
    {"associated_type", Node::ASSOCIATED_TYPE},
    {"async_block", Node::ASYNC_BLOCK},
    {"attribute_item", Node::ATTRIBUTE},
    {"await_expression", Node::AWAIT},
    {"binary_expression", Node::BINARY},
    {"block", Node::BLOCK},
    {"boolean_literal", Node::BOOLEAN},
    {"bounded_type", Node::BOUNDED_TYPE},
    {"break_expression", Node::BREAK},
    {"call_expression", Node::CALL},
    {"captured_pattern", Node::CAPTURED_PATTERN},
    {"type_cast_expression", Node::CAST},
    {"char_literal", Node::CHARACTER},
    {"closure_expression", Node::CLOSURE},
    {"line_comment", Node::COMMENT},
    {"block_comment", Node::COMMENT},
    {"const_item", Node::CONST},
    {"const_parameter", Node::CONST_PARAMETER},
    {"continue_expression", Node::CONTINUE},
    {"crate", Node::CRATE},
    {"else_clause", Node::ELSE},
    {"enum_item", Node::ENUM},
    {"enum_variant", Node::ENUM_VARIANT},
    {"expression_statement", Node::EXPRESSION_STATEMENT},
    {"extern_crate_declaration", Node::EXTERN_CRATE},
    {"field_declaration", Node::FIELD_DECLARATION},
    {"field_expression", Node::FIELD_EXPRESSION},
    {"field_pattern", Node::FIELD_PATTERN},
    {"float_literal", Node::FLOAT},
    {"for_expression", Node::FOR},
    {"foreign_mod_item", Node::FOREIGN_MOD},
    {"function_item", Node::FUNCTION},
    {"function_signature_item", Node::FUNCTION_SIGNATURE},
    {"generic_function", Node::GENERIC_FUNCTION},
    {"identifier", Node::IDENTIFIER},
    {"if_expression", Node::IF},
    {"impl_item", Node::IMPL},
    {"index_expression", Node::INDEX},
    {"inner_attribute_item", Node::INNER_ATTRIBUTE},
    {"integer_literal", Node::INTEGER},
    {"let_declaration", Node::LET},
    {"let_condition", Node::LET_CONDITION},
    {"lifetime", Node::LIFETIME},
    {"lifetime_parameter", Node::LIFETIME_PARAMETER},
    {"loop_expression", Node::LOOP},
    {"macro_definition", Node::MACRO_DEFINITION},
    {"macro_invocation", Node::MACRO_INVOCATION},
    {"match_expression", Node::MATCH},
    {"match_arm", Node::MATCH_ARM},
    {"match_block", Node::MATCH_BLOCK},
    {"match_pattern", Node::MATCH_PATTERN},
    {"mod_item", Node::MOD},
    {"mut_pattern", Node::MUT_PATTERN},
    {"mutable_specifier", Node::MUTABLE},
    {"negative_literal", Node::NEGATIVE},
    {"ordered_field_declaration_list", Node::ORDERED_FIELDS},
    {"or_pattern", Node::OR_PATTERN},
    {"parameter", Node::PARAMETER},
    {"parameters", Node::PARAMETERS},
    {"parenthesized_expression", Node::PARENTHESIZED},
    {"range_expression", Node::RANGE},
    {"raw_string_literal", Node::STRING},
    {"reference_expression", Node::REFERENCE},
    {"reference_pattern", Node::REFERENCE_PATTERN},
    {"ref_pattern", Node::REF_PATTERN},
    {"remaining_field_pattern", Node::REMAINING_FIELDS},
    {"return_expression", Node::RETURN},
    {"scoped_identifier", Node::SCOPED_IDENTIFIER},
    {"scoped_type_identifier", Node::SCOPED_TYPE},
    {"scoped_use_list", Node::SCOPED_USE_LIST},
    {"self", Node::SELF},
    {"self_parameter", Node::SELF_PARAMETER},
    {"shorthand_field_identifier", Node::SHORTHAND_FIELD},
    {"slice_pattern", Node::SLICE_PATTERN},
    {"static_item", Node::STATIC},
    {"string_literal", Node::STRING},
    {"struct_item", Node::STRUCT},
    {"struct_expression", Node::STRUCT_EXPRESSION},
    {"struct_pattern", Node::STRUCT_PATTERN},
    {"super", Node::SUPER},
    {"token_tree", Node::TOKEN_TREE},
    {"trait_item", Node::TRAIT},
    {"try_expression", Node::TRY},
    {"tuple_expression", Node::TUPLE},
    {"tuple_pattern", Node::TUPLE_PATTERN},
    {"tuple_struct_pattern", Node::TUPLE_STRUCT_PATTERN},
    {"type_arguments", Node::TYPE_ARGUMENTS},
    {"type_binding", Node::TYPE_BINDING},
    {"type_identifier", Node::TYPE_IDENTIFIER},
    {"type_item", Node::TYPE_ITEM},
    {"type_parameter", Node::TYPE_PARAMETER},
    {"type_parameters", Node::TYPE_PARAMETERS},
    {"unary_expression", Node::UNARY},
    {"union_item", Node::UNION},
    {"unsafe_block", Node::UNSAFE_BLOCK},
    {"use_declaration", Node::USE},
    {"use_as_clause", Node::USE_AS},
    {"use_list", Node::USE_LIST},
    {"use_wildcard", Node::USE_WILDCARD},
    {"variadic_parameter", Node::VARIADIC},
    {"visibility_modifier", Node::VISIBILITY},
    {"where_clause", Node::WHERE_CLAUSE},
    {"where_predicate", Node::WHERE_PREDICATE},
    {"while_expression", Node::WHILE},
});

Fields fields(const TSLanguage* language) {
  const auto id = [&](std::string_view name) { return kit::field_id(language, name); };
  return {.alias = id("alias"),
          .alternative = id("alternative"),
          .argument = id("argument"),
          .arguments = id("arguments"),
          .body = id("body"),
          .bounds = id("bounds"),
          .condition = id("condition"),
          .consequence = id("consequence"),
          .element = id("element"),
          .field = id("field"),
          .function = id("function"),
          .left = id("left"),
          .list = id("list"),
          .macro = id("macro"),
          .name = id("name"),
          .parameters = id("parameters"),
          .path = id("path"),
          .pattern = id("pattern"),
          .return_type = id("return_type"),
          .right = id("right"),
          .trait = id("trait"),
          .type = id("type"),
          .type_arguments = id("type_arguments"),
          .type_parameters = id("type_parameters"),
          .value = id("value")};
}

}  // namespace

const Syntax& syntax() {
  static const Syntax tables = {kit::NodeKinds<Node>(tree_sitter_rust(), NAMES),
                                fields(tree_sitter_rust())};
  return tables;
}

TSNode child_of_kind(TSNode node, Node kind) {
  for (const TSNode below : kit::named_children(node)) {
    if (syntax().kind(below) == kind) return below;
  }
  return {};
}

}  // namespace context_delta::indexer::rust
