#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "component/scripted_services.h"
#include "tool_handlers/context_delta/context_delta.h"

namespace context_delta::test {
namespace {

using Services = ScriptedServices;
using Lines = std::vector<std::string>;

Request<Services> ample() {
  return {.repository = {{"db"}}, .repo_root = {"root"}, .token_budget = 1000000};
}

struct Answer {
  json::Mapping pack;
  Lines transcript;

  std::string text() const { return json_text(pack); }
  std::string text(std::string_view key) const { return json_text(pack.at(key)); }
  Lines calls(std::string_view operation) const {
    Lines found;
    std::copy_if(transcript.begin(), transcript.end(), std::back_inserter(found),
                 [&](const std::string& line) { return line.starts_with(operation); });
    return found;
  }
};

Answer ask(const World& world, const Request<Services>& request = ample(), bool prices = false) {
  Services services(world);
  services.write_prices = prices;
  json::Mapping pack = handle_build_delta_context_pack(services, request);
  return {std::move(pack), std::move(services.transcript)};
}

/// The values of one key over the rows of a list.
Lines column(const Answer& answer, std::string_view list, std::string_view key) {
  Lines values;
  for (const json::Value& row : *answer.pack.at(list).as<json::List>()) {
    const auto& value = row.as<json::Mapping>()->at(key);
    const auto* text = value.as<std::string>();
    values.push_back(text != nullptr ? *text : json_text(value));
  }
  return values;
}

/// JSON text written with single quotation marks.
std::string quoted(std::string text) {
  std::replace(text.begin(), text.end(), '\'', '"');
  return text;
}

std::string path_of(int number) { return "f" + std::to_string(100 + number); }

/// `count` files in path order, each with one span and one symbol.
World files_with_symbols(int count) {
  World world;
  for (int i = 0; i < count; ++i) {
    const std::string path = path_of(i);
    world.changes.files.push_back({.path = path});
    world.spans[path] = {{1, 2}};
    world.symbols.push_back(
        {.id = {i}, .path = path, .fqn = "m." + path, .name = path, .signature = std::nullopt});
  }
  return world;
}

TEST(Pack, WholeConversation) {
  World world;
  world.changes.files = {{"b.py", "added", 3, 0}, {"a.py", "modified", 1, 1}, {"a_test.py"}};
  world.not_source = {"a_test.py"};
  world.impact["a.py"] = {7, 2, "python"};
  world.spans["a.py"] = {{2, 3}};
  world.symbols = {{.id = {4},
                    .path = "a.py",
                    .start_line = 1,
                    .end_line = 9,
                    .fqn = "a.f",
                    .name = "f",
                    .signature = "def f()"}};
  world.proven = {
      {.of = {4}, .fqn = "c.g", .name = "g", .path = "c.py", .line = 5, .call_line = 6}};
  world.guessed = {{.of = {4}, .total = 3, .fqn = "d.h"}};
  world.texts["a.py"] = "one\ntwo\nthree\nfour";
  world.pages = {json::Mapping{{"page", "p.md"}, {"stale", true}}};

  auto request = ample();
  request.base_branch = "main";
  request.target_branch = "topic";
  request.include_snippets = true;
  const std::string lens = "lens";
  request.wiki_lens = &lens;
  world.checked_out = {"elsewhere"};
  const Answer answer = ask(world, request, true);

  const Lines expected = {
      "branch_changes root main topic head_parameter=target_branch",
      "resolve_commit root HEAD",
      "file_impact db b.py a.py a_test.py",
      "is_source_path b.py null",
      "is_source_path a.py python",
      "is_source_path a_test.py null",
      "changed_line_spans root base head a.py b.py merge_base",
      "pages_citing lens a.py b.py",
      quoted("estimate_tokens [{'page': 'p.md', 'stale': true}]"),
      "change_row a.py",
      quoted("estimate_tokens {'path': 'a.py', 'status': 'modified', 'symbols': 2, "
             "'references': 7}"),
      "change_row b.py",
      quoted("estimate_tokens {'path': 'b.py', 'status': 'added', 'symbols': 0, "
             "'references': 0}"),
      "line_ranges a.py",
      "symbols_on_lines db (a.py) KINDS per_file=50",
      quoted("estimate_tokens {'fqn': 'a.f', 'name': 'f', 'kind': 'function', 'file': 'a.py', "
             "'line': 1, 'end_line': 9, 'status': 'modified', 'signature': 'def f()'}"),
      "line_ranges a.py b.py",
      "count_symbols_on_lines db (a.py b.py) KINDS",
      "callers_of db [ 4 ] guessed=false limit=10",
      quoted("estimate_tokens {'fqn': 'c.g', 'name': 'g', 'kind': 'function', 'file': 'c.py', "
             "'line': 5, 'call_line': 6, 'calls': 'a.f'}"),
      "callers_of db [ 4 ] guessed=true limit=10",
      "guessed_caller_row d.h",
      quoted("estimate_tokens {'fqn': 'd.h', 'relation': 'namesake', 'reason': 'one of 2', "
             "'calls': 'a.f'}"),
      "read_repo_text root a.py 2000000",
      quoted("estimate_tokens {'file': 'a.py', 'line': 2, 'end_line': 3, "
             "'content': 'two\\nthree'}"),
  };
  EXPECT_EQ(answer.transcript, expected);

  std::size_t tokens = 0;
  for (const std::string& line : answer.calls("estimate_tokens ")) {
    tokens += line.size() - std::string("estimate_tokens ").size();
  }
  EXPECT_EQ(answer.text(),
            quoted("{'base_branch': 'main', 'target_branch': 'topic', 'commit_count': 1, "
                   "'total_changed_files': 2, 'excluded_files': 1, 'affected_files': ["
                   "{'path': 'a.py', 'status': 'modified', 'symbols': 2, 'references': 7}, "
                   "{'path': 'b.py', 'status': 'added', 'symbols': 0, 'references': 0}], "
                   "'symbols': [{'fqn': 'a.f', 'name': 'f', 'kind': 'function', 'file': 'a.py', "
                   "'line': 1, 'end_line': 9, 'status': 'modified', 'signature': 'def f()'}], "
                   "'callers': [{'fqn': 'c.g', 'name': 'g', 'kind': 'function', 'file': 'c.py', "
                   "'line': 5, 'call_line': 6, 'calls': 'a.f'}], 'neighbours': [{'fqn': 'd.h', "
                   "'relation': 'namesake', 'reason': 'one of 2', 'calls': 'a.f'}], 'snippets': ["
                   "{'file': 'a.py', 'line': 2, 'end_line': 3, 'content': 'two\\nthree'}], "
                   "'tokens_used': ") +
                std::to_string(tokens) +
                quoted(", 'truncated': true, 'total_changed_symbols': 1, 'files_omitted': 0, "
                       "'symbols_omitted': 0, 'callers_omitted': 0, 'neighbours_omitted': 2, "
                       "'wiki_pages': [{'page': 'p.md', 'stale': true}], 'warning': "
                       "'Symbols, lines and callers come from the index of the checked-out branch, "
                       "not of target_branch: they may be off where the two differ.'}"));
}

TEST(Pack, DefaultsAskForNothingMore) {
  const World world = files_with_symbols(1);
  Services plain(world);
  const json::Mapping pack =
      handle_build_delta_context_pack(plain, {.repository = {{"db"}}, .repo_root = {"root"}});
  EXPECT_EQ(plain.transcript.front(), "branch_changes root null null head_parameter=target_branch");
  EXPECT_TRUE(std::none_of(plain.transcript.begin(), plain.transcript.end(), [](const auto& line) {
    return line.starts_with("resolve_commit") || line.starts_with("pages_citing") ||
           line.starts_with("read_repo_text");
  }));
  EXPECT_EQ(pack.find("warning"), nullptr);
  EXPECT_EQ(pack.find("wiki_pages"), nullptr);
}

TEST(Pack, NothingChanged) {
  const struct {
    int files;
    std::optional<std::string> note;
    std::string message;
  } cases[] = {
      {0, std::nullopt, "No changes detected between branches"},
      {0, "", "No changes detected between branches"},
      {0, "already merged", "No changes detected between branches (already merged)"},
      {1, std::nullopt,
       "No source file changed between branches; 1 other files did (source_only=false lists "
       "them)"},
      {3, "not shown",
       "No source file changed between branches; 3 other files did (source_only=false lists "
       "them)"},
  };
  for (const auto& [files, note, message] : cases) {
    World world = files_with_symbols(files);
    world.changes.note = note;
    world.checked_out = {"elsewhere"};
    for (const FileChange& file : world.changes.files) world.not_source.insert(file.path);
    auto request = ample();
    request.target_branch = "topic";
    const std::string lens = "lens";
    request.wiki_lens = &lens;
    const Answer answer = ask(world, request);
    EXPECT_EQ(answer.text(),
              R"({"base_branch": "main", "target_branch": "topic", "commit_count": 1, )"
              R"("total_changed_files": 0, "excluded_files": )" +
                  std::to_string(files) +
                  R"(, "affected_files": [], "symbols": [], "callers": [], "neighbours": [], )"
                  R"("snippets": [], "tokens_used": 0, "truncated": false, "message": ")" +
                  message + "\"}");
    EXPECT_TRUE(answer.calls("changed_line_spans").empty());
    EXPECT_TRUE(answer.calls("pages_citing").empty());
  }
}

TEST(Pack, GitErrorsBecomeTheErrorResultAndNothingElseIsCaught) {
  World world = files_with_symbols(2);
  auto request = ample();
  request.target_branch = "topic";
  request.include_snippets = true;
  const std::string lens = "lens";
  request.wiki_lens = &lens;
  world.guessed = {{.of = {0}, .fqn = "g"}};
  for (const char* operation :
       {"branch_changes", "resolve_commit", "file_impact", "is_source_path", "changed_line_spans",
        "pages_citing", "change_row", "line_ranges", "symbols_on_lines", "count_symbols_on_lines",
        "callers_of", "guessed_caller_row", "read_repo_text"}) {
    world.failing = operation;
    world.failure = [] { throw ShallowError("no merge base: run git fetch --unshallow"); };
    EXPECT_EQ(ask(world, request).text(),
              R"({"affected_files": [], "symbols": [], "callers": [], "neighbours": [], )"
              R"("snippets": [], "tokens_used": 0, "truncated": false, )"
              R"("error": "no merge base: run git fetch --unshallow"})")
        << operation;
    world.failure = [] { throw std::domain_error("not git's"); };
    EXPECT_THROW(ask(world, request), std::domain_error) << operation;
  }
}

TEST(Selection, FilesComeByReferencesSymbolsLinesPath) {
  World world;
  world.changes.files = {{"lib/b", "modified", 250, 250}, {"A", "modified", 40, 0},
                         {"lib/a", "modified", 500, 0},   {"B", "modified", 1, 1},
                         {"lib/x", "modified", 1, 0},     {"Src/x", "modified", 0, 1}};
  world.impact["A"] = {12, 3, "c"};
  world.impact["B"] = {12, 5, std::nullopt};
  world.impact["lib/a"] = {};
  EXPECT_EQ(column(ask(world), "affected_files", "path"),
            (Lines{"B", "A", "lib/a", "lib/b", "Src/x", "lib/x"}));
}

TEST(Selection, EveryFileIsKeptUnlessSourceOnly) {
  World world = files_with_symbols(3);
  world.not_source = {path_of(1)};
  auto request = ample();
  request.source_only = false;
  const Answer all = ask(world, request);
  EXPECT_EQ(all.text("excluded_files"), "0");
  EXPECT_TRUE(all.calls("is_source_path").empty());
  EXPECT_EQ(column(ask(world), "affected_files", "path"), (Lines{path_of(0), path_of(2)}));
}

TEST(Sections, RowsStopAtTheFirstThatDoesNotFit) {
  World world = files_with_symbols(5);
  world.changes.files[2].status = std::string(300, 'x');
  auto request = ample();
  request.token_budget = 1000;  // 400 for the files: two small rows, the third is too long
  const Answer answer = ask(world, request);
  EXPECT_EQ(column(answer, "affected_files", "path"), (Lines{path_of(0), path_of(1)}));
  EXPECT_EQ(answer.calls("change_row").size(), 3U);
  EXPECT_EQ(answer.text("files_omitted"), "3");
  EXPECT_EQ(answer.text("truncated"), "true");
}

TEST(Sections, SymbolsAreReadTenFilesAtATime) {
  World world = files_with_symbols(26);
  world.spans.erase(path_of(3));
  world.spans[path_of(7)].clear();
  const Answer answer = ask(world);
  const Lines reads = answer.calls("symbols_on_lines");
  ASSERT_EQ(reads.size(), 3U);
  EXPECT_EQ(reads[2], "symbols_on_lines db (f122 f123 f124 f125) KINDS per_file=50");
  EXPECT_EQ(column(answer, "symbols", "file").size(), 24U);
  EXPECT_EQ(answer.calls("count_symbols_on_lines").size(), 1U);

  auto request = ample();
  request.token_budget = 3000;  // the first chunk's rows fill the part
  const Answer cut = ask(world, request);
  EXPECT_EQ(cut.calls("symbols_on_lines").size(), 1U);
  EXPECT_EQ(cut.text("symbols_omitted"), std::to_string(26 - column(cut, "symbols", "fqn").size()));
}

TEST(Sections, SymbolsComeByFileThenLineThenIdAndStayStable) {
  World world = files_with_symbols(2);
  world.symbols = {
      {.id = {9}, .path = path_of(1), .start_line = 1, .fqn = "second file", .name = ""},
      {.id = {5}, .path = path_of(0), .start_line = 8, .fqn = "line 8", .name = ""},
      {.id = {7}, .path = path_of(0), .start_line = 2, .fqn = "line 2 id 7", .name = ""},
      {.id = {3}, .path = path_of(0), .start_line = 2, .fqn = "line 2 id 3", .name = ""},
      {.id = {3}, .path = path_of(0), .start_line = 2, .fqn = "again", .name = "", .signature = ""},
  };
  const Answer answer = ask(world);
  EXPECT_EQ(column(answer, "symbols", "fqn"),
            (Lines{"line 2 id 3", "again", "line 2 id 7", "line 8", "second file"}));
  EXPECT_EQ(answer.text("symbols").find("signature"), std::string::npos);
}

TEST(Sections, ACountBelowWhatIsShownIsNegativeAndTruncated) {
  World world = files_with_symbols(2);
  world.symbol_total = 1;
  const Answer answer = ask(world);
  EXPECT_EQ(answer.text("symbols_omitted"), "-1");
  EXPECT_EQ(answer.text("truncated"), "true");
}

TEST(Sections, ForeignSymbolsAndCallersAreMissingKeys) {
  World world = files_with_symbols(1);
  world.symbols.push_back({.id = {1}, .path = "stray", .fqn = "s", .name = "s"});
  EXPECT_THROW(ask(world), std::out_of_range);
  world.symbols.pop_back();
  world.proven = {{.of = {-1}, .fqn = "c"}};
  EXPECT_THROW(ask(world), std::out_of_range);
}

TEST(Callers, AreLookedUpForTheFirstTwentySymbolsOnce) {
  World world = files_with_symbols(25);
  world.symbols[3].id = world.symbols[1].id;
  world.symbols[3].fqn = "renamed";
  world.proven = {{.of = {2}, .fqn = "of 2"},
                  {.of = {1}, .fqn = "z of 1"},
                  {.of = {1}, .fqn = "a of 1"},
                  {.of = {24}, .fqn = "of 24"}};
  const Answer answer = ask(world);
  EXPECT_EQ(answer.calls("callers_of"),
            (Lines{"callers_of db [ 0 1 2 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 ] "
                   "guessed=false limit=10",
                   "callers_of db [ 0 1 2 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 ] "
                   "guessed=true limit=10"}));
  EXPECT_EQ(column(answer, "callers", "fqn"), (Lines{"z of 1", "a of 1", "of 2"}));
  EXPECT_EQ(column(answer, "callers", "calls"), (Lines{"renamed", "renamed", "m.f102"}));
}

TEST(Callers, CountTheTotalOfEachSymbolsLastRecord) {
  World world = files_with_symbols(2);
  for (int i = 0; i < 10; ++i) {
    world.proven.push_back({.of = {0}, .total = i == 9 ? 37 : 5, .fqn = std::string(40, 'c')});
  }
  world.proven.push_back({.of = {1}, .total = 2, .fqn = "short"});
  world.guessed = {{.of = {0}, .total = 4, .fqn = "g"}};
  const Answer all = ask(world);
  EXPECT_EQ(all.text("callers_omitted"), std::to_string(39 - 11));
  EXPECT_EQ(all.text("neighbours_omitted"), "3");

  // A proven row that does not fit leaves the guessed list empty, but counted.
  auto request = ample();
  request.token_budget = 1000;
  const Answer cut = ask(world, request);
  EXPECT_GT(column(cut, "callers", "fqn").size(), 0U);
  EXPECT_LT(column(cut, "callers", "fqn").size(), 10U);
  EXPECT_EQ(cut.text("neighbours"), "[]");
  EXPECT_EQ(cut.text("neighbours_omitted"), "4");
  EXPECT_EQ(cut.calls("guessed_caller_row").size(), 1U);

  request = ample();
  request.include_call_graph = false;
  const Answer without = ask(world, request);
  EXPECT_TRUE(without.calls("callers_of").empty());
  EXPECT_EQ(without.text("callers_omitted") + without.text("neighbours_omitted"), "00");
}

TEST(Callers, BothKindsAreLookedUpEvenForNoSymbols) {
  World world = files_with_symbols(1);
  world.symbols.clear();
  EXPECT_EQ(ask(world).calls("callers_of").size(), 2U);
}

TEST(Snippets, ShowTheFirstSpanWithinTheText) {
  std::string text;
  for (int i = 1; i <= 120; ++i) text += std::to_string(i) + "\r\n";
  const struct {
    std::string text;
    std::vector<LineSpan> spans;
    std::string snippet;  ///< "line-end_line", empty for none
  } cases[] = {
      {text, {{5, 104}}, "5-44"},
      {text, {{5, 44}, {50, 110}}, "5-44"},
      {"1\n2\n3\n4\n5", {{3, 7}}, "3-5"},
      {"1\n2\n3\n4\n5\n6\n7\n8\n", {{9, 9}}, ""},
      {"1\n2\n3", {{3, 2}}, ""},
      {"1\n2\n3", {{0, 2}}, ""},
      {"", {{1, 1}}, ""},
      {"1", {}, ""},
  };
  for (const auto& [content, spans, expected] : cases) {
    World world = files_with_symbols(2);
    world.texts[path_of(0)] = content;
    world.texts[path_of(1)] = "always";
    world.spans[path_of(0)] = spans;
    auto request = ample();
    request.include_snippets = true;
    const Answer answer = ask(world, request);
    Lines ranges;
    for (std::size_t i = 0; i < column(answer, "snippets", "line").size(); ++i) {
      ranges.push_back(column(answer, "snippets", "line")[i] + "-" +
                       column(answer, "snippets", "end_line")[i]);
    }
    EXPECT_EQ(ranges, expected.empty() ? (Lines{"1-1"}) : (Lines{expected, "1-1"}));
    EXPECT_EQ(answer.text("snippets").find("\\r"), std::string::npos);
  }
}

TEST(Snippets, ComeFromTheFirstTenRowsUntilOneDoesNotFit) {
  World world = files_with_symbols(12);
  for (int i = 0; i < 12; ++i) world.texts[path_of(i)] = "a\nb\nc";
  auto request = ample();
  request.include_snippets = true;
  EXPECT_EQ(column(ask(world, request), "snippets", "file").size(), 10U);
  world.texts.erase(path_of(4));
  EXPECT_EQ(column(ask(world, request), "snippets", "file").size(), 9U);

  world.texts[path_of(2)] = std::string(1000000, 'x');
  const Answer cut = ask(world, request);
  EXPECT_EQ(column(cut, "snippets", "file"), (Lines{path_of(0), path_of(1)}));
  EXPECT_EQ(cut.calls("read_repo_text").size(), 3U);
}

TEST(Wiki, PagesArePaidFirst) {
  World world = files_with_symbols(3);
  const std::string lens = "lens";
  auto request = ample();
  request.wiki_lens = &lens;
  const Answer none = ask(world, request);
  EXPECT_EQ(none.pack.find("wiki_pages"), nullptr);
  EXPECT_EQ(none.text("tokens_used"), ask(world).text("tokens_used"));

  world.pages = {json::Mapping{{"page", std::string(600, 'p')}}};
  request.token_budget = 500;
  const Answer broke = ask(world, request);
  EXPECT_EQ(broke.text("affected_files"), "[]");
  EXPECT_EQ(broke.text("tokens_used"), std::to_string(broke.text("wiki_pages").size()));
  EXPECT_EQ(broke.text("files_omitted"), "3");
}

}  // namespace
}  // namespace context_delta::test
