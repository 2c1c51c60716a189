#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "indexer/languages/c_family/tokens.h"

/// Which brackets stand open between tokens, and what they enclose.
namespace context_delta::indexer::c_family {

struct Bracket {
  enum class Kind : std::uint8_t {
    DECLARATIONS,  ///< braces of a namespace, a class, extern "C"
    CODE,          ///< braces of statements
    VALUES,        ///< braces of an initialiser or an enum
    PARENTHESES,   ///< round or square
  };
  Kind kind = Kind::CODE;
  bool after_control = false;  ///< parentheses of if, for, while, switch
  bool after_name = false;     ///< parentheses behind any other word
};

/// The state between two tokens.
struct BracketState {
  std::vector<Bracket> open;
  bool is_type_statement = false;  ///< class, struct, union, namespace or extern was said
  bool is_enum = false;
  bool has_parentheses = false;     ///< since the statement began
  bool at_start = true;             ///< of a statement
  bool follows_control = false;     ///< behind `if (...)`, `else` and the like
  bool follows_parameters = false;  ///< behind `name(...)`
  bool is_complete = true;          ///< the last token may end a statement
  std::string_view last;            ///< the last token
};

/// Whether only namespaces, classes and the like are open.
bool among_declarations(const BracketState& state);

/// Whether initialisers or parentheses are open.
bool inside_expression(const BracketState& state);

/// Moves the state over one token, which is no directive.
void advance(BracketState& state, const Token& token, std::string_view text);

}  // namespace context_delta::indexer::c_family
