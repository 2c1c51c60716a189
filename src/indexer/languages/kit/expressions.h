#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "indexer/model/facts.h"

/// The expressions of a file in the making.
namespace context_delta::indexer::kit {

/// What is longer than this chain of operands is UNKNOWN: rules would not follow it.
inline constexpr std::uint8_t DEEPEST_EXPRESSION = 60;

/// Adds expressions to a list, equal ones once: so that an index stands for a meaning (in one
/// scope), and tables of what was found out already go by it.
class ExpressionTable {
 public:
  explicit ExpressionTable(std::vector<Expression>& expressions) : expressions_(expressions) {}

  /// Its index. The operands must have been added before.
  ExpressionIndex add(Expression expression);
  ExpressionIndex add(ExpressionKind kind, std::string name = {},
                      std::vector<ExpressionIndex> operands = {}, std::int32_t number = 0) {
    return add(
        {.kind = kind, .name = std::move(name), .number = number, .operands = std::move(operands)});
  }
  ExpressionIndex unknown() { return add(ExpressionKind::UNKNOWN); }
  const Expression& at(ExpressionIndex index) const {
    return expressions_[static_cast<std::size_t>(index)];
  }

 private:
  std::vector<Expression>& expressions_;
  std::unordered_multimap<std::uint64_t, ExpressionIndex> indexes_;  // by hash
  std::vector<std::uint8_t> depths_;                                 // of each
};

}  // namespace context_delta::indexer::kit
