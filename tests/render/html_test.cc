#include "render/html.h"

#include <limits>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "render/display_text.h"
#include "render/html_page.h"
#include "render/pack_view.h"
#include "render/sample_packs.h"

namespace context_delta::render {
namespace {

using test::fault_of;
using test::HtmlPage;

TEST(Html, IsWellFormedForEveryShapeOfPack) {
  const json::Mapping odd = {{"affected_files", json::List{1, json::Mapping(), "x"}},
                             {"symbols", json::List{json::Mapping()}},
                             {"callers", json::List{json::Mapping()}},
                             {"neighbours", "none"}};
  for (const json::Mapping& pack :
       {test::full_pack(), test::truncated_pack(), test::nothing_changed_pack(), test::error_pack(),
        test::hostile_pack(), json::Mapping(), odd}) {
    EXPECT_EQ(fault_of(test::read_page(render_html(pack, {.budget = 100}))), "");
  }
}

std::string hostile_piece(std::size_t choice) {
  static const std::vector<std::string> PIECES = {"<script>alert(1)</script>",
                                                  "</title><img src=x onerror=alert(1)>",
                                                  "\"",
                                                  "'",
                                                  "&",
                                                  "&lt;",
                                                  "]]>",
                                                  "<!--",
                                                  "-->",
                                                  "</style>",
                                                  "javascript:alert(1)",
                                                  "\xE2\x80\xAE",
                                                  "\xFF",
                                                  "\xC3",
                                                  "\xED\xA0\x80",
                                                  "\xEF\xBF\xBE",
                                                  "\xEF\xBF\xBF",
                                                  "\n",
                                                  "\t",
                                                  std::string(1, '\0'),
                                                  "\x1b[31m",
                                                  "/",
                                                  "::",
                                                  ".",
                                                  "\xF4\x8F\xBF\xBF",
                                                  "a",
                                                  "src/a.cc",
                                                  "\xE6\x97\xA5",
                                                  "#",
                                                  "\xCC\x81"};
  return PIECES[choice % PIECES.size()];
}

RC_GTEST_PROP(Html, StaysWellFormedWhateverTheTextsAndNumbers, ()) {
  const auto texts = *rc::gen::nonEmpty(rc::gen::container<std::vector<std::string>>(rc::gen::map(
      rc::gen::container<std::vector<std::size_t>>(rc::gen::inRange<std::size_t>(0, 1'000)),
      [](const std::vector<std::size_t>& choices) {
        std::string text;
        for (const std::size_t choice : choices) text += hostile_piece(choice);
        return text;
      })));
  const auto numbers = *rc::gen::nonEmpty(rc::gen::container<std::vector<std::int64_t>>(
      rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), rc::gen::inRange<std::int64_t>(-2, 50),
                     rc::gen::just(std::numeric_limits<std::int64_t>::max()))));
  for (const json::Mapping& pack : {test::full_pack(), test::error_pack()}) {
    const std::string page = render_html(test::refilled(pack, texts, numbers), {.budget = 4'000});
    RC_ASSERT(fault_of(test::read_page(page)) == "");
    RC_ASSERT(page.find("\xE2\x80\xAE") == page.npos);
  }
}

TEST(Html, ShowsEveryRowAndWhatItClaims) {
  const json::Mapping pack = test::full_pack();
  const std::string page = render_html(pack, {.budget = 4'000});
  const std::string text = test::read_page(page).text;
  for (const char* key : {"affected_files", "symbols", "callers", "neighbours", "wiki_pages"}) {
    for (const json::Value& value : *pack.at(key).as<json::List>()) {
      for (const char* name : {"path", "old_path", "fqn", "signature", "reason", "page", "title"}) {
        const json::Value* part = value.as<json::Mapping>()->find(name);
        if (part == nullptr) continue;
        // A name may be shown in two pieces, of which the last stands out.
        const std::string& whole = *part->as<std::string>();
        const std::string last = whole.substr(whole.find_last_of("./") + 1);
        EXPECT_NE(text.find(last), text.npos) << key << " " << name << " " << whole;
      }
    }
  }
  EXPECT_NE(text.find("self.pool = None"), text.npos);
  // One for each row and one in the legend.
  const auto count = [&](const std::string& mark) {
    std::size_t number = 0;
    for (std::size_t at = page.find(mark); at != page.npos; at = page.find(mark, at + 1)) ++number;
    return number;
  };
  EXPECT_EQ(count("\"evidence proven\""), 3U + 1U);
  EXPECT_EQ(count("\"evidence guessed\""), 3U + 1U);
  EXPECT_EQ(count("\"edge proven\""), 3U + 1U);
  EXPECT_EQ(count("\"edge guessed\""), 3U + 1U);
}

TEST(Html, WritesOutWhatHidesOrSteers) {
  const std::string page = render_html(test::hostile_pack(), {});
  EXPECT_NE(page.find("<span class=\"odd\">\\x1b</span>"), page.npos);
  EXPECT_NE(page.find("<span class=\"odd\">\\xff\\u{202e}</span>"), page.npos);
  for (const char byte : page)
    EXPECT_TRUE(byte == '\n' || static_cast<unsigned char>(byte) >= 0x20);
}

TEST(Html, NamesTheBudgetAsTheTextReportDoes) {
  const json::Mapping pack = test::truncated_pack();
  const std::int64_t enough = *sufficient_budget(pack);
  const auto advice = [&](const ReportStyle& style) { return render_html(pack, style); };
  EXPECT_NE(advice({.budget = 100}).find(">--budget " + std::to_string(enough) + "<"),
            std::string::npos);
  EXPECT_NE(advice({.budget = 100, .token_scale = 200})
                .find(">--budget " + std::to_string(enough * 2) + "<"),
            std::string::npos);
  const json::Mapping complete = test::full_pack();
  EXPECT_EQ(render_html(complete, {.budget = 100}).find(">--budget "), std::string::npos);
}

}  // namespace
}  // namespace context_delta::render
