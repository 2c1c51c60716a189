#include "indexer/languages/rust/type_text.h"

#include <algorithm>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::rust {
namespace {

constexpr int DEEPEST = 12;

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  TypeText bounds(int depth) {
    TypeText made;
    made.kind = TypeText::Kind::BOUNDS;
    do {
      skip("?");
      skip_lifetime_and_for();
      if (at_name() || peek("(") || peek("<")) made.parts.push_back(type(depth + 1));
    } while (skip("+"));
    return made;
  }

  TypeText type(int depth) {
    TypeText made;
    if (depth > DEEPEST) return made;
    while (skip("&") || skip_pointer() || skip_word("mut") || skip_lifetime_and_for()) {
    }
    if (skip_word("dyn") || skip_word("impl")) return bounds(depth + 1);
    if (skip_word("unsafe") || skip_word("extern")) skip_quoted();
    if (skip("(")) return tuple(depth);
    if (skip("[")) return slice(depth);
    if (skip("<")) return qualified(depth);
    if (skip("!")) return made;
    path(made, depth);
    if (made.path.size() == 1 && made.path[0].name == "fn") {
      made.kind = TypeText::Kind::FUNCTION;
      made.parts = std::move(made.path[0].arguments);
      made.path.clear();
    }
    return made;
  }

 private:
  TypeText tuple(int depth) {
    TypeText made;
    made.kind = TypeText::Kind::TUPLE;
    bool comma = false;
    while (!done() && !peek(")")) {
      made.parts.push_back(type(depth + 1));
      comma = skip(",");
      if (!comma) break;
    }
    skip_to(')');
    if (made.parts.size() == 1 && !comma) {
      TypeText inner = std::move(made.parts.front());
      return inner;
    }
    return made;
  }

  TypeText slice(int depth) {
    TypeText made;
    made.kind = TypeText::Kind::SLICE;
    made.parts.push_back(type(depth + 1));
    skip_to(']');
    return made;
  }

  TypeText qualified(int depth) {
    TypeText made;
    made.kind = TypeText::Kind::QUALIFIED;
    made.parts.push_back(type(depth + 1));
    if (skip_word("as")) made.parts.push_back(type(depth + 1));
    skip_to('>');
    TypeText rest;
    if (skip("::")) path(rest, depth);
    made.path = std::move(rest.path);
    return made;
  }

  void path(TypeText& made, int depth) {
    skip("::");
    while (at_name()) {
      made.kind = TypeText::Kind::PATH;
      Segment segment;
      segment.name = name();
      if (peek("::<")) skip("::");
      if (skip("<")) {
        arguments(segment, depth);
      } else if (is_function(segment.name) && skip("(")) {
        result(segment, depth);
      }
      made.path.push_back(std::move(segment));
      if (!skip("::")) break;
    }
  }

  void arguments(Segment& segment, int depth) {
    while (!done() && !peek(">")) {
      const std::size_t before = at_;
      if (skip_lifetime_and_for()) {
        skip(",");
        continue;
      }
      if (at_name()) {
        const std::string_view word = name();
        if (peek("=") && !peek("==")) {
          skip("=");
          segment.bindings.push_back({word, type(depth + 1)});
          skip(",");
          continue;
        }
        at_ = before;
      }
      segment.arguments.push_back(type(depth + 1));
      skip_constant();
      if (!skip(",")) break;
    }
    skip_to('>');
  }

  /// `Fn(A) -> B`: its argument is B.
  void result(Segment& segment, int depth) {
    skip_to(')');
    if (skip("->")) segment.arguments.push_back(type(depth + 1));
  }

  static bool is_function(std::string_view name) {
    return name == "fn" || name == "Fn" || name == "FnMut" || name == "FnOnce";
  }

  void skip_spaces() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
  }
  bool done() {
    skip_spaces();
    return at_ >= text_.size();
  }
  bool peek(std::string_view token) {
    skip_spaces();
    return text_.substr(at_).starts_with(token);
  }
  bool skip(std::string_view token) {
    if (!peek(token)) return false;
    at_ += token.size();
    return true;
  }
  bool skip_word(std::string_view word) {
    if (!peek(word)) return false;
    const std::size_t end = at_ + word.size();
    if (end < text_.size() && kit::is_identifier_byte(text_[end])) return false;
    at_ = end;
    return true;
  }
  bool skip_pointer() { return peek("*") && (skip("*const") || skip("*")); }
  bool skip_lifetime_and_for() {
    if (skip_word("for")) {
      if (skip("<")) skip_to('>');
      return true;
    }
    if (!skip("'")) return false;
    if (at_name()) name();
    return true;
  }
  void skip_quoted() {
    if (!skip("\"")) return;
    while (at_ < text_.size() && text_[at_] != '"') ++at_;
    skip("\"");
  }
  /// The rest of a constant as an argument: `{ N + 1 }`, `3`.
  void skip_constant() {
    while (!done() && !peek(",") && !peek(">")) ++at_;
  }
  bool at_name() {
    skip_spaces();
    return at_ < text_.size() && kit::is_identifier_byte(text_[at_]);
  }
  std::string_view name() {
    skip_spaces();
    const std::size_t start = at_;
    while (at_ < text_.size() && kit::is_identifier_byte(text_[at_])) ++at_;
    return text_.substr(start, at_ - start);
  }
  /// Behind the bracket that closes what is open.
  void skip_to(char close) {
    int open = 0;
    for (; at_ < text_.size(); ++at_) {
      const char byte = text_[at_];
      const bool arrow = byte == '>' && at_ > 0 && text_[at_ - 1] == '-';
      if (open == 0 && byte == close && !arrow) break;
      if (byte == '(' || byte == '[' || byte == '<') ++open;
      if ((byte == ')' || byte == ']' || (byte == '>' && !arrow)) && open > 0) --open;
    }
    if (at_ < text_.size()) ++at_;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

TypeText parse_type(std::string_view text) { return Parser(text).type(0); }

TypeText parse_bounds(std::string_view text) { return Parser(text).bounds(0); }

}  // namespace context_delta::indexer::rust
