#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Expressions of a text as a tree: what receivers, arguments and bound values are.
///
/// A language keeps what its rules ask for and no more; the rest is UNKNOWN. What a literal or a
/// cast is has a kind of its own, so that no name of the text can be taken for it.
namespace context_delta::indexer {

/// Index of an expression in Interface::expressions.
using ExpressionIndex = std::int32_t;
inline constexpr ExpressionIndex NO_EXPRESSION = -1;

enum class ExpressionKind : std::uint8_t {
  UNKNOWN,     ///< nothing is known of it
  NAME,        ///< the bare `name`
  LOCAL,       ///< the variable `name` of the binding `number`
  SELF,        ///< this, self
  SUPER,       ///< the object as its bases see it
  MEMBER,      ///< `name` of operands[0]
  SCOPED,      ///< `name` within operands[0], a namespace or type (none: the outermost)
  CALL,        ///< operands[0], called with the other operands
  CONSTRUCT,   ///< a new object of the class operands[0], made from the other operands
  INDEX,       ///< an element of operands[0] (at operands[1] where that is kept)
  SLICE,       ///< a part of operands[0] that is of the same type
  LITERAL,     ///< of the language's own type `name`, whatever the text defines
  NONE,        ///< None, null, nil
  TYPED,       ///< a value of the type `name` as written: a cast, a declared or zero value
  EXACT,       ///< a value of exactly the class `name` as written
  FUNCTION,    ///< a function literal with `number` parameters; `name` and operands: its results
  PARAMETER,   ///< parameter `number` of the function literal handed to the call operands[0]
  DEFINITION,  ///< the definition `number` of the file
  OBJECT,      ///< an object literal
  TUPLE,       ///< of its operands
  ITEM,        ///< item `number` of the tuple or object operands[0]
  ELEMENT,     ///< what iterating over operands[0] yields
  UNWRAPPED,   ///< what is in operands[0]: awaited, tried, dereferenced
  MATCHED,     ///< part `number` of operands[0] as the pattern `name` takes it apart
  OPERATION,   ///< the operator `name` on its operands
  CHOICE,      ///< one of its operands
  MODULE,      ///< the module `name`, loaded by an expression
  REFERENCE,   ///< the function or method `name` of operands[0] as a value
  SPREAD,      ///< any number of values
  NEVER,       ///< no value comes of it
};

struct Expression {
  ExpressionKind kind = ExpressionKind::UNKNOWN;
  std::string name = {};
  std::int32_t number = 0;
  std::vector<ExpressionIndex> operands = {};  ///< each earlier than the expression itself
  friend bool operator==(const Expression&, const Expression&) = default;
};

/// For tests and debugging alone, never to be read back: `self.store`, `new Foo(1?)`, `"str"`.
std::string describe(const std::vector<Expression>& expressions, ExpressionIndex index);

}  // namespace context_delta::indexer
