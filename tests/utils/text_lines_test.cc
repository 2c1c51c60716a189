#include "utils/text_lines.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace context_delta::text_lines {
namespace {

using Lines = std::vector<std::string_view>;

TEST(SplitLines, CutsAtEveryBoundary) {
  const struct {
    std::string_view text;
    Lines lines;
  } cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a\n", {"a"}},
      {"a\n\n", {"a", ""}},
      {"\n", {""}},
      {"\n\na", {"", "", "a"}},
      {"a\r\nb\rc\nd", {"a", "b", "c", "d"}},
      {"a\n\rb", {"a", "", "b"}},
      {"a\r\r\nb", {"a", "", "b"}},
      {"a\vb\fc", {"a", "b", "c"}},
      {"a\x1C"
       "b\x1D"
       "c\x1E"
       "d\x1F"
       "e",
       {"a", "b", "c",
        "d\x1F"
        "e"}},
      {"a\xC2\x85"
       "b",
       {"a", "b"}},
      {"a\xE2\x80\xA8"
       "b\xE2\x80\xA9",
       {"a", "b"}},
      // Neighbours that share the first bytes are no boundaries.
      {"a\xC2\x84"
       "b\xE2\x80\xA7"
       "c\xE2\x81\xA8",
       {"a\xC2\x84"
        "b\xE2\x80\xA7"
        "c\xE2\x81\xA8"}},
      {"caf\xC3\xA9\nd", {"caf\xC3\xA9", "d"}},
      {"cut short \xE2\x80", {"cut short \xE2\x80"}},
      {std::string_view("a\0b\nc", 5), {std::string_view("a\0b", 3), "c"}},
  };
  for (const auto& [text, lines] : cases) EXPECT_EQ(split_lines(text), lines) << text;
}

}  // namespace
}  // namespace context_delta::text_lines
