#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/language.h"
#include "indexer/parse/parser_memory.h"

namespace context_delta::indexer {

/// What became of a text.
struct ParsedText {
  const Language* language = nullptr;  ///< null: no language accepts the text
  std::optional<std::string> problem;  ///< why the text was not parsed
  Facts facts;
};

/// Parses texts of any language, one after another.
class TextParser {
 public:
  /// `cancelled` (may be null) ends a parse early; what it returned is then of no use.
  explicit TextParser(const std::atomic<bool>* cancelled);

  /// The facts of a text in the first of `languages` that accepts it. Bytes that are not UTF-8
  /// count as replacement characters.
  ParsedText parse(const std::vector<const Language*>& languages, std::string_view text);

 private:
  void parse_with_grammar(std::string_view text, ParsedText& parsed);

  const std::atomic<bool>* cancelled_;
  ParserMemory memory_;
};

}  // namespace context_delta::indexer
