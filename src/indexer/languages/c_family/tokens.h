#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// Source text of C and C++ cut into tokens, roughly: enough to match brackets and to find macros.
namespace context_delta::indexer::c_family {

struct Token {
  enum class Kind : std::uint8_t { WORD, NUMBER, STRING, PUNCTUATION, DIRECTIVE };
  Kind kind = Kind::PUNCTUATION;
  std::size_t start = 0;
  std::size_t end = 0;
};

/// Comments and white space are left out. A directive is one token, with its continued lines.
/// Operators are cut into single characters, except "::".
std::vector<Token> tokens_of(std::string_view text);

/// Whether a word has capitals and no small letters, as macros are written.
bool is_capital_word(std::string_view word);

/// Whether a word is a keyword of types, storage or statements.
bool is_keyword(std::string_view word);

}  // namespace context_delta::indexer::c_family
