#include "indexer/languages/kit/expressions.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace context_delta::indexer::kit {
namespace {

std::uint64_t hash_of(const Expression& expression) {
  std::uint64_t hash = std::hash<std::string_view>{}(expression.name);
  const auto add = [&](std::int64_t number) {
    hash = (hash ^ static_cast<std::uint64_t>(number)) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  };
  add(static_cast<std::int64_t>(expression.kind));
  add(expression.number);
  for (const ExpressionIndex operand : expression.operands) add(operand);
  return hash;
}

}  // namespace

ExpressionIndex ExpressionTable::add(Expression expression) {
  std::uint8_t depth = 0;
  for (const ExpressionIndex operand : expression.operands) {
    depth = std::max(depth, depths_[static_cast<std::size_t>(operand)]);
  }
  if (++depth > DEEPEST_EXPRESSION) {
    expression = {};
    depth = 1;
  }
  const std::uint64_t hash = hash_of(expression);
  const auto [first, last] = indexes_.equal_range(hash);
  for (auto each = first; each != last; ++each) {
    if (at(each->second) == expression) return each->second;
  }
  const auto index = static_cast<ExpressionIndex>(expressions_.size());
  indexes_.emplace(hash, index);
  depths_.push_back(depth);
  expressions_.push_back(std::move(expression));
  return index;
}

}  // namespace context_delta::indexer::kit
