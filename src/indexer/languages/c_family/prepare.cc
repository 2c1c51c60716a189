#include "indexer/languages/c_family/prepare.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "indexer/languages/c_family/brackets.h"
#include "indexer/languages/c_family/tokens.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {
namespace {

/// The text with parts blanked out; made only when something is.
class Blanks {
 public:
  explicit Blanks(std::string_view text) : text_(text) {}

  void blank(std::size_t start, std::size_t end) {
    if (made_.empty()) made_ = std::string(text_);
    for (std::size_t i = start; i < std::min(end, made_.size()); ++i) {
      if (made_[i] != '\n' && made_[i] != '\r') made_[i] = ' ';
    }
  }
  std::string take() { return std::move(made_); }

 private:
  std::string_view text_;
  std::string made_;
};

/// Finds the groups of #if whose branches are no whole statements.
class Conditionals {
 public:
  Conditionals(std::string_view text, const std::vector<Token>& tokens, Blanks& blanks)
      : text_(text), tokens_(tokens), blanks_(blanks), dead_(tokens.size(), false) {}

  /// Blanks them out and returns the tokens that remain, without directives.
  std::vector<Token> run();

 private:
  struct Branch {
    std::size_t directive = 0;  ///< token that begins it
    std::size_t end = 0;        ///< token of the directive that ends it
    BracketState state;         ///< at its end
  };
  struct Group {
    BracketState before;
    bool breaks_statement = false;
    std::vector<Branch> branches;
  };

  std::string_view directive_name(const Token& token) const;
  void begin(std::size_t index);
  void next_branch(std::size_t index);
  void end(std::size_t index);
  bool is_whole(const Group& group, std::size_t index) const;
  bool can_follow_each_other(const Group& group) const;
  std::string_view word(std::size_t index) const {
    return text_.substr(tokens_[index].start, tokens_[index].end - tokens_[index].start);
  }
  void blank_comments(const Token& directive);
  struct Condition {
    std::string_view name;
    bool positive = true;  ///< asks for the macro to be defined
  };
  Condition condition_of(const Token& directive) const;
  std::size_t chosen_branch(const Group& group);
  void flatten(const Group& group, std::size_t chosen, std::size_t end);

  std::string_view text_;
  const std::vector<Token>& tokens_;
  Blanks& blanks_;
  std::vector<bool> dead_;
  BracketState state_;
  std::vector<Group> groups_;
  std::unordered_map<std::string_view, bool> assumed_;  // whether a macro is taken to be defined
};

std::string_view Conditionals::directive_name(const Token& token) const {
  std::string_view written = text_.substr(token.start + 1, token.end - token.start - 1);
  written = kit::trimmed(written);
  std::size_t size = 0;
  while (size < written.size() && kit::is_identifier_byte(written[size])) ++size;
  return written.substr(0, size);
}

std::vector<Token> Conditionals::run() {
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (tokens_[i].kind != Token::Kind::DIRECTIVE) {
      advance(state_, tokens_[i], text_);
      continue;
    }
    const std::string_view name = directive_name(tokens_[i]);
    if (name == "if" || name == "ifdef" || name == "ifndef") begin(i);
    if (name == "else" || name.starts_with("elif")) next_branch(i);
    if (name == "endif") end(i);
    if (name == "define") blank_comments(tokens_[i]);
    const bool plain = name == "include" || name == "define" || name == "undef";
    if (plain && inside_expression(state_)) blanks_.blank(tokens_[i].start, tokens_[i].end);
  }
  std::vector<Token> live;
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (!dead_[i] && tokens_[i].kind != Token::Kind::DIRECTIVE) live.push_back(tokens_[i]);
  }
  return live;
}

void Conditionals::begin(std::size_t index) {
  Group group;
  group.before = state_;
  group.breaks_statement =
      inside_expression(state_) || (!state_.last.empty() && !state_.is_complete);
  group.branches.push_back({.directive = index, .end = 0, .state = {}});
  groups_.push_back(std::move(group));
}

void Conditionals::next_branch(std::size_t index) {
  if (groups_.empty()) return;
  Group& group = groups_.back();
  group.branches.back().end = index;
  group.branches.back().state = state_;
  group.branches.push_back({.directive = index, .end = 0, .state = {}});
  state_ = group.before;
}

