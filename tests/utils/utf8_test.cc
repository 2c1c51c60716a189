#include "utils/utf8.h"

#include <random>
#include <set>

#include <gtest/gtest.h>

namespace context_delta::utf8 {
namespace {

// The counts of replacement characters are those of Unicode's recommended practice.
TEST(Replaced, EachMaximalIllFormedPartOnce) {
  const struct {
    std::string_view bytes, text;
  } cases[] = {
      {"plain", "plain"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"a\xFFz", "a\xEF\xBF\xBDz"},
      {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},                  // overlong
      {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // surrogate
      {"\xE2\x82", "\xEF\xBF\xBD"},                              // cut short
      {"\xF0\x9F\x98z", "\xEF\xBF\xBDz"},                        // cut short
      {"\xF5\x80\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"\xE0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(replaced(bytes), text);
}

TEST(PathText, IsValidDistinctAndReversible) {
  std::mt19937 random(7);
  const std::string pieces[] = {"a",
                                "/",
                                "\xFF",
                                "\x80",
                                "\xC3\xA9",
                                "\xC3",
                                "\xF4\x8F\xBF\xBF",
                                "\xF4\x8F\xBC\x80",
                                "\xED\xA0\x80",
                                "\n",
                                "\"",
                                "\xF4\x8F"};
  std::set<std::string> names;
  std::set<std::string> texts;
  for (int i = 0; i < 20000; ++i) {
    std::string name;
    for (std::size_t n = random() % 5; n > 0; --n) name += pieces[random() % std::size(pieces)];
    const std::string text = path_text(name);
    EXPECT_TRUE(is_valid(text));
    EXPECT_EQ(path_bytes(text), name);
    names.insert(name);
    texts.insert(text);
  }
  EXPECT_EQ(names.size(), texts.size());
  EXPECT_EQ(path_text("src/caf\xC3\xA9.py"), "src/caf\xC3\xA9.py");
}

}  // namespace
}  // namespace context_delta::utf8
