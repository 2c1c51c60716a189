#include <algorithm>
#include <array>
#include <random>

#include <gtest/gtest.h>

#include "storage/graph.h"
#include "storage/repository.h"
#include "storage/repository_changes.h"
#include "support/indexed_repository.h"

namespace context_delta {
namespace {

using repository_changes::LineRanges;

constexpr std::array<std::string_view, 3> KINDS = {"function", "method", "class"};

/// One small index for all tests; each query reads only.
class Queries : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    indexed = new test::IndexedRepository;
    indexed->git.write("lib/base.toy",
                       "def open\n"       // 1
                       "  call helper\n"  // 2
                       "def helper\n"     // 3
                       "class Box\n"      // 4
                       "  field\n"        // 5
                       "  def get\n"      // 6
                       "    call open\n"  // 7
                       "  field\n"        // 8
                       "  def put 1\n");  // 9
    indexed->git.write("lib/a.toy",
                       "include lib/base.toy\n"
                       "call open\n"
                       "def first\n"
                       "  call open\n"
                       "  call open\n"
                       "  type Box\n");
    indexed->git.write("app/\xC3\xA9.toy",
                       "include lib/base.toy\n"
                       "def main\n"
                       "  call open\n"
                       "  call put 1\n");
    indexed->git.write("app/guess.toy",
                       "def a\n"
                       "  call open\n"
                       "def b\n"
                       "  call open\n"
                       "  call get\n");
    indexed->git.write("notes.txt", "call open\n");
    indexed->git.write("app/binary.toy", std::string("\0", 1));
    indexed->git.commit();
    repository = new storage::Repository(indexed->index_path());
    indexed->update(*repository);
  }
  static void TearDownTestSuite() {
    delete repository;
    delete indexed;
  }

  static std::int64_t id_of(const std::string& path, std::int64_t line) {
    const LineRanges ranges = {{path, {{line, line}}}};
    return repository_changes::symbols_on_lines(repository->db, ranges, KINDS, 1).at(0).id;
  }

  static std::vector<std::string> on_lines(const LineRanges& ranges, std::int64_t per_file,
                                           std::span<const std::string_view> kinds = KINDS) {
    std::vector<std::string> rows;
    for (const auto& symbol :
         repository_changes::symbols_on_lines(repository->db, ranges, kinds, per_file)) {
      rows.push_back(symbol.path + ":" + std::to_string(symbol.start_line) + "-" +
                     std::to_string(symbol.end_line) + " " + symbol.kind + " " + symbol.name +
                     " = " + symbol.fqn + " [" + symbol.signature.value_or("null") + "]");
    }
    return rows;
  }

  static std::vector<std::string> callers(std::span<const std::int64_t> ids, bool guessed,
                                          std::int64_t limit) {
    std::vector<std::string> rows;
    for (const storage::Caller& caller : repository->callers_of(ids, guessed, limit)) {
      std::string row = caller.path + ":" + std::to_string(caller.line) + "@" +
                        std::to_string(caller.call_line) + " " + caller.kind + " " + caller.name +
                        " = " + caller.fqn + " of " + std::to_string(caller.total);
      if (guessed) {
        row +=
            ", " + caller.relation + ", " + caller.why + ", " + std::to_string(caller.candidates);
      }
      rows.push_back(row);
    }
    return rows;
  }

  static inline test::IndexedRepository* indexed;
  static inline storage::Repository* repository;
};

using Rows = std::vector<std::string>;

TEST_F(Queries, FileImpactCountsProvenReferencesFromOtherFiles) {
  const std::vector<std::string> paths = {"lib/base.toy", "app/\xC3\xA9.toy", "lib/a.toy",
                                          "none.toy",     "notes.txt",        "app/binary.toy"};
  auto impacts = repository_changes::file_impact(repository->db, paths);
  EXPECT_EQ(impacts.size(), 3u);
  EXPECT_EQ(impacts["lib/base.toy"].references, 5);  // 3 calls and a type in a, 1 call in é
  EXPECT_EQ(impacts["lib/base.toy"].symbols, 5);
  EXPECT_EQ(impacts["lib/base.toy"].language, "toy");
  EXPECT_EQ(impacts["app/\xC3\xA9.toy"].references, 0);
  EXPECT_EQ(impacts["lib/a.toy"].symbols, 1);
}

TEST_F(Queries, ALineBelongsToTheInnermostSymbol) {
  EXPECT_EQ(on_lines({{"lib/base.toy", {{7, 7}}}}, 50),
            Rows{"lib/base.toy:6-7 method get = lib/base:Box.get [def get]"});
  EXPECT_EQ(on_lines({{"lib/base.toy", {{8, 8}}}}, 50),
            Rows{"lib/base.toy:4-9 class Box = lib/base:Box [class Box]"});
  EXPECT_EQ(on_lines({{"lib/base.toy", {{7, 8}}}}, 50),
            (Rows{"lib/base.toy:4-9 class Box = lib/base:Box [class Box]",
                  "lib/base.toy:6-7 method get = lib/base:Box.get [def get]"}));
  EXPECT_EQ(on_lines({{"lib/a.toy", {{1, 2}}}}, 50), Rows{});
}

