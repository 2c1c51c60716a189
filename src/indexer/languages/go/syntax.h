#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/nodes.h"

/// The nodes of the Go grammar that extraction looks at.
namespace context_delta::indexer::go {

enum class Node : std::uint8_t {
  OTHER,
  ERROR,
  ARGUMENT_LIST,
  ARRAY_TYPE,
  ASSIGNMENT,
  BINARY,
  BLANK,
  BLOCK,
  CALL,
  CASE,
  CHANNEL_TYPE,
  COMMENT,
  COMPOSITE_LITERAL,
  CONST_DECLARATION,
  CONST_SPEC,
  CONVERSION,
  DOT,
  FIELD_DECLARATION,
  FIELD_LIST,
  FLOAT,
  FOR,
  FUNCTION,
  FUNCTION_LITERAL,
  FUNCTION_TYPE,
  GENERIC_TYPE,
  IDENTIFIER,
  IF,
  IMPORT_SPEC,
  INDEX,
  INTEGER,
  INTERFACE_TYPE,
  IOTA,
  LITERAL_ELEMENT,
  LITERAL_VALUE,
  MAP_TYPE,
  METHOD,
  METHOD_ELEMENT,
  NEGATED_TYPE,
  NIL,
  PACKAGE_CLAUSE,
  PACKAGE_IDENTIFIER,
  PARAMETER,
  PARAMETER_LIST,
  PARENTHESIZED,
  PARENTHESIZED_TYPE,
  POINTER_TYPE,
  QUALIFIED_TYPE,
  RANGE,
  RECEIVE,
  RUNE,
  SELECTOR,
  SHORT_VARIABLES,
  SLICE,
  SLICE_TYPE,
  STRING,
  STRUCT_TYPE,
  SWITCH,
  TRUE_OR_FALSE,
  TYPE_ALIAS,
  TYPE_ARGUMENTS,
  TYPE_ASSERTION,
  TYPE_CASE,
  TYPE_ELEMENT,
  TYPE_IDENTIFIER,
  TYPE_INSTANTIATION,
  TYPE_PARAMETER,
  TYPE_SPEC,
  TYPE_SWITCH,
  UNARY,
  VARIABLE_DECLARATION,
  VARIABLE_SPEC,
  VARIADIC_ARGUMENT,
  VARIADIC_PARAMETER,
};

struct Fields {
  TSFieldId alias, arguments, body, element, field, function, initializer, left, name, operand,
      operation, package, parameters, path, receiver, result, right, type, type_arguments,
      type_parameters, value;
};

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// Named children without comments.
std::vector<TSNode> parts(TSNode node);

/// Whether a node has a child that is this punctuation or keyword.
bool has_token(TSNode node, std::string_view token);

}  // namespace context_delta::indexer::go