void Conditionals::end(std::size_t index) {
  if (groups_.empty()) return;
  Group group = std::move(groups_.back());
  groups_.pop_back();
  group.branches.back().end = index;
  group.branches.back().state = state_;
  if (is_whole(group, index)) {
    state_ = group.branches.front().state;
    return;
  }
  const bool before_else = index + 1 < tokens_.size() && word(index + 1) == "else";
  if (!before_else && can_follow_each_other(group)) {
    state_ = group.branches.front().state;
    for (const Branch& branch : group.branches) {
      blanks_.blank(tokens_[branch.directive].start, tokens_[branch.directive].end);
    }
    blanks_.blank(tokens_[index].start, tokens_[index].end);
    return;
  }
  const std::size_t chosen = chosen_branch(group);
  state_ = chosen < group.branches.size() ? group.branches[chosen].state : group.before;
  flatten(group, chosen, index);
}

bool Conditionals::is_whole(const Group& group, std::size_t index) const {
  if (group.breaks_statement) return false;
  if (index + 1 < tokens_.size() && word(index + 1) == "else") return false;
  return std::all_of(group.branches.begin(), group.branches.end(), [&](const Branch& branch) {
    if (branch.directive + 1 == branch.end) return true;
    const bool same_depth = branch.state.open.size() == group.before.open.size();
    const std::string_view first = word(branch.directive + 1);
    return same_depth && branch.state.is_complete && first != "else" && first != "}" &&
           first != ")";
  });
}

/// Whether the text still parses when only the directives go: each branch is whole statements, or
/// whole values with their commas.
bool Conditionals::can_follow_each_other(const Group& group) const {
  return std::all_of(group.branches.begin(), group.branches.end(), [&](const Branch& branch) {
    if (branch.directive + 1 == branch.end) return true;
    const std::string_view first = word(branch.directive + 1);
    const std::string_view last = word(branch.end - 1);
    const bool ends = last == ";" || last == "}" || last == ":" ||
                      (last == "," && inside_expression(branch.state));
    return ends && first != "else" && first != "}" && first != ")" &&
           branch.state.open.size() == group.before.open.size();
  });
}

/// The grammars end a macro's body at a comment.
void Conditionals::blank_comments(const Token& directive) {
  const std::string_view written = text_.substr(directive.start, directive.end - directive.start);
  for (std::size_t at = written.find("/*"); at != std::string_view::npos;
       at = written.find("/*", at + 2)) {
    const std::size_t end = written.find("*/", at + 2);
    if (end == std::string_view::npos) return;
    const bool one_line = written.substr(at, end - at).find('\n') == std::string_view::npos;
    if (one_line) blanks_.blank(directive.start + at, directive.start + end + 2);
  }
}

/// The macro that a plain #if, #ifdef or #ifndef asks for; empty for other conditions.
Conditionals::Condition Conditionals::condition_of(const Token& directive) const {
  std::string_view written = text_.substr(directive.start + 1, directive.end - directive.start - 1);
  written = kit::trimmed(written);
  Condition made;
  made.positive = !written.starts_with("ifndef");
  const std::size_t name_size = directive_name(directive).size();
  for (const Token& token : tokens_of(written.substr(name_size))) {
    const std::string_view word = written.substr(name_size + token.start, token.end - token.start);
    if (word == "!") made.positive = !made.positive;
    if (token.kind == Token::Kind::NUMBER && made.name.empty()) made.name = word;
    if (token.kind != Token::Kind::WORD || word == "defined") continue;
    if (!made.name.empty()) return {};
    made.name = word;
  }
  return made;
}

/// One branch for all conditions on the same macro, so that brackets opened under one are closed
/// under the other: as if the macro were defined, but for "0" and those of other systems. The
/// number of branches stands for none of them.
std::size_t Conditionals::chosen_branch(const Group& group) {
  const Condition condition = condition_of(tokens_[group.branches.front().directive]);
  if (condition.name.empty()) return 0;
  const bool foreign =
      condition.name == "0" || condition.name.find("WIN32") != std::string_view::npos ||
      condition.name.find("WIN64") != std::string_view::npos || condition.name == "_MSC_VER";
  const auto [place, added] = assumed_.try_emplace(condition.name, !foreign && condition.positive);
  if (added && foreign) place->second = false;
  return place->second == condition.positive ? 0 : 1;
}