TEST_F(Queries, SymbolsAreLimitedPerFileAndCountedWithoutLimit) {
  const LineRanges ranges = {{"lib/a.toy", {{1, 3}, {4, 9}}},
                             {"lib/base.toy", {{1, 1}, {2, 2}, {3, 900}}},
                             {"gone.toy", {{1, 9}}},
                             {"app/guess.toy", {}}};
  EXPECT_EQ(on_lines(ranges, 2),
            (Rows{"lib/a.toy:3-6 function first = lib/a:first [def first]",
                  "lib/base.toy:1-2 function open = lib/base:open [def open]",
                  "lib/base.toy:3-3 function helper = lib/base:helper [def helper]"}));
  EXPECT_EQ(repository_changes::count_symbols_on_lines(repository->db, ranges, KINDS), 6);
  const std::array<std::string_view, 1> classes = {"class"};
  EXPECT_EQ(repository_changes::count_symbols_on_lines(repository->db, ranges, classes), 1);
  EXPECT_EQ(on_lines(ranges, 9, classes).size(), 1u);
  EXPECT_EQ(on_lines({}, 9), Rows{});
}

TEST_F(Queries, CountEverySymbolThatMeetsARange) {
  storage::Repository scratch(indexed->git.beside() / "scratch.sqlite");
  indexed->update(scratch);
  scratch.db.execute("DELETE FROM segments");
  std::mt19937 random(1);
  std::vector<git_utils::LineSpan> segments;
  for (int symbol = 1; symbol <= 60; ++symbol) {
    const auto first = static_cast<std::int64_t>(1 + random() % 200);
    const auto last = first + static_cast<std::int64_t>(random() % (symbol % 8 == 0 ? 90 : 5));
    segments.push_back({first, last});
    storage::Statement(scratch.db,
                       "INSERT INTO segments SELECT files.id, ?1, ?2, ?3, kinds.id "
                       "FROM files, kinds WHERE path = 'lib/base.toy' AND name = 'function'")
        .bind(1, last)
        .bind(2, std::int64_t{symbol})
        .bind(3, first)
        .run();
  }
  for (int round = 0; round < 300; ++round) {
    std::vector<git_utils::LineSpan> spans;
    for (std::size_t count = 1 + random() % 3; count > 0; --count) {
      const auto start = static_cast<std::int64_t>(1 + random() % 220);
      spans.push_back({start, start + static_cast<std::int64_t>(random() % 12)});
    }
    const auto met = std::count_if(segments.begin(), segments.end(), [&](const auto& segment) {
      return std::any_of(spans.begin(), spans.end(), [&](const auto& span) {
        return segment.end >= span.start && segment.start <= span.end;
      });
    });
    const LineRanges ranges = {{"lib/base.toy", spans}};
    EXPECT_EQ(repository_changes::count_symbols_on_lines(scratch.db, ranges, KINDS), met);
  }
}

TEST_F(Queries, ProvenCallersComeNearestFirstAndOnceEach) {
  const std::array<std::int64_t, 1> open = {id_of("lib/base.toy", 1)};
  const Rows all = {"lib/base.toy:6@7 method get = lib/base:Box.get of 4",
                    "lib/a.toy:1@2 module <module> = lib/a of 4",
                    "lib/a.toy:3@4 function first = lib/a:first of 4",
                    "app/\xC3\xA9.toy:2@3 function main = app/\xC3\xA9:main of 4"};
  EXPECT_EQ(callers(open, false, 10), all);
  EXPECT_EQ(callers(open, false, 2), Rows(all.begin(), all.begin() + 2));
  EXPECT_EQ(callers({}, false, 10), Rows{});
}

TEST_F(Queries, GuessedCallersCarryTheirReasonAndSeveralIdsShareOneQuery) {
  const std::array<std::int64_t, 3> ids = {id_of("lib/base.toy", 1), id_of("lib/base.toy", 6),
                                           id_of("lib/base.toy", 9)};
  EXPECT_EQ(
      callers(ids, true, 10),
      (Rows{"app/guess.toy:1@2 function a = app/guess:a of 2, namesake, no include, 1",
            "app/guess.toy:3@4 function b = app/guess:b of 2, namesake, no include, 1",
            "app/guess.toy:3@5 function b = app/guess:b of 1, namesake, in a class, 1",
            "app/\xC3\xA9.toy:2@4 function main = app/\xC3\xA9:main of 1, namesake, in a class, "
            "1"}));
  EXPECT_EQ(callers(ids, true, 1).size(), 3u);
}

TEST_F(Queries, ExportsAreOrderedLinesOfJson) {
  std::vector<std::string> symbols, calls;
  storage::export_symbols(repository->db, [&](auto line) { symbols.emplace_back(line); });
  storage::export_calls(repository->db, [&](auto line) { calls.emplace_back(line); });
  ASSERT_EQ(symbols.size(), 9u);
  EXPECT_EQ(symbols.front(), R"({"file": "app/guess.toy", "name": "a", "fqn": "app/guess:a", )"
                             R"("kind": "function", "start_line": 1, "end_line": 2})");
  ASSERT_EQ(calls.size(), 10u);
  EXPECT_EQ(calls[0],
            R"({"caller_file": "app/guess.toy", "caller_name": "a", "caller_start_line": 1, )"
            R"("call_line": 2, "callee_file": "lib/base.toy", "callee_name": "open", )"
            R"("callee_start_line": 1, "proven": false, "rule": "namesake"})");
  EXPECT_EQ(calls[5],
            R"({"caller_file": "lib/a.toy", "caller_name": "<module>", )"
            R"("caller_start_line": 1, "call_line": 2, "callee_file": "lib/base.toy", )"
            R"("callee_name": "open", "callee_start_line": 1, "proven": true, "rule": "include"})");
}

}  // namespace
}  // namespace context_delta
