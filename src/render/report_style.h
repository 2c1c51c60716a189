#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace context_delta::render {

/// What a report depends on beside the pack. Formats that do not go to a terminal pass over the
/// first three.
/// The symbols that a pack looks up callers of are its first ones.
inline constexpr std::int64_t LOOKED_UP_SYMBOLS = 20;

struct RowCounts {
  std::int64_t symbols = 0;
  std::int64_t callers = 0;
  std::int64_t neighbours = 0;
};

struct ReportStyle {
  std::size_t width = 80;  ///< columns of the terminal; less than 48 counts as 48
  bool colour = false;     ///< with terminal colours
  bool unicode = true;     ///< with arrows and dots beyond ASCII
  /// The budget the pack was built for: tells rows it left out from rows that no budget brings.
  std::optional<std::int64_t> budget = {};
  /// Percent by which the budget given was divided before the pack was built; advice is in its
  /// unit.
  std::int64_t token_scale = 100;
  /// What else a person should know of the answer, a clause each.
  std::vector<std::string> remarks = {};
  /// Of what the pack counts as left out, what its own limits left out and not the budget.
  RowCounts beyond_limits = {};
};

}  // namespace context_delta::render
