#include "tool_handlers/context_delta/budget.h"

#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "utils/json.h"

namespace context_delta {
namespace {

/// Prices a row at the length of the one text it holds.
struct Prices {
  using Integer = std::int64_t;
  using Row = json::Mapping;
  std::int64_t estimate_tokens(std::string_view text) {
    ++asked;
    return static_cast<std::int64_t>(text.size() - std::string_view(R"({"": ""})").size());
  }
  int asked = 0;
};

json::Mapping row(std::int64_t cost) {
  return {{"", std::string(static_cast<std::size_t>(cost), 'x')}};
}

/// What a part may still spend, found by taking rows of one token.
std::int64_t allowance(Part<Prices> part) {
  std::int64_t tokens = 0;
  while (part.take(row(1))) ++tokens;
  return tokens;
}

TEST(Budget, GrantsItsSharesAndPassesOnWhatIsLeft) {
  struct Grant {
    std::string_view part;
    std::int64_t spent;  ///< of its allowance, before the next grant
    std::int64_t allowance;
  };
  const struct {
    std::int64_t total;
    std::span<const Share> shares;
    std::vector<Grant> grants;
  } cases[] = {
      {4000, SHARES, {{"files", 0, 1600}, {"symbols", 0, 3000}, {"callers", 0, 4000}}},
      {4000, SHARES, {{"files", 1000, 1600}, {"symbols", 1900, 2000}, {"callers", 0, 1100}}},
      {4000,
       SHARES_WITH_SNIPPETS,
       {{"files", 0, 1200}, {"symbols", 0, 2200}, {"callers", 0, 2800}, {"snippets", 0, 4000}}},
      {4000,
       SHARES_WITH_SNIPPETS,
       {{"files", 1150, 1200},
        {"symbols", 1000, 1050},
        {"callers", 0, 650},
        {"snippets", 0, 1850}}},
      {10, SHARES, {{"files", 0, 4}, {"symbols", 0, 7}, {"callers", 0, 10}}},
      {1, SHARES, {{"files", 0, 0}, {"symbols", 0, 0}, {"callers", 0, 1}}},
      {0, SHARES, {{"files", 0, 0}, {"callers", 0, 0}}},
      {-120, SHARES, {{"files", 0, 0}, {"symbols", 0, 0}, {"callers", 0, 0}}},
      {4000, SHARES, {{"files", 0, 1600}, {"files", 0, 3200}}},
  };
  for (const auto& [total, shares, grants] : cases) {
    for (std::size_t measured = 0; measured < grants.size(); ++measured) {
      Prices prices;
      Budget<Prices> budget(prices, total, shares);
      std::int64_t used = 0;
      for (std::size_t i = 0; i < measured; ++i) {
        auto part = budget.part(grants[i].part);
        if (grants[i].spent > 0) {
          EXPECT_TRUE(part.take(row(grants[i].spent)));
        }
        used += grants[i].spent;
      }
      EXPECT_EQ(budget.used(), used);
      EXPECT_EQ(allowance(budget.part(grants[measured].part)), grants[measured].allowance)
          << total << " " << grants[measured].part;
    }
  }
}

TEST(Budget, AllowancesAreTheFloorOfTheExactShares) {
  const std::int64_t percents[][4] = {{40, 75, 100, 100}, {30, 55, 70, 100}};
  for (std::int64_t total = 0; total <= 2000000; total += 1 + total / 5000) {
    double granted = 0.0;
    for (std::size_t i = 0; i < std::size(SHARES); ++i) {
      granted += SHARES[i].share;
      ASSERT_EQ(truncated_product(total, granted), total * percents[0][i] / 100);
    }
    granted = 0.0;
    for (std::size_t i = 0; i < std::size(SHARES_WITH_SNIPPETS); ++i) {
      granted += SHARES_WITH_SNIPPETS[i].share;
      ASSERT_EQ(truncated_product(total, granted), total * percents[1][i] / 100);
    }
  }
  const auto largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(truncated_product(largest, 1.0), largest);
}

TEST(Budget, AnUnknownPartChangesNothing) {
  Prices prices;
  Budget<Prices> budget(prices, 4000, SHARES);
  EXPECT_THROW(budget.part("snippets"), std::out_of_range);
  EXPECT_EQ(allowance(budget.part("files")), 1600);
}

TEST(Part, RefusesEverythingAfterTheFirstRowThatDoesNotFit) {
  const struct {
    std::vector<std::int64_t> costs;
    std::vector<bool> taken;
    std::int64_t used;
  } cases[] = {
      {{5, 50, 5}, {true, false, false}, 5},
      {{20, 1}, {true, false}, 20},
      {{20, 0}, {true, true}, 20},
      {{21, 0}, {false, false}, 0},
      {{}, {}, 0},
  };
  for (const auto& [costs, taken, used] : cases) {
    Prices prices;
    Budget<Prices> budget(prices, 50, SHARES);  // 20 for the files
    auto part = budget.part("files");
    std::vector<bool> got;
    for (const std::int64_t cost : costs) got.push_back(part.take(row(cost)));
    EXPECT_EQ(got, taken);
    EXPECT_EQ(budget.used(), used);
    EXPECT_EQ(part.full(), !taken.empty() && !taken.back());
    EXPECT_EQ(prices.asked, static_cast<int>(costs.size())) << "every row offered is priced";
  }
}

}  // namespace
}  // namespace context_delta