void Conditionals::flatten(const Group& group, std::size_t chosen, std::size_t end) {
  for (std::size_t i = 0; i < group.branches.size(); ++i) {
    const Branch& branch = group.branches[i];
    const Token& directive = tokens_[branch.directive];
    blanks_.blank(directive.start, directive.end);
    if (i == chosen) continue;
    blanks_.blank(directive.end, tokens_[branch.end].start);
    for (std::size_t token = branch.directive; token < branch.end; ++token) dead_[token] = true;
  }
  blanks_.blank(tokens_[end].start, tokens_[end].end);
}

/// The macros of a text that stand for nothing, or for words that only qualify a declaration.
std::unordered_set<std::string_view> idle_macros(std::string_view text,
                                                 const std::vector<Token>& tokens) {
  std::unordered_set<std::string_view> names;
  for (const Token& token : tokens) {
    if (token.kind != Token::Kind::DIRECTIVE) continue;
    std::string_view written = text.substr(token.start + 1, token.end - token.start - 1);
    written = kit::trimmed(written);
    if (!written.starts_with("define")) continue;
    const std::string_view definition = written.substr(6);
    const std::vector<Token> parts = tokens_of(definition);
    if (parts.empty() || parts.front().kind != Token::Kind::WORD) continue;
    const bool idle = std::all_of(parts.begin() + 1, parts.end(), [&](const Token& part) {
      const std::string_view word = definition.substr(part.start, part.end - part.start);
      return word == "const" || word == "volatile" || word == "static" || word == "inline" ||
             word == "extern" || word == "_Atomic" || word == "restrict" || word == "register";
    });
    if (idle) names.insert(definition.substr(parts[0].start, parts[0].end - parts[0].start));
  }
  return names;
}

/// Finds macros in declarations.
class Macros {
 public:
  Macros(std::string_view text, const std::vector<Token>& tokens, Blanks& blanks,
         std::unordered_set<std::string_view> idle)
      : text_(text), tokens_(tokens), blanks_(blanks), idle_(std::move(idle)) {}

  void run();

 private:
  std::string_view word(std::size_t index) const {
    if (index >= tokens_.size()) return {};
    return text_.substr(tokens_[index].start, tokens_[index].end - tokens_[index].start);
  }
  bool is_macro_word(std::size_t index) const {
    return index < tokens_.size() && tokens_[index].kind == Token::Kind::WORD &&
           is_capital_word(word(index));
  }
  bool is_word(std::size_t index) const {
    return index < tokens_.size() && tokens_[index].kind == Token::Kind::WORD;
  }
  std::size_t behind_macro(std::size_t index) const;
  std::size_t class_macro(std::size_t index) const;
  std::size_t leading_macro(std::size_t index, const BracketState& state) const;
  std::size_t trailing_macro(std::size_t index, const BracketState& state) const;
  bool declares_behind(std::size_t index) const;
  bool stands_alone(std::size_t index, const BracketState& state) const;

  std::string_view text_;
  const std::vector<Token>& tokens_;
  Blanks& blanks_;
  std::unordered_set<std::string_view> idle_;
  bool only_storage_ = true;  ///< since the statement began
};

void Macros::run() {
  BracketState state;
  for (std::size_t i = 0; i < tokens_.size();) {
    if (state.at_start) only_storage_ = true;
    std::size_t behind = 0;
    if (is_word(i) && idle_.contains(word(i))) {
      behind = i + 1;
    } else if (is_macro_word(i)) {
      behind = class_macro(i);
      if (behind == 0 && stands_alone(i, state)) behind = i + 1;
      if (behind == 0 && among_declarations(state)) behind = leading_macro(i, state);
      if (behind == 0 && among_declarations(state)) behind = trailing_macro(i, state);
    }
    if (behind > i) {
      blanks_.blank(tokens_[i].start, tokens_[behind - 1].end);
      i = behind;
      continue;
    }
    const std::string_view here = word(i);
    only_storage_ = only_storage_ && (here == "static" || here == "extern" || here == "inline" ||
                                      here == "virtual" || here == "const");
    advance(state, tokens_[i], text_);
    ++i;
  }
}

