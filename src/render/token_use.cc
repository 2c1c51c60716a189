#include "render/token_use.h"

#include <array>
#include <string>

#include "workers/context_builder.h"

namespace context_delta::render {

std::vector<SectionUse> token_use(const json::Mapping& pack) {
  static constexpr std::array<std::string_view, 6> KEYS = {
      "wiki_pages", "affected_files", "symbols", "callers", "neighbours", "snippets"};
  std::vector<SectionUse> result;
  for (const std::string_view key : KEYS) {
    SectionUse& use = result.emplace_back(SectionUse{key});
    const json::Value* value = pack.find(key);
    const json::List* rows = value == nullptr ? nullptr : value->as<json::List>();
    if (rows == nullptr || rows->empty()) continue;
    use.rows = static_cast<std::int64_t>(rows->size());
    if (key == "wiki_pages") {  // paid for as one list
      use.tokens = context_builder::estimate_tokens(json::json_text(*rows));
      continue;
    }
    for (const json::Value& row : *rows) {
      use.tokens += context_builder::estimate_tokens(json::json_text(row));
    }
  }
  return result;
}

}  // namespace context_delta::render
