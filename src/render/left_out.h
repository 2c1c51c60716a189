#pragma once

#include <cstdint>
#include <string>

#include "render/report_style.h"
#include "utils/json.h"

namespace context_delta::render {

/// What a pack left out, by what would list it.
struct LeftOut {
  std::string by_budget;    ///< "3 files and 1 symbol" that a greater budget lists; may be empty
  std::int64_t budget = 0;  ///< such a budget, in the unit in which it was given
  std::string by_limits;    ///< what no budget lists, and the limits that say so, as sentences
};

LeftOut left_out(const json::Mapping& pack, const ReportStyle& style);

}  // namespace context_delta::render
