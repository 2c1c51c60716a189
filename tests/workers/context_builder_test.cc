#include "workers/context_builder.h"

#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace context_delta::context_builder {
namespace {

TEST(EstimateTokens, PricesPieces) {
  const struct {
    std::string_view text;
    std::int64_t tokens;
  } cases[] = {
      {"", 0},
      {"a", 1},
      {"getHTTPResponseCode", 5},
      {"internationalization", 4},
      {".internationalization", 3},
      {"/internationalization", 5},
      {"--------------------------------------------------", 1},
      {"\xFF\xFE\x80", 2},
      {"\xE5\x90\x8D\xE8\xA9\x9E \xE3\x81\xAE \xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4 "
       "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 \xC3\xA9 \xF0\x9F\x98\x80",
       12},
      {"a\n\n  b();\n", 5},
      {"1234567", 3},
      {"\\n", 1},
      {"x = 1", 4},
  };
  for (const auto& [text, tokens] : cases) EXPECT_EQ(estimate_tokens(text), tokens) << text;
}

/// Counts of the vocabulary o200k_base (package gpt-tokenizer 4.0.0 of npm).
TEST(EstimateTokens, KnowsCharactersOfSeveralTokens) {
  const auto times = [](int count, std::string_view text) {
    std::string all;
    for (; count > 0; --count) all += text;
    return all;
  };
  const std::string stacked =
      times(4, "Z\u0351\u036b\u0343a\u0329\u0363l\u0348\u0301g\u0310\u0344o\u0317\u0346");
  const std::vector<std::pair<std::string, double>> cases = {
      {"{\"path\": \"docs/" + stacked +
           ".md\", \"status\": \"modified\", \"additions\": 3, \"deletions\": 1}",
       132},
      {"\"" + times(8, "\u0301\u0302\u0308\u0323\u0331") + "\"", 50},
      {"{\"path\": \"caf\U0010ffe9/\U0010ffff\U0010ff80.py\", \"content\": \"" +
           times(5, "\U00020000\U0002a6d6") + "\"}",
       61},
      {"\"" + times(6, "x\u20d7y\u20d7") + times(5, "a\ufe0f") + "\"", 47},
  };
  for (const auto& [text, counted] : cases) {
    EXPECT_NEAR(static_cast<double>(estimate_tokens(text)), counted, counted / 10) << text;
  }
}

TEST(EstimateTokens, AnyBytesHaveAPriceBetweenOneAndTheirLength) {
  std::mt19937 random(11);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (std::size_t n = 1 + random() % 40; n > 0; --n) {
      text += random() % 3 == 0 ? static_cast<char>(random()) : " aZ09_.\\n\n\t{\""[random() % 13];
    }
    const std::int64_t tokens = estimate_tokens(text);
    ASSERT_GE(tokens, 1);
    ASSERT_LE(tokens, 3 * static_cast<std::int64_t>(text.size()));
    const std::string longer = text + "tail";
    // A price that read beyond its end would change with what follows in memory.
    ASSERT_EQ(estimate_tokens(std::string_view(longer).substr(0, text.size())), tokens);
  }
}

}  // namespace
}  // namespace context_delta::context_builder
