#include "indexer/languages/c_family/brackets.h"

#include <algorithm>
#include <cctype>

namespace context_delta::indexer::c_family {
namespace {

bool is_control(std::string_view word) {
  return word == "if" || word == "for" || word == "while" || word == "switch" || word == "catch";
}

void begin_statement(BracketState& state) {
  state.is_type_statement = false;
  state.is_enum = false;
  state.has_parentheses = false;
  state.at_start = true;
}

void open_brace(BracketState& state) {
  Bracket bracket;
  const bool in_values = !state.open.empty() && state.open.back().kind == Bracket::Kind::VALUES;
  const bool in_parentheses =
      !state.open.empty() && state.open.back().kind == Bracket::Kind::PARENTHESES;
  if (state.is_enum || in_values || state.last == "=" || (in_parentheses && state.last != ")")) {
    bracket.kind = Bracket::Kind::VALUES;
  } else if (state.is_type_statement && !state.has_parentheses) {
    bracket.kind = Bracket::Kind::DECLARATIONS;
  }
  state.open.push_back(bracket);
  begin_statement(state);
}

void close(BracketState& state, bool brace) {
  Bracket closed;
  // A closing bracket that does not match closes what stands open in between, too.
  while (!state.open.empty()) {
    closed = state.open.back();
    state.open.pop_back();
    const bool is_brace = closed.kind != Bracket::Kind::PARENTHESES;
    if (is_brace == brace || !brace) break;
  }
  if (brace) {
    if (closed.kind != Bracket::Kind::VALUES) begin_statement(state);
    return;
  }
  state.follows_control = closed.after_control;
  state.follows_parameters = closed.after_name && !closed.after_control;
}

void advance_word(BracketState& state, std::string_view word) {
  state.is_type_statement = state.is_type_statement || word == "class" || word == "struct" ||
                            word == "union" || word == "namespace" || word == "extern";
  state.is_enum = state.is_enum || word == "enum";
  state.at_start = false;
}

}  // namespace

bool among_declarations(const BracketState& state) {
  return std::all_of(state.open.begin(), state.open.end(), [](const Bracket& bracket) {
    return bracket.kind == Bracket::Kind::DECLARATIONS;
  });
}

bool inside_expression(const BracketState& state) {
  return !state.open.empty() && (state.open.back().kind == Bracket::Kind::PARENTHESES ||
                                 state.open.back().kind == Bracket::Kind::VALUES);
}

void advance(BracketState& state, const Token& token, std::string_view text) {
  const std::string_view word = text.substr(token.start, token.end - token.start);
  const bool was_word =
      !state.last.empty() && state.last != ")" &&
      (state.last.back() == '_' || std::isalnum(static_cast<unsigned char>(state.last.back())));
  state.follows_control = false;
  state.follows_parameters = false;
  if (token.kind == Token::Kind::WORD) {
    advance_word(state, word);
    state.follows_control = word == "else" || word == "do";
  } else if (word == "(" || word == "[") {
    state.open.push_back({.kind = Bracket::Kind::PARENTHESES,
                          .after_control = word == "(" && is_control(state.last),
                          .after_name = word == "(" && was_word});
    state.has_parentheses = true;
  } else if (word == ")" || word == "]") {
    close(state, false);
  } else if (word == "{") {
    open_brace(state);
  } else if (word == "}") {
    close(state, true);
  } else if (word == ";") {
    if (!inside_expression(state)) begin_statement(state);
  } else if (token.kind != Token::Kind::STRING || !state.is_type_statement) {
    state.at_start = false;
  }
  // A label needs a statement behind it; `public:` does not.
  state.is_complete = word == ";" || word == "{" || word == "}" ||
                      (word == ":" && among_declarations(state)) ||
                      (word == ")" && !state.follows_control);
  state.last = word;
}

}  // namespace context_delta::indexer::c_family
