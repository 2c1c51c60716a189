#include "indexer/languages/rust/prepare.h"

#include <algorithm>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::rust {
namespace {

/// What a pair of braces holds.
enum class Braces : unsigned char { ITEMS, BRANCHES, WRAPPED, OTHER };

bool is_space(char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }

bool wraps_items(std::string_view macro) {
  return macro.starts_with("cfg_") || macro == "pin_project";
}

/// Nearly every text has no such macro.
bool may_wrap(std::string_view text) {
  return text.find("cfg_") != std::string_view::npos ||
         text.find("pin_project!") != std::string_view::npos;
}

/// Reads a text once, from bracket to bracket, without a grammar.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  void run() {
    while (at_ < text_.size()) step();
    // Braces that never close wrap nothing.
    if (open_wrapped_ == 0) return;
    blanks_.clear();
    regions_.clear();
  }

  const std::vector<WrappedItems>& regions() const { return regions_; }
  std::string blanked() const {
    if (blanks_.empty()) return {};
    std::string made(text_);
    for (const WrappedItems& blank : blanks_) {
      for (std::size_t i = blank.start; i < blank.end; ++i) {
        if (made[i] != '\n') made[i] = ' ';
      }
    }
    return made;
  }

 private:
  bool in_items() const {
    return braces_.empty() || braces_.back() == Braces::ITEMS || braces_.back() == Braces::WRAPPED;
  }
  bool in_branches() const { return !braces_.empty() && braces_.back() == Braces::BRANCHES; }
  bool at(std::string_view token) const { return text_.substr(at_).starts_with(token); }

  void step() {
    const char byte = text_[at_];
    if (at("//")) return skip_past("\n");
    if (at("/*")) return skip_block_comment();
    if (byte == '"') return skip_string();
    if (byte == '\'') return skip_quote();
    if (byte == '{') return open();
    if (byte == '}') return close();
    if (kit::is_identifier_byte(byte)) return word();
    ++at_;
  }

  void skip_past(std::string_view token) {
    const std::size_t found = text_.find(token, at_);
    at_ = found == std::string_view::npos ? text_.size() : found + token.size();
  }

  void skip_block_comment() {
    int depth = 0;
    while (at_ < text_.size()) {
      if (at("/*")) {
        ++depth;
        at_ += 2;
      } else if (at("*/")) {
        at_ += 2;
        if (--depth == 0) return;
      } else {
        ++at_;
      }
    }
  }

  void skip_string() {
    for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') ++at_;
    }
    ++at_;
  }

  /// A character, or the mark of a lifetime.
  void skip_quote() {
    constexpr std::size_t LONGEST_CHARACTER = 5;
    if (text_.substr(at_ + 1).starts_with('\\')) {
      at_ += 3;
      while (at_ < text_.size() && text_[at_] != '\'' && text_[at_] != '\n') ++at_;
      ++at_;
      return;
    }
    const std::size_t end = text_.find('\'', at_ + 1);
    const std::size_t size = end == std::string_view::npos ? 0 : end - at_ - 1;
    const bool one_byte = size == 1;
    const bool many_bytes =
        size > 1 && size < LONGEST_CHARACTER && static_cast<unsigned char>(text_[at_ + 1]) >= 0x80;
    at_ = one_byte || many_bytes ? end + 1 : at_ + 1;
  }

  void word() {
    const std::size_t start = at_;
    while (at_ < text_.size() && kit::is_identifier_byte(text_[at_])) ++at_;
    const std::string_view name = text_.substr(start, at_ - start);
    if (name == "r" || name == "br" || name == "cr") return skip_raw_string();
    if (!in_items()) return;
    if (at("::")) {
      if (path_ == NO_PATH) path_ = start;
      at_ += 2;
      return;
    }
    const std::size_t first = path_ == NO_PATH ? start : path_;
    path_ = NO_PATH;
    if (name == "mod") return open_module();
    if (!at("!") || !wraps_items(name)) return;
    std::size_t brace = at_ + 1;
    while (brace < text_.size() && is_space(text_[brace])) ++brace;
    if (!text_.substr(brace).starts_with('{')) return;
    if (open_wrapped_++ == 0) regions_.push_back({brace, text_.size()});
    blanks_.push_back({first, brace + 1});
    braces_.push_back(name == "cfg_if" ? Braces::BRANCHES : Braces::WRAPPED);
    branches_.push_back(brace + 1);
    wrappers_.push_back(braces_.size());
    at_ = brace + 1;
  }

  void skip_raw_string() {
    std::size_t hashes = 0;
    while (text_.substr(at_ + hashes).starts_with('#')) ++hashes;
    if (!text_.substr(at_ + hashes).starts_with('"')) return;
    at_ += hashes + 1;
    skip_past("\"" + std::string(hashes, '#'));
  }

  void open_module() {
    while (at_ < text_.size() && (is_space(text_[at_]) || kit::is_identifier_byte(text_[at_]))) {
      ++at_;
    }
    if (!at("{")) return;
    braces_.push_back(Braces::ITEMS);
    ++at_;
  }

  void open() {
    ++at_;
    if (!in_branches()) return braces_.push_back(Braces::OTHER);
    blanks_.push_back({branches_.back(), at_});
    braces_.push_back(Braces::WRAPPED);
  }

  void close() {
    ++at_;
    path_ = NO_PATH;
    if (braces_.empty()) return;
    const Braces closed = braces_.back();
    if (closed == Braces::WRAPPED || closed == Braces::BRANCHES) blanks_.push_back({at_ - 1, at_});
    const bool is_macro = !wrappers_.empty() && wrappers_.back() == braces_.size();
    braces_.pop_back();
    if (in_branches()) branches_.back() = at_;
    if (!is_macro) return;
    if (closed == Braces::BRANCHES) blanks_.push_back({branches_.back(), at_});
    wrappers_.pop_back();
    branches_.pop_back();
    if (--open_wrapped_ == 0) regions_.back().end = at_;
  }

  static constexpr std::size_t NO_PATH = static_cast<std::size_t>(-1);

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t path_ = NO_PATH;  // where the path that is being read starts
  std::vector<Braces> braces_;
  std::vector<std::size_t> wrappers_;  // how many braces were open in each macro, itself included
  std::vector<std::size_t> branches_;  // of each macro: where its last branch ended
  std::size_t open_wrapped_ = 0;
  std::vector<WrappedItems> blanks_;
  std::vector<WrappedItems> regions_;
};

}  // namespace

std::vector<WrappedItems> wrapped_items(std::string_view text) {
  if (!may_wrap(text)) return {};
  Scanner scanner(text);
  scanner.run();
  return scanner.regions();
}

std::string prepare(std::string_view text) {
  if (!may_wrap(text)) return {};
  Scanner scanner(text);
  scanner.run();
  return scanner.blanked();
}

}  // namespace context_delta::indexer::rust
