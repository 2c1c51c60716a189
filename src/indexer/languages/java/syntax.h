#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "indexer/languages/kit/nodes.h"

/// The nodes of the Java grammar that extraction looks at.
namespace context_delta::indexer::java {

enum class Node : std::uint8_t {
  OTHER,
  ERROR,
  ANNOTATED_TYPE,
  ANNOTATION,
  ANNOTATION_ELEMENT,
  ANNOTATION_TYPE,
  ARGUMENT_LIST,
  ARRAY_ACCESS,
  ARRAY_CREATION,
  ARRAY_INITIALIZER,
  ARRAY_TYPE,
  ASSIGNMENT,
  ASTERISK,
  BASES,
  BINARY,
  BLOCK,
  BOOLEAN,
  CALL,
  CAST,
  CATCH,
  CATCH_PARAMETER,
  CATCH_TYPE,
  CHARACTER,
  CLASS,
  CLASS_BODY,
  CLASS_LITERAL,
  COMMENT,
  COMPACT_CONSTRUCTOR,
  CONSTRUCTOR,
  DECLARATOR,
  DIMENSIONS,
  DIMENSIONS_EXPRESSION,
  ENHANCED_FOR,
  ENUM,
  ENUM_BODY,
  ENUM_BODY_DECLARATIONS,
  ENUM_CONSTANT,
  EXPLICIT_CONSTRUCTOR,
  EXPRESSION_STATEMENT,
  FIELD,
  FIELD_ACCESS,
  FLOATING,
  FOR,
  GENERIC_TYPE,
  GROUP,
  IDENTIFIER,
  IMPORT,
  INFERRED_PARAMETERS,
  INSTANCEOF,
  INTEGER,
  INTERFACE,
  LAMBDA,
  LOCAL_VARIABLE,
  METHOD,
  METHOD_REFERENCE,
  MODIFIERS,
  MODULE,
  MODULE_TYPES,
  NULL_LITERAL,
  OBJECT_CREATION,
  PACKAGE,
  PARAMETER,
  PARAMETERS,
  PARENTHESIZED,
  PATTERN,
  PRIMITIVE_TYPE,
  RECORD,
  RESOURCE,
  RETURN,
  SCOPED_IDENTIFIER,
  SCOPED_TYPE,
  SPREAD_PARAMETER,
  STATIC_INITIALIZER,
  STRING,
  SUPER,
  SWITCH,
  TERNARY,
  THIS,
  THROW,
  TYPE_ARGUMENTS,
  TYPE_IDENTIFIER,
  TYPE_LIST,
  TYPE_PARAMETER,
  TYPE_PARAMETERS,
  UNARY,
  UPDATE,
  WHILE,
};

struct Fields {
  TSFieldId alternative, arguments, array, body, consequence, constructor, declarator, dimensions,
      element, field, interfaces, left, name, object, operand, operation, parameters, right,
      superclass, type, type_parameters, value;
};

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// The first named child that is no comment; a null node when there is none.
TSNode first_child(TSNode node);

/// The first child of a kind; a null node when there is none.
TSNode child_of_kind(TSNode node, Node kind);

/// Whether a node is an expression that also stands as a statement: a call, an assignment, ...
bool is_statement_expression(Node kind);

}  // namespace context_delta::indexer::java
