#pragma once

#include <cstdint>
#include <string_view>

#include "indexer/languages/ecmascript/tables.h"
#include "indexer/languages/kit/nodes.h"

/// The nodes that the grammars of JavaScript, TypeScript and TSX share, as extraction sees them.
namespace context_delta::indexer::ecmascript {

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
