#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "utils/json.h"

namespace context_delta::render {

/// How a pack is shown to a person at a terminal.
struct TextStyle {
  std::size_t width = 80;  ///< columns of the terminal; less than 48 counts as 48
  bool colour = false;     ///< with terminal colours
  bool unicode = true;     ///< with arrows and dots beyond ASCII
  /// The budget the pack was built for: tells rows it left out from rows that no budget brings.
  std::optional<std::int64_t> budget = {};
  /// Percent by which the budget given was divided before the pack was built; advice is in its
  /// unit.
  std::int64_t token_scale = 100;
};

/// A pack of any shape, whatever made it, as text for a person. Text of the repository is
/// neutralised (plain_text()), lines fit the width unless a single word does not. Ends with a line
/// feed.
std::string render_text(const json::Mapping& pack, const TextStyle& style);

}  // namespace context_delta::render
