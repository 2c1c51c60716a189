#include "render/markdown.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "render/display_text.h"
#include "render/golden.h"
#include "render/markdown_page.h"
#include "render/markdown_text.h"
#include "render/sample_packs.h"

namespace context_delta::render {
namespace {

using test::MarkdownPage;
using test::read_markdown;

/// Nothing but the report's own markup may act.
void expect_harmless(const std::string& markdown) {
  EXPECT_EQ(test::harm_in(markdown), "") << markdown;
}

class Chance {
 public:
  explicit Chance(unsigned seed) : engine_(seed) {}
  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(engine_); }

  /// Text of a repository whose author knows what reports look like.
  std::string text() {
    static const std::vector<std::string> PIECES = {"`",
                                                    "``",
                                                    "```",
                                                    "~~~",
                                                    "|",
                                                    "\\",
                                                    "\n",
                                                    "\r",
                                                    "@user",
                                                    "#12",
                                                    "GH-7",
                                                    "deadbee",
                                                    "[x](y)",
                                                    "![i](j)",
                                                    "$x$",
                                                    "$`y`$",
                                                    "</details>",
                                                    "<details>",
                                                    "<script>",
                                                    "<b>",
                                                    "&lt;",
                                                    ":tada:",
                                                    "a@b.c",
                                                    "www.e.org",
                                                    "https://e.o",
                                                    "<!-- context-delta -->",
                                                    "-->",
                                                    "word",
                                                    "two words",
                                                    " ",
                                                    "  ",
                                                    "* ",
                                                    "- ",
                                                    "1. ",
                                                    "# ",
                                                    "> ",
                                                    "---",
                                                    "===",
                                                    "_",
                                                    "**",
                                                    "\t",
                                                    "\x1b[m",
                                                    "\xF0\x9F\x98\x80",
                                                    "\xFF",
                                                    "src/a.py",
                                                    "\u202E",
                                                    "[ ]",
                                                    "[^1]",
                                                    "(",
                                                    ")",
                                                    ";",
                                                    ":",
                                                    "'",
                                                    "suggestion",
                                                    "&#64;user",
                                                    "x|y",
                                                    "\\|",
                                                    "\\`",
                                                    "<a href=x>",
                                                    "</summary>"};
    std::string result;
    for (int i = below(5); i >= 0; --i) {
      result += PIECES[static_cast<std::size_t>(below(static_cast<int>(PIECES.size())))];
    }
    return result;
  }

 private:
  std::mt19937 engine_;
};

/// A pack in which every text is any text. `names` receives those that are shown as they are.
json::Mapping any_pack(Chance& chance, int rows, std::vector<std::string>& names) {
  const auto name = [&] {
    names.push_back(chance.text());
    return names.back();
  };
  json::List files, symbols, callers, neighbours, snippets, pages;
  for (int i = 0; i < rows; ++i) {
    files.push_back(json::Mapping{{"path", name()}, {"status", chance.text()}});
    symbols.push_back(json::Mapping{{"fqn", name()},
                                    {"kind", chance.text()},
                                    {"file", name()},
                                    {"line", 3},
                                    {"status", chance.text()},
                                    {"signature", name()}});
    callers.push_back(json::Mapping{{"fqn", name()}, {"file", "f"}, {"calls", name()}});
    neighbours.push_back(json::Mapping{{"fqn", name()},
                                       {"file", "f"},
                                       {"calls", name()},
                                       {"relation", chance.text()},
                                       {"reason", chance.text()}});
    pages.push_back(json::Mapping{{"page", name()},
                                  {"title", chance.text()},
                                  {"stale", chance.below(2) == 0},
                                  {"reason", chance.text()}});
    snippets.push_back(json::Mapping{{"file", name()}, {"line", 1}, {"content", chance.text()}});
  }
  return {{"base_branch", name()},    {"target_branch", name()},  {"total_changed_files", rows},
          {"affected_files", files},  {"symbols", symbols},       {"callers", callers},
          {"neighbours", neighbours}, {"snippets", snippets},     {"wiki_pages", pages},
          {"warning", chance.text()}, {"message", chance.text()}, {"error", chance.text()}};
}

TEST(Markdown, LetsNoTextAct) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    Chance chance(seed);
    std::vector<std::string> names;
    const json::Mapping pack = any_pack(chance, chance.below(4), names);
    const std::string markdown = render_markdown(pack, {});
    expect_harmless(markdown);
    const MarkdownPage page = read_markdown(markdown);
    EXPECT_EQ(page.fences.size(), pack.at("snippets").as<json::List>()->size());
    std::string code;
    for (const std::string& span : page.code_spans) code += span + "\n";
    for (const std::string& name : names) {
      const std::string shown = plain_text(name);
      // In a table, bars stand between code spans.
      if (shown.find('|') != shown.npos || shown.empty()) continue;
      EXPECT_NE(code.find(shown), code.npos) << shown << "\n" << markdown;
    }
    if (HasFailure()) FAIL() << "seed " << seed;
  }
}

