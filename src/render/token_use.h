#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "utils/json.h"

namespace context_delta::render {

/// What one section of a pack takes.
struct SectionUse {
  std::string_view key;  ///< of the pack
  std::int64_t rows = 0;
  std::int64_t tokens = 0;
};

/// The tokens that each section takes, in the order in which the budget is spent: wiki pages,
/// files, symbols, callers, neighbours, snippets. Rows are priced as when the pack was built by
/// this program, so the tokens add up to its `tokens_used`; a pack that was priced by another
/// estimate may differ.
std::vector<SectionUse> token_use(const json::Mapping& pack);

}  // namespace context_delta::render
