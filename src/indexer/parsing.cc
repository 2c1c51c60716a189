#include "indexer/parsing.h"

#include <new>

#include "storage/schema.h"
#include "utils/utf8.h"

namespace context_delta::indexer {
namespace {

/// The parser asks after every hundred steps. Ordinary text takes about a step a byte; text that
/// takes far more would keep the parser busy for minutes. Counted, not timed, so that the same
/// text always ends the same.
constexpr std::size_t LEAST_ASKS = 100000;

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

struct DeleteTree {
  void operator()(TSTree* tree) const { ts_tree_delete(tree); }
};

const Language* accepting(const std::vector<const Language*>& languages, std::string_view text) {
  if (languages.size() == 1) return languages.front();
  for (const Language* language : languages) {
    if (language->accepts == nullptr || language->accepts(text)) return language;
  }
  return nullptr;
}

}  // namespace

void TextParser::Delete::operator()(TSParser* parser) const { ts_parser_delete(parser); }

TextParser::TextParser(const std::atomic<bool>* cancelled)
    : cancelled_(cancelled), parser_(ts_parser_new()) {}

ParsedText TextParser::parse(const std::vector<const Language*>& languages,
                             std::string_view bytes) {
  ParsedText parsed;
  if (bytes.find('\0') != std::string_view::npos) {
    parsed.problem = "binary";
    return parsed;
  }
  const std::string mended = utf8::is_valid(bytes) ? std::string() : utf8::replaced(bytes);
  std::string_view text = mended.empty() ? bytes : std::string_view(mended);
  parsed.language = accepting(languages, text);
  if (parsed.language == nullptr) return parsed;

  if (parsed.language->grammar == nullptr) {
    parsed.facts = parsed.language->extract({}, text);
    return parsed;
  }
  Progress progress{cancelled_, 0, LEAST_ASKS + text.size()};
  ts_parser_reset(parser_.get());
  if (!ts_parser_set_language(parser_.get(), parsed.language->grammar())) {
    throw std::runtime_error("the grammar of " + std::string(parsed.language->name) +
                             " does not fit the parser");
  }
  const std::string prepared =
      parsed.language->prepare == nullptr ? std::string() : parsed.language->prepare(text);
  std::string_view read = prepared.empty() ? text : std::string_view(prepared);
  const TSInput input = {&read, read_text, TSInputEncodingUTF8, nullptr};
  const std::unique_ptr<TSTree, DeleteTree> tree(
      ts_parser_parse_with_options(parser_.get(), nullptr, input, {&progress, must_stop}));
  if (tree == nullptr) {
    parsed.problem = "too costly to parse";
    return parsed;
  }
  parsed.facts = parsed.language->extract(ts_tree_root_node(tree.get()), text);
  if (parsed.facts.definitions.size() > static_cast<std::size_t>(storage::MOST_SYMBOLS)) {
    parsed.facts = {};
    parsed.problem = "more than " + std::to_string(storage::MOST_SYMBOLS) + " definitions";
  }
  return parsed;
}

}  // namespace context_delta::indexer
