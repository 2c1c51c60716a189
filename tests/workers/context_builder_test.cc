#include "workers/context_builder.h"

#include <random>
#include <string>
#include <string_view>

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
