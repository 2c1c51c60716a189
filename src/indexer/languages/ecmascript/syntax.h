#pragma once

#include <cstdint>
#include <string_view>

#include "indexer/languages/kit/nodes.h"

/// The nodes that the grammars of JavaScript, TypeScript and TSX share, as extraction sees them.
namespace context_delta::indexer::ecmascript {

enum class Node : std::uint8_t {
  OTHER,
  ERROR,
  AMBIENT,
  ARGUMENTS,
  ARRAY,
  ARRAY_PATTERN,
  ARROW_FUNCTION,
  AS_EXPRESSION,
  ASSIGNMENT,
  ASSIGNMENT_PATTERN,
  AUGMENTED_ASSIGNMENT,
  AWAIT,
  BINARY,
  BLOCK,
  BRANCH,
  CALL,
  CATCH,
  CLASS_BODY,
  CLASS_DECLARATION,
  CLASS_EXPRESSION,
  COMMENT,
  COMPUTED_NAME,
  DECORATOR,
  ENUM,
  EXPORT,
  EXPORT_CLAUSE,
  EXPRESSION_STATEMENT,
  EXTENDS,
  FIELD,
  FOR,
  FOR_IN,
  FUNCTION_DECLARATION,
  FUNCTION_EXPRESSION,
  FUNCTION_SIGNATURE,
  FUNCTION_TYPE,
  GENERIC_TYPE,
  HERITAGE,
  IDENTIFIER,
  IMPLEMENTS,
  IMPORT,
  IMPORT_ALIAS,
  IMPORT_CLAUSE,
  IMPORT_KEYWORD,
  IMPORT_REQUIRE,
  IMPORT_SPECIFIER,
  INTERFACE,
  JSX_NAME,
  JSX_OPENING,
  LEXICAL,
  MEMBER,
  METHOD,
  METHOD_SIGNATURE,
  NAMED_IMPORTS,
  NAMESPACE,
  NAMESPACE_EXPORT,
  NAMESPACE_IMPORT,
  NESTED_TYPE,
  NEW,
  NON_NULL,
  NULL_VALUE,
  NUMBER,
  OBJECT,
  OBJECT_ASSIGNMENT_PATTERN,
  OBJECT_PATTERN,
  OBJECT_TYPE,
  PAIR,
  PAIR_PATTERN,
  PARAMETER,
  PARENTHESIZED,
  PRIVATE_NAME,
  PROGRAM,
  PROPERTY_NAME,
  PROPERTY_SIGNATURE,
  REGEX,
  REST,
  RETURN,
  SATISFIES,
  SEQUENCE,
  SHORTHAND,
  SHORTHAND_PATTERN,
  SPREAD,
  STATIC_BLOCK,
  STRING,
  SUBSCRIPT,
  SUPER,
  TEMPLATE,
  TERNARY,
  THIS,
  TYPE,
  TYPE_ALIAS,
  TYPE_ARGUMENTS,
  TYPE_NAME,
  TYPE_PARAMETER,
  UPDATE,
  VARIABLE_DECLARATION,
  VARIABLE_DECLARATOR,
};

struct Fields {
  TSFieldId alias, alternative, arguments, body, consequence, constraint, constructor, declaration,
      function, index, key, kind, left, module, name, object, operator_, parameter, parameters,
      pattern, property, return_type, right, source, type, type_parameters, value;
};

/// The tables of one grammar.
struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
  bool typed = false;  ///< TypeScript: what a parameter's default is decides its type
};

Syntax make_syntax(const TSLanguage* language, bool typed);

/// What a string literal holds, without its quotes.
std::string_view string_content(TSNode literal, std::string_view text);

/// The first named child that is no comment; null when there is none.
TSNode first_child(const Syntax& syntax, TSNode node);

/// The expression inside parentheses, casts, `await` and `!`.
TSNode unwrapped(const Syntax& syntax, TSNode node);

/// Whether the node is a function without a declaration: an arrow function or an expression.
bool is_function_value(Node kind);

/// Whether a child without a name, such as the keyword `static` or `get`, stands in the node before
/// its body.
bool has_keyword(TSNode node, std::string_view keyword);

}  // namespace context_delta::indexer::ecmascript
