#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/nodes.h"

/// The nodes of the Python grammar that extraction looks at.
namespace context_delta::indexer::python {

enum class Node : std::uint8_t {
  OTHER,
  ERROR,
  ARGUMENT_LIST,
  AS_PATTERN,
  AS_PATTERN_TARGET,
  ASSIGNMENT,
  ATTRIBUTE,
  AUGMENTED_ASSIGNMENT,
  AWAIT,
  CALL,
  CASE_PATTERN,
  CLASS,
  COMMENT,
  CONCATENATED_STRING,
  CONDITIONAL_EXPRESSION,
  DECORATED,
  DECORATOR,
  DEFAULT_PARAMETER,
  DELETE,
  DICTIONARY,
  DICTIONARY_SPLAT,
  DICTIONARY_SPLAT_PATTERN,
  DOTTED_NAME,
  EXCEPT,
  FLOAT,
  FOR,
  FOR_IN,
  FUNCTION,
  FUTURE_IMPORT,
  GENERATOR,
  GENERIC_TYPE,
  GLOBAL,
  IDENTIFIER,
  IF,
  IMPORT,
  IMPORT_FROM,
  ALIASED_IMPORT,
  INTEGER,
  KEYWORD_ARGUMENT,
  KEYWORD_SEPARATOR,
  LAMBDA,
  LIST,
  LIST_PATTERN,
  LIST_SPLAT,
  LIST_SPLAT_PATTERN,
  NAMED_EXPRESSION,
  NONE,
  NONLOCAL,
  PAIR,
  PARENTHESIZED,
  PATTERN_LIST,
  POSITIONAL_SEPARATOR,
  SET,
  SPLAT_PATTERN,
  STRING,
  SUBSCRIPT,
  TRY,
  TUPLE,
  TUPLE_PATTERN,
  TYPE,
  TYPE_ALIAS,
  TYPED_DEFAULT_PARAMETER,
  TYPED_PARAMETER,
  WHILE,
  WILDCARD,
};

struct Fields {
  TSFieldId alias, argument, arguments, attribute, body, definition, function, left, module_name,
      name, object, parameters, return_type, right, superclasses, type, value;
};

struct Syntax {
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The grammar's tables, made once.
const Syntax& syntax();

/// An expression as receivers are written: `self.store`, `Foo()`, `a.b[].c`. Literals stand as
/// calls of their types ("str()"), `await` is left out, anything else is "?".
std::string expression_text(TSNode node, std::string_view text);

/// The names that an assignment target binds; attributes and subscripts are left out.
std::vector<TSNode> bound_names(TSNode target);

}  // namespace context_delta::indexer::python
