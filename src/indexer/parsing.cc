#include "indexer/parsing.h"

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

struct Progress {
  const std::atomic<bool>* cancelled = nullptr;
  std::size_t asked = 0;
  std::size_t most_asks = LEAST_ASKS;
};

bool must_stop(TSParseState* state) {
  auto& progress = *static_cast<Progress*>(state->payload);
  if (progress.cancelled != nullptr && progress.cancelled->load(std::memory_order_relaxed)) {
    return true;
  }
  return ++progress.asked > progress.most_asks;
}

const char* read_text(void* payload, std::uint32_t offset, TSPoint, std::uint32_t* length) {
  const auto& text = *static_cast<const std::string_view*>(payload);
  *length = offset < text.size() ? static_cast<std::uint32_t>(text.size() - offset) : 0;
  return text.data() + offset;
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
  std::string_view read = prepared.empty() ? text : std::string_view(prepared);
  // The parser and the tree go with the scope.
  const ParserMemory::Scope scope(memory_, LEAST_MEMORY + text.size() * MEMORY_PER_BYTE);
  try {
    TSParser* parser = ts_parser_new();
    if (!ts_parser_set_language(parser, parsed.language->grammar())) {
      throw std::runtime_error("the grammar of " + std::string(parsed.language->name) +
                               " does not fit the parser");
    }
    const TSInput input = {&read, read_text, TSInputEncodingUTF8, nullptr};
    Progress progress{cancelled_, 0, LEAST_ASKS + text.size()};
    const TSTree* tree =
        ts_parser_parse_with_options(parser, nullptr, input, {&progress, must_stop});
    if (tree == nullptr) {
      parsed.problem = "too costly to parse";
    } else {
      parsed.facts = parsed.language->extract(ts_tree_root_node(tree), text);
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
