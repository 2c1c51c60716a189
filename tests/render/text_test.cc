#include "render/text.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "render/display_text.h"
#include "render/golden.h"
#include "render/json_line.h"
#include "render/left_out.h"
#include "render/pack_view.h"
#include "render/sample_packs.h"
#include "render/short_name.h"
#include "utils/text_lines.h"

namespace context_delta::render {
namespace {

struct GoldenCase {
  const char* name;
  json::Mapping (*pack)();
  ReportStyle style;
};

class TextGolden : public testing::TestWithParam<GoldenCase> {};

TEST_P(TextGolden, IsAsItWas) {
  test::expect_golden(std::string(GetParam().name) + ".txt",
                      render_text(GetParam().pack(), GetParam().style));
}

INSTANTIATE_TEST_SUITE_P(
    Packs, TextGolden,
    testing::Values(GoldenCase{"full", test::full_pack, {}},
                    GoldenCase{"full_wide_colour", test::full_pack, {.width = 120, .colour = true}},
                    GoldenCase{
                        "full_narrow_ascii", test::full_pack, {.width = 48, .unicode = false}},
                    GoldenCase{"truncated", test::truncated_pack, {.budget = 100}},
                    GoldenCase{"beyond_the_budget",
                               test::truncated_pack,
                               {.budget = 100'000, .beyond_limits = {.symbols = 38, .callers = 1}}},
                    GoldenCase{"nothing_changed", test::nothing_changed_pack, {}},
                    GoldenCase{"error", test::error_pack, {.colour = true}},
                    GoldenCase{"hostile", test::hostile_pack, {}}),
    [](const auto& test) { return test.param.name; });

TEST(Text, FitsEveryWidth) {
  for (std::size_t width = 48; width <= 140; ++width) {
    for (const json::Mapping& pack : {test::full_pack(), test::truncated_pack()}) {
      const std::string text = render_text(pack, {.width = width});
      for (const std::string_view line : text_lines::split_lines(text)) {
        ASSERT_LE(display_width(line), width) << line;
      }
    }
  }
}

TEST(Text, LetsNoControlCharacterThrough) {
  for (const std::size_t width : {40U, 80U, 200U}) {
    const std::string text = render_text(test::hostile_pack(), {.width = width});
    for (const char byte : text) {
      ASSERT_TRUE(byte == '\n' || (static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F));
    }
    EXPECT_EQ(text.find("\xE2\x80\xAE"), text.npos) << "right-to-left override";
    EXPECT_EQ(text.find("\nerror: forged"), text.npos);
  }
}

TEST(Text, TakesAnEmptyMapping) { EXPECT_EQ(render_text({}, {}), ""); }

TEST(Json, IsOneLine) {
  EXPECT_EQ(render_json({{"b", 1}, {"a", json::List{"\n", nullptr}}}),
            "{\"b\":1,\"a\":[\"\\n\",null]}\n");
}

TEST(DisplayText, MeasuresColumns) {
  EXPECT_EQ(display_width("abc"), 3U);
  EXPECT_EQ(display_width("\u65E5\u672C"), 4U);
  EXPECT_EQ(display_width("e\u0301"), 1U);
  EXPECT_EQ(display_width("\U0001F600\uFE0F"), 2U);
  EXPECT_EQ(display_width("\u200D"), 0U);
}

TEST(DisplayText, ShortensWithinItsColumns) {
  EXPECT_EQ(shortened_middle("src/folder/file.py", 18, "~"), "src/folder/file.py");
  EXPECT_EQ(shortened_middle("src/deep/folder/file.py", 16, "~"), "src/dee~/file.py");
  EXPECT_EQ(shortened_start("client.session.Session.close", 17, "~"), "~Session.close");
  EXPECT_EQ(shortened_start("ns::Class::method", 15, "~"), "~Class::method");
  EXPECT_EQ(shortened_end("\u65E5\u672C\u8A9E", 5, "~"), "\u65E5\u672C~");
  EXPECT_EQ(shortened_end("\u65E5\u672C\u8A9E", 4, "~"), "\u65E5~");
  const std::string mixed = "a\u65E5e\u0301/\U0001F600b\u672Cc/\u8A9Ed\u0301";
  for (std::size_t columns = 0; columns < 20; ++columns) {
    EXPECT_LE(display_width(shortened_middle(mixed, columns, "\u2026")), columns);
    EXPECT_LE(display_width(shortened_end(mixed, columns, "\u2026")), columns);
    EXPECT_LE(display_width(shortened_start(mixed, columns, "\u2026")), columns);
  }
}

TEST(DisplayText, ExpandsTabsByColumn) {
  EXPECT_EQ(plain_line("\ta\t\u65E5\tb"), "    a   \u65E5  b");
}

TEST(LeftOut, TellsWhatABudgetListsFromWhatNoneDoes) {
  json::Mapping pack = test::truncated_pack();
  const LeftOut all = left_out(pack, {.budget = 100'000});
  EXPECT_EQ(all.by_budget, "12 files, 40 symbols and 1 caller");
  EXPECT_GT(all.budget, 100'000) << "what is asked for already shows no more";
  EXPECT_EQ(all.by_limits, "");
  pack.set("files_omitted", 0);
  const LeftOut none = left_out(pack, {.beyond_limits = {.symbols = 40, .callers = 1}});
  EXPECT_EQ(none.by_budget, "");
  EXPECT_EQ(none.by_limits,
            "Not listed, whatever the budget: 40 symbols and 1 caller (a pack lists 50 symbols of "
            "a file and 10 callers of a symbol at most).");
}

TEST(BeyondFile, SaysWhatThePathDoesNot) {
  const std::vector<std::array<std::string_view, 3>> cases = {
      {"client.session.Session.close", "src/client/session.py", "Session.close"},
      {"new.main", "src/new.py", "main"},
      {"src/a.c:helper", "src/a.c", "helper"},
      {"github.com/x/y/v2/queue.(*Q).Run", "queue/a.go", "(*Q).Run"},
      {"re::meta::strategy::<ReverseSuffix as Strategy>::search", "re/src/meta/strategy.rs",
       "<ReverseSuffix as Strategy>::search"},
      {"<re::strategy::A as re::strategy::B>::search", "re/src/strategy.rs",
       "<re::strategy::A as re::strategy::B>::search"},
      {"ns::operator<", "ns/a.cc", "operator<"},
      {"run", "run.py", "run"},
      {"run", "", "run"}};
  for (const auto& [fqn, file, rest] : cases) EXPECT_EQ(beyond_file(fqn, file), rest) << fqn;
  EXPECT_EQ(last_name("a::<b::C as d::E>::run"), "run");
}

TEST(SufficientBudget, CoversTheSharesOfEverySection) {
  EXPECT_EQ(sufficient_budget(test::full_pack()), std::nullopt);
  EXPECT_EQ(sufficient_budget(test::error_pack()), std::nullopt);
  // Nothing is shown yet: the suggestion still is a number that shows something.
  EXPECT_GT(sufficient_budget({{"files_omitted", 3}}), 0);
}

}  // namespace
}  // namespace context_delta::render
