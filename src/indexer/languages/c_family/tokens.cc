#include "indexer/languages/c_family/tokens.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {
namespace {

using kit::is_identifier_byte;

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::vector<Token> run() {
    while (at_ < text_.size()) step();
    return std::move(tokens_);
  }

 private:
  char here() const { return text_[at_]; }
  bool starts(std::string_view with) const { return text_.substr(at_, with.size()) == with; }

  void step() {
    const char byte = here();
    if (byte == '\n') {
      line_start_ = true;
      ++at_;
    } else if (byte == ' ' || (byte >= '\t' && byte <= '\r') || byte == '\\') {
      ++at_;
    } else if (byte == '/' && starts("//")) {
      skip_line();
    } else if (byte == '/' && starts("/*")) {
      skip_comment();
    } else {
      token(byte);
      line_start_ = false;
    }
  }

  void token(char byte) {
    const std::size_t start = at_;
    Token::Kind kind = Token::Kind::PUNCTUATION;
    if (byte == '#' && line_start_) {
      kind = Token::Kind::DIRECTIVE;
      skip_directive();
    } else if (byte == '"' || byte == '\'') {
      kind = Token::Kind::STRING;
      skip_string(byte);
    } else if (std::isdigit(static_cast<unsigned char>(byte))) {
      kind = Token::Kind::NUMBER;
      skip_number();
    } else if (is_identifier_byte(byte)) {
      kind = Token::Kind::WORD;
      while (at_ < text_.size() && is_identifier_byte(here())) ++at_;
      const std::string_view word = text_.substr(start, at_ - start);
      if (word.ends_with('R') && word.size() < 4 && at_ < text_.size() && here() == '"') {
        kind = Token::Kind::STRING;
        skip_raw_string();
      }
    } else {
      at_ += byte == ':' && starts("::") ? 2 : 1;
    }
    tokens_.push_back({kind, start, at_});
  }

  void skip_line() {
    while (at_ < text_.size() && here() != '\n') {
      at_ += here() == '\\' && at_ + 1 < text_.size() ? 2 : 1;
    }
  }

  void skip_comment() {
    const std::size_t end = text_.find("*/", at_ + 2);
    at_ = end == std::string_view::npos ? text_.size() : end + 2;
  }

  void skip_directive() {
    while (at_ < text_.size() && here() != '\n') {
      if (starts("/*")) {
        skip_comment();
      } else if (starts("//")) {
        skip_line();
      } else {
        at_ += here() == '\\' && at_ + 1 < text_.size() ? (text_[at_ + 1] == '\r' ? 3 : 2) : 1;
      }
    }
    at_ = std::min(at_, text_.size());
  }

  /// A string that is not closed ends with its line.
  void skip_string(char quote) {
    ++at_;
    while (at_ < text_.size() && here() != quote && here() != '\n') {
      at_ += here() == '\\' && at_ + 1 < text_.size() ? 2 : 1;
    }
    if (at_ < text_.size() && here() == quote) ++at_;
    at_ = std::min(at_, text_.size());
  }

  void skip_raw_string() {
    const std::size_t open = text_.find('(', at_);
    if (open == std::string_view::npos || open - at_ > 18) return skip_string('"');
    const std::string close = ")" + std::string(text_.substr(at_ + 1, open - at_ - 1)) + "\"";
    const std::size_t end = text_.find(close, open);
    at_ = end == std::string_view::npos ? text_.size() : end + close.size();
  }

  void skip_number() {
    while (at_ < text_.size() && (is_identifier_byte(here()) || here() == '.' || here() == '\'')) {
      ++at_;
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  bool line_start_ = true;
  std::vector<Token> tokens_;
};

constexpr auto KEYWORDS = std::to_array<std::string_view>(
    {"auto",     "bool",      "break",   "case",      "char",   "class",    "const",    "constexpr",
     "continue", "default",   "delete",  "do",        "double", "else",     "enum",     "explicit",
     "extern",   "final",     "float",   "for",       "friend", "goto",     "if",       "inline",
     "int",      "long",      "mutable", "namespace", "new",    "noexcept", "operator", "override",
     "private",  "protected", "public",  "register",  "return", "short",    "signed",   "sizeof",
     "static",   "struct",    "switch",  "template",  "throw",  "try",      "typedef",  "typename",
     "union",    "unsigned",  "using",   "virtual",   "void",   "volatile", "while"});

}  // namespace

std::vector<Token> tokens_of(std::string_view text) { return Lexer(text).run(); }

bool is_capital_word(std::string_view word) {
  bool capital = false;
  for (const char byte : word) {
    if (byte >= 'a' && byte <= 'z') return false;
    capital = capital || (byte >= 'A' && byte <= 'Z');
  }
  return capital && word.size() > 1;
}

bool is_keyword(std::string_view word) {
  return std::binary_search(KEYWORDS.begin(), KEYWORDS.end(), word);
}

}  // namespace context_delta::indexer::c_family
