#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "workers/context_builder.h"

namespace context_delta::context_builder {
namespace {

/// Rows of packs of this project's own history, each with what the vocabularies o200k_base and
/// cl100k_base count for it (package gpt-tokenizer 4.0.0 of npm): "O200K\tCL100K\tROW".
struct Row {
  double counted;
  double estimated;
};

std::vector<Row> read_rows(int vocabulary) {
  std::vector<Row> rows;
  std::ifstream file(TOKEN_ROWS);
  for (std::string line; std::getline(file, line);) {
    std::istringstream stream(line);
    double counts[2] = {};
    std::string text;
    stream >> counts[0] >> counts[1];
    stream.ignore(1);
    std::getline(stream, text);
    rows.push_back({counts[vocabulary], static_cast<double>(estimate_tokens(text))});
  }
  return rows;
}

/// Relative errors of sums over `size` rows each, in ascending order.
std::vector<double> errors(const std::vector<Row>& rows, std::size_t size) {
  std::vector<double> found;
  for (std::size_t start = 0; start + size <= rows.size(); start += size) {
    Row sum = {0, 0};
    for (std::size_t i = start; i < start + size; ++i) {
      sum = {sum.counted + rows[i].counted, sum.estimated + rows[i].estimated};
    }
    found.push_back(std::abs(sum.estimated - sum.counted) / sum.counted);
  }
  std::sort(found.begin(), found.end());
  return found;
}

TEST(TokenRows, AreEstimatedAsRealTokenizersCountThem) {
  for (const int vocabulary : {0, 1}) {
    const std::vector<Row> rows = read_rows(vocabulary);
    ASSERT_GE(rows.size(), 200U);
    const std::vector<double> single = errors(rows, 1);
    EXPECT_LE(single[single.size() / 2], 0.03);
    EXPECT_LE(single[single.size() * 95 / 100], 0.10);
    const std::vector<double> packs = errors(rows, 32);
    EXPECT_LE(packs[packs.size() / 2], 0.02);
    EXPECT_LE(packs.back(), 0.07);
  }
}

}  // namespace
}  // namespace context_delta::context_builder
