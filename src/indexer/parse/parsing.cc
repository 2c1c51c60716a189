#include "indexer/parse/parsing.h"

#include <algorithm>
#include <stdexcept>

#include "storage/schema.h"
#include "utils/utf8.h"

namespace context_delta::indexer {
namespace {

/// The parser asks after every hundred steps. Ordinary text takes about a step a byte; text that
/// takes far more would keep the parser busy for minutes. Counted, not timed, so that the same
/// text always ends the same.
constexpr std::size_t LEAST_ASKS = 100000;

/// What a parse may ask for of memory. Ordinary texts of some length take up to 71 bytes a byte,
/// short ones up to 200, measured on five repositories in four languages.
constexpr std::size_t LEAST_MEMORY = std::size_t{64} << 20;
constexpr std::size_t MEMORY_PER_BYTE = 128;

/// What a parse may read of its text, of which it gets a window at a time. Ordinary text is read up
/// to 2.3 times, measured on the same; at each start of a comment that never ends, the parser may
/// look through all of the rest.
constexpr std::size_t WINDOW = 4096;
constexpr std::size_t LEAST_READ = std::size_t{8} << 20;
constexpr std::size_t READ_PER_BYTE = 32;

struct Progress {
  const std::atomic<bool>* cancelled = nullptr;
  std::size_t asked = 0;
  std::size_t most_asks = LEAST_ASKS;
};

struct Reading {
  std::string_view text;
  std::size_t left = 0;  ///< bytes that may still be read
  bool gave_up = false;
};

bool must_stop(TSParseState* state) {
  auto& progress = *static_cast<Progress*>(state->payload);
  if (progress.cancelled != nullptr && progress.cancelled->load(std::memory_order_relaxed)) {
    return true;
  }
  return ++progress.asked > progress.most_asks;
}

const char* read_text(void* payload, std::uint32_t offset, TSPoint, std::uint32_t* length) {
  auto& reading = *static_cast<Reading*>(payload);
  const std::string_view window =
      reading.text.substr(std::min<std::size_t>(offset, reading.text.size()), WINDOW);
  reading.gave_up = reading.gave_up || window.size() > reading.left;
  reading.left -= reading.gave_up ? 0 : window.size();
  *length = reading.gave_up ? 0 : static_cast<std::uint32_t>(window.size());
  return window.data();
}

const Language* accepting(const std::vector<const Language*>& languages, std::string_view text) {
  if (languages.size() == 1) return languages.front();
  for (const Language* language : languages) {
    if (language->accepts == nullptr || language->accepts(text)) return language;
  }
  return nullptr;
}

}  // namespace

TextParser::TextParser(const std::atomic<bool>* cancelled) : cancelled_(cancelled) {}

void TextParser::parse_with_grammar(std::string_view text, ParsedText& parsed) {
  const std::string prepared =
      parsed.language->prepare == nullptr ? std::string() : parsed.language->prepare(text);
  Reading reading{prepared.empty() ? text : std::string_view(prepared),
                  LEAST_READ + text.size() * READ_PER_BYTE};
  // The parser and the tree go with the scope.
  const ParserMemory::Scope scope(memory_, LEAST_MEMORY + text.size() * MEMORY_PER_BYTE);
  try {
    TSParser* parser = ts_parser_new();
    if (!ts_parser_set_language(parser, parsed.language->grammar())) {
      throw std::runtime_error("the grammar of " + std::string(parsed.language->name) +
                               " does not fit the parser");
    }
    const TSInput input = {&reading, read_text, TSInputEncodingUTF8, nullptr};
    Progress progress{cancelled_, 0, LEAST_ASKS + text.size()};
    const TSTree* tree =
        ts_parser_parse_with_options(parser, nullptr, input, {&progress, must_stop});
    if (tree == nullptr || reading.gave_up) {
      parsed.problem = "too costly to parse";
    } else {
      parsed.facts = parsed.language->extract(ts_tree_root_node(tree), text);
      put_interface_first(parsed.facts);
    }
  } catch (const ParserMemory::Exceeded&) {
    parsed.problem = "too costly to parse";
  }
}

ParsedText TextParser::parse(const std::vector<const Language*>& languages,
                             std::string_view bytes) {
  ParsedText parsed;
  if (bytes.find('\0') != std::string_view::npos) {
    parsed.problem = "binary";
    return parsed;
  }
  const std::string mended = utf8::is_valid(bytes) ? std::string() : utf8::replaced(bytes);
  const std::string_view text = mended.empty() ? bytes : std::string_view(mended);
  parsed.language = accepting(languages, text);
  if (parsed.language == nullptr) return parsed;
  if (parsed.language->grammar == nullptr) {
    parsed.facts = parsed.language->extract({}, text);
    put_interface_first(parsed.facts);
  } else {
    parse_with_grammar(text, parsed);
  }
  if (parsed.facts.definitions.size() > static_cast<std::size_t>(storage::MOST_SYMBOLS)) {
    parsed.facts = {};
    parsed.problem = "more than " + std::to_string(storage::MOST_SYMBOLS) + " definitions";
  }
  return parsed;
}

}  // namespace context_delta::indexer