/// The token behind a macro and its arguments.
std::size_t Macros::behind_macro(std::size_t index) const {
  if (word(index + 1) != "(") return index + 1;
  int depth = 0;
  for (std::size_t i = index + 1; i < std::min(tokens_.size(), index + 200); ++i) {
    if (word(i) == "(") ++depth;
    if (word(i) == ")" && --depth == 0) return i + 1;
  }
  return index + 1;
}

/// A macro as a statement without a semicolon, in front of another statement.
bool Macros::stands_alone(std::size_t index, const BracketState& state) const {
  if (!state.at_start || among_declarations(state) || inside_expression(state)) return false;
  const std::string_view after = word(index + 1);
  return after == "switch" || after == "if" || after == "for" || after == "while" ||
         after == "return" || after == "do" || after == "goto" || after == "break";
}

/// `class MACRO Name {`, with as many macros as there are. 0: none.
std::size_t Macros::class_macro(std::size_t index) const {
  if (index == 0) return 0;
  const std::string_view before = word(index - 1);
  const bool tag = before == "class" || before == "struct" || before == "union";
  const bool more = index > 1 && is_macro_word(index - 1) &&
                    (word(index - 2) == "class" || word(index - 2) == "struct");
  if (!tag && !more) return 0;
  const std::size_t behind = behind_macro(index);
  if (!is_word(behind) || word(behind) == "final") return 0;
  const std::string_view after = word(behind + 1);
  const bool names_class = after == "{" || after == ":" || after == "final";
  return names_class || (is_macro_word(behind) && is_word(behind + 1)) ? behind : 0;
}

/// `MACRO Type name ...` where a declaration begins. 0: none.
std::size_t Macros::leading_macro(std::size_t index, const BracketState& state) const {
  if (!state.at_start && !only_storage_) return 0;
  const std::size_t behind = behind_macro(index);
  return declares_behind(behind) ? behind : 0;
}

/// Whether a type and a name follow, or a keyword that begins a declaration.
bool Macros::declares_behind(std::size_t index) const {
  std::size_t words = 0;
  int angles = 0;
  for (std::size_t i = index; i < std::min(tokens_.size(), index + 60); ++i) {
    const std::string_view here = word(i);
    if (angles == 0 && is_word(i)) {
      if (here == "class" || here == "namespace" || here == "operator" || here == "template") {
        return true;
      }
      words += i > index && word(i - 1) == "::" ? 0 : 1;
    } else if (here == "<") {
      ++angles;
    } else if (here == ">") {
      --angles;
    } else if (angles == 0 && here != "*" && here != "&" && here != "::") {
      return words > 1 && (here == "(" || here == ";" || here == "=" || here == "[" ||
                           here == "{" || here == ",");
    }
  }
  return false;
}

/// A macro behind `name(...)` or behind the name of a variable. 0: none.
std::size_t Macros::trailing_macro(std::size_t index, const BracketState& state) const {
  if (index < 2) return 0;
  const std::size_t behind = behind_macro(index);
  const std::string_view after = word(behind);
  const bool ends = after == ";" || after == "{" || after == "=" || after == ":" ||
                    is_macro_word(behind) || after == "const" || after == "override" ||
                    after == "noexcept";
  if (!ends) return 0;
  const std::string_view before = word(index - 1);
  const bool qualified =
      before == "const" || before == "override" || before == "noexcept" || before == "final";
  if (state.follows_parameters || (qualified && state.has_parentheses)) return behind;
  if (!is_word(index - 1) || is_keyword(before)) return 0;
  if (after != ";" && after != "=" && after != "{") return 0;
  const std::string_view type = word(index - 2);
  const bool typed = type == "*" || type == "&" || type == ">" ||
                     (type == "const" && index > 2 && word(index - 3) == "*") ||
                     (is_word(index - 2) && (!is_keyword(type) || type == "int" || type == "bool" ||
                                             type == "long" || type == "char"));
  return typed ? behind : 0;
}

}  // namespace

std::string prepare(std::string_view text) {
  const std::vector<Token> tokens = tokens_of(text);
  Blanks blanks(text);
  const std::vector<Token> live = Conditionals(text, tokens, blanks).run();
  Macros(text, live, blanks, idle_macros(text, tokens)).run();
  return blanks.take();
}

}  // namespace context_delta::indexer::c_family
