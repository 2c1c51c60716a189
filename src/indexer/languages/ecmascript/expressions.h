#pragma once

#include <string>
#include <string_view>

#include "indexer/languages/ecmascript/syntax.h"

/// Expressions as receivers and values are written in facts.
///
/// Names are joined by `.`; `()` is a call, `[]` an index, `~` a construction: `new A().b(c)[0]` is
/// `A~.b()[]`. `~String` is a literal of the language's own class, whatever the text defines, `<T>`
/// is something cast to the type T, `{7:3}` the third object literal of the definition 7, `=7` that
/// definition itself
/// (`=7!` what `this` is in its methods), `<T>@0` the first parameter of functions of the type T,
/// `x'8_2` a name that the second block of the definition 7 declares, `'m0` a module loaded in an
/// expression, `null` null or undefined, and `?` anything else.
namespace context_delta::indexer::ecmascript {

/// What an expression needs that its own text does not say.
class ExpressionContext {
 public:
  virtual ~ExpressionContext() = default;
  /// What `this` is here.
  virtual std::string this_text() = 0;
  /// The object that a literal makes.
  virtual std::string object_text(TSNode literal) = 0;
  /// The module that a call of `require` or `import` loads.
  virtual std::string module_text(std::string_view specifier, TSNode call) = 0;
  /// A function or class that has become a definition; empty for others.
  virtual std::string definition_text(TSNode node) = 0;
};

/// The normal form of an expression.
std::string expression_text(const Syntax& syntax, TSNode node, std::string_view text,
                            ExpressionContext& context);

/// The specifier of `require("...")` and `import("...")` with one literal argument; empty for other
/// nodes.
std::string_view loaded_module(const Syntax& syntax, TSNode call, std::string_view text);

}  // namespace context_delta::indexer::ecmascript
