#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "indexer/languages/go/go.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

constexpr std::array<std::string_view, 1> SUFFIXES = {"go.mod"};

/// The grammar of Go stands in for one of its own: it is given blank text to parse.
std::string blank(std::string_view text) {
  std::string blank(text);
  std::replace_if(
      blank.begin(), blank.end(), [](char byte) { return byte != '\n'; }, ' ');
  return blank;
}

std::string unquoted(std::string_view word) {
  if (word.size() >= 2 && (word.front() == '"' || word.front() == '`')) {
    word = word.substr(1, word.size() - 2);
  }
  return kit::one_line(word);
}

std::vector<std::string> words_of(std::string_view line) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < line.size();) {
    const std::size_t end = std::min(line.find_first_of(" \t\r", at), line.size());
    if (end > at) words.push_back(unquoted(line.substr(at, end - at)));
    at = end + 1;
  }
  return words;
}

/// `old [version] => new [version]`
void add_replacement(Facts& facts, const std::vector<std::string>& words, std::int32_t line) {
  const auto arrow = std::find(words.begin(), words.end(), "=>");
  if (arrow == words.begin() || arrow == words.end() || arrow + 1 == words.end()) return;
  Import made;
  made.module = words.front();
  made.alias = *(arrow + 1);
  made.line = line;
  facts.imports.push_back(std::move(made));
}

void add_directive(Facts& facts, std::string_view verb, const std::vector<std::string>& words,
                   std::int32_t line) {
  if (words.empty()) return;
  if (verb == "replace") return add_replacement(facts, words, line);
  if (verb != "module") return;
  Binding made;
  made.name = MODULE_PATH;
  made.kind = Binding::Kind::GLOBAL;
  made.value = words.front();
  made.line = line;
  facts.bindings.push_back(std::move(made));
}

Facts extract_module(TSNode, std::string_view text) {
  Facts facts;
  std::string block;  // the verb of the list in parentheses that is open
  std::int32_t number = 0;
  for (std::string_view line : kit::split(text, '\n')) {
    ++number;
    line = line.substr(0, line.find("//"));
    std::vector<std::string> words = words_of(line);
    if (words.empty()) continue;
    if (words.front() == ")") {
      block.clear();
    } else if (!block.empty()) {
      add_directive(facts, block, words, number);
    } else if (words.size() > 1 && words[1] == "(") {
      block = words.front();
    } else {
      const std::string verb = words.front();
      words.erase(words.begin());
      add_directive(facts, verb, words, number);
    }
  }
  return facts;
}

Resolution resolve_module(const File&, const Facts&, World&) { return {}; }

}  // namespace

const Language MODULE_LANGUAGE = {.name = "go module",
                                  .family = "go module",
                                  .version = 1,
                                  .suffixes = SUFFIXES,
                                  .accepts = nullptr,
                                  .grammar = tree_sitter_go,
                                  .prepare = blank,
                                  .extract = extract_module,
                                  .resolve = resolve_module};

}  // namespace context_delta::indexer::go
