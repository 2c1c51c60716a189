#pragma once

#include <cstdint>

#include <tree_sitter/api.h>

#include "indexer/languages/kit/nodes.h"

/// The nodes of the Rust grammar that extraction looks at.
namespace context_delta::indexer::rust {

enum class Node : std::uint8_t {
  OTHER,
  ERROR,
  ABSTRACT_TYPE,
  ARGUMENTS,
  ARRAY,
  ASSOCIATED_TYPE,
  ASYNC_BLOCK,
  ATTRIBUTE,
  AWAIT,
  BINARY,
  BLOCK,
  BOOLEAN,
  BOUNDED_TYPE,
  BREAK,
  CALL,
  CAPTURED_PATTERN,
  CAST,
  CHARACTER,
  CLOSURE,
  COMMENT,
  CONST,
  CONST_PARAMETER,
  CONTINUE,
  CRATE,
  ELSE,
  ENUM,
  ENUM_VARIANT,
  EXPRESSION_STATEMENT,
  EXTERN_CRATE,
  FIELD_DECLARATION,
  FIELD_EXPRESSION,
  FIELD_PATTERN,
  FLOAT,
  FOR,
  FOREIGN_MOD,
  FUNCTION,
  FUNCTION_SIGNATURE,
  GENERIC_FUNCTION,
  IDENTIFIER,
  IF,
  IMPL,
  INDEX,
  INNER_ATTRIBUTE,
  INTEGER,
  LET,
  LET_CONDITION,
  LIFETIME,
  LIFETIME_PARAMETER,
  LOOP,
  MACRO_DEFINITION,
  MACRO_INVOCATION,
  MATCH,
  MATCH_ARM,
  MATCH_BLOCK,
  MATCH_PATTERN,
  MOD,
  MUT_PATTERN,
  MUTABLE,
  NEGATIVE,
  ORDERED_FIELDS,
  OR_PATTERN,
  PARAMETER,
  PARAMETERS,
  PARENTHESIZED,
  RANGE,
  REFERENCE,
  REFERENCE_PATTERN,
  REF_PATTERN,
  REMAINING_FIELDS,
  RETURN,
  SCOPED_IDENTIFIER,
  SCOPED_TYPE,
  SCOPED_USE_LIST,
  SELF,
  SELF_PARAMETER,
  SHORTHAND_FIELD,
  SLICE_PATTERN,
  STATIC,
  STRING,
  STRUCT,
  STRUCT_EXPRESSION,
  STRUCT_PATTERN,
  SUPER,
  TOKEN_TREE,
  TRAIT,
  TRY,
  TUPLE,
  TUPLE_PATTERN,
  TUPLE_STRUCT_PATTERN,
  TYPE_ARGUMENTS,
  TYPE_BINDING,
  TYPE_IDENTIFIER,
  TYPE_ITEM,
  TYPE_PARAMETER,
  TYPE_PARAMETERS,
  UNARY,
  UNION,
  UNSAFE_BLOCK,
  USE,
  USE_AS,
  USE_LIST,
  USE_WILDCARD,
  VARIADIC,
  VISIBILITY,
  WHERE_CLAUSE,
  WHERE_PREDICATE,
  WHILE,
};

struct Fields {
  TSFieldId alias, alternative, argument, arguments, body, bounds, condition, consequence, element,
      field, function, left, list, macro, name, parameters, path, pattern, return_type, right,
      trait, type, type_arguments, type_parameters, value;
};

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// The only child of a node with the kind, or a null node.
TSNode child_of_kind(TSNode node, Node kind);

}  // namespace context_delta::indexer::rust
