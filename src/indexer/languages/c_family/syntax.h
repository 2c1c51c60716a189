#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/c_family/tables.h"
#include "indexer/languages/kit/nodes.h"

/// The nodes that the grammars of C and C++ share, for one extractor of both.
namespace context_delta::indexer::c_family {

struct Syntax {
  const TSLanguage* language;
  bool is_cpp;
  kit::NodeKinds<Node> kind;
  Fields field;
};

/// The tables of a grammar. `language` is that of C or C++.
Syntax make_syntax(const TSLanguage* language, bool is_cpp);

/// A name as written: `ns::Foo<int>::bar` has the scope `ns::Foo` and the name `bar`. The scope of
/// `::bar` is "::". `name_node` is the last part.
struct QualifiedName {
  std::string scope;
  std::string name;
  TSNode name_node = {};
};
QualifiedName qualified_name(const Syntax& syntax, TSNode node, std::string_view text);

/// A type as written, without `struct`, `typename` and the like; "auto" stays.
std::string type_text(const Syntax& syntax, TSNode type, std::string_view text);

/// An expression as receivers are written: `this.store`, `Foo()`, `a.b[].c`, `ns::f()`. Pointers
/// are not told from what they point to; a cast stands as a call of its type; anything else is "?".
std::string expression_text(const Syntax& syntax, TSNode node, std::string_view text);

/// What a declarator declares.
struct Declarator {
  TSNode name = {};        ///< an identifier, a qualified or an operator name; null when none
  TSNode parameters = {};  ///< of a function; null when it declares no function
  TSNode function = {};    ///< the function declarator
  TSNode value = {};       ///< of an initialised variable
  bool is_pointer = false;
};
Declarator declarator_of(const Syntax& syntax, TSNode node);

/// How many arguments are passed; ANY_NUMBER when a pack is expanded.
std::int16_t call_arguments(const Syntax& syntax, TSNode arguments, std::string_view text);

}  // namespace context_delta::indexer::c_family