TEST(Markdown, ShowsSnippetsAsTheyAre) {
  const std::string content = "````\n@user </details>\n~~~ `x`\n\n    <!-- context-delta -->";
  const MarkdownPage page = read_markdown(render_markdown(
      {{"snippets",
        json::List{json::Mapping{
            {"file", "a.suggestion"}, {"line", 1}, {"end_line", 5}, {"content", content}}}}},
      {}));
  EXPECT_EQ(page.fences, std::vector<std::string>{content + "\n"});
}

TEST(Markdown, NamesOnlyLanguagesThatHostsShow) {
  EXPECT_EQ(fence_language("src/a.py"), "python");
  for (const char* path : {"a.mermaid", "a.suggestion", "a.math", "py", "a.py/b", "a.py `", ""}) {
    EXPECT_EQ(fence_language(path), "") << path;
  }
}

TEST(Markdown, FitsACommentAndCountsWhatItLeavesOut) {
  for (const int rows : {50, 400, 3000}) {
    Chance chance(static_cast<unsigned>(rows));
    std::vector<std::string> names;
    const std::string markdown = render_markdown(any_pack(chance, rows, names), {});
    expect_harmless(markdown);
    const std::string words = read_markdown(markdown).words;
    const std::size_t left_out = words.find("Left out to fit a comment: ");
    ASSERT_EQ(left_out == words.npos, rows == 50);
    if (rows == 50) continue;
    EXPECT_GT(markdown.size(), MOST_MARKDOWN_BYTES * 9 / 10) << "room was wasted";
    const auto missing = std::stoul(words.substr(left_out + 27));
    std::size_t shown = 0;
    for (std::size_t at = markdown.find("\n| "); at != markdown.npos;
         at = markdown.find("\n| ", at + 1)) {
      ++shown;
    }
    EXPECT_EQ(shown - 1 + missing, static_cast<std::size_t>(rows)) << "files";
  }
}

TEST(Markdown, BoundsTextsOfAnyLength) {
  std::string accents = "e";
  for (int i = 0; i < 50'000; ++i) accents += "\u0301";
  for (const std::string& text : {std::string(200'000, '`'), std::string(25, '`'),
                                  std::string(24, '`'), accents, std::string(70'000, 'x')}) {
    json::Mapping file{{"path", text}, {"status", text}};
    json::Mapping symbol{{"fqn", text}, {"kind", text}, {"file", text}, {"signature", text}};
    json::Mapping snippet{{"file", text}, {"line", 1}, {"content", text}};
    expect_harmless(render_markdown({{"base_branch", text},
                                     {"target_branch", text},
                                     {"affected_files", json::List{file}},
                                     {"symbols", json::List{symbol}},
                                     {"snippets", json::List{snippet}},
                                     {"error", text},
                                     {"warning", text},
                                     {"message", text}},
                                    {}));
  }
}

TEST(Prose, KeepsSentencesReadable) {
  EXPECT_EQ(prose("written at 1a2b3c4, src/a.py changed since"),
            "written at `1a2b3c4`, `src/a.py` changed since");
  EXPECT_EQ(prose("3 other files did (source_only=false lists them)"),
            "3 other files did (`source_only=false` lists them)");
  EXPECT_EQ(prose("the receiver's type; f(x) @all defaced"),
            "the receiver's type; `f(x) @all defaced`");
}

struct GoldenCase {
  const char* name;
  json::Mapping (*pack)();
};

class MarkdownGolden : public testing::TestWithParam<GoldenCase> {};

TEST_P(MarkdownGolden, IsAsItWas) {
  const std::string markdown = render_markdown(GetParam().pack(), {.budget = 100});
  test::expect_golden(std::string(GetParam().name) + ".md", markdown);
  expect_harmless(markdown);
}

INSTANTIATE_TEST_SUITE_P(Packs, MarkdownGolden,
                         testing::Values(GoldenCase{"full", test::full_pack},
                                         GoldenCase{"truncated", test::truncated_pack},
                                         GoldenCase{"nothing_changed", test::nothing_changed_pack},
                                         GoldenCase{"error", test::error_pack},
                                         GoldenCase{"hostile", test::hostile_pack}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace context_delta::render
