#include "workers/git_history.h"

#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "plain_git.h"
#include "support/git_repository.h"
#include "utils/utf8.h"

namespace context_delta::git_history {
namespace {

using test::GitRepository;

std::string numbered(int from, int to) {
  std::string text;
  for (int i = from; i <= to; ++i) text += "line " + std::to_string(i) + "\n";
  return text;
}

std::vector<std::string> ours(const GitRepository& repository, const std::string& base,
                              const std::string& head) {
  return test::our_comparison(git_utils::Git(repository.root()), base, head);
}

std::vector<std::string> plain(const GitRepository& repository, const std::string& base,
                               const std::string& head) {
  std::vector<std::string> lines;
  for (const auto& [change, spans] : test::plain_comparison(repository, base, head)) {
    lines.push_back(test::described(change, spans));
  }
  return lines;
}

struct Edit {
  const char *name, *before, *after;
};

// Three megabytes of which a few lines change, as in generated files.
const std::string LONG_LINES = numbered(1, 150'000) + std::string(1'000'000, 'x') + "\nend\n";
const std::string CHANGED_LONG_LINES = "new\n" + numbered(1, 75'000) + numbered(75'011, 150'000) +
                                       std::string(999'999, 'x') + "\nend\n";

const Edit EDITS[] = {
    {"one line", "a\n", "b\n"},
    {"emptied", "a\nb\n", ""},
    {"filled", "", "a\nb\n"},
    {"end deleted", "a\nb\nc\nd\n", "a\nb\n"},
    {"end deleted, no line feed", "a\nb\nc\nd", "a\nb"},
    {"start deleted", "a\nb\nc\n", "c\n"},
    {"middle deleted", "a\nb\nc\nd\n", "a\nd\n"},
    {"deleted, then added", "a\nb\nc\nd\ne\nf\n", "a\nc\nd\ne\nx\nf\n"},
    {"line feed at end lost", "a\nb\n", "a\nb"},
    {"line feed at end added", "a\nb", "a\nb\n"},
    {"all line ends", "a\nb\nc\n", "a\r\nb\r\nc\r\n"},
    {"looks like a patch", "a\n", "a\ndiff --git a/x b/x\n@@ -1 +1 @@\n--- a/x\n+++ b/x\n-\n+\n"},
    {"long line changed", LONG_LINES.c_str(), CHANGED_LONG_LINES.c_str()},
    {"patch deleted", "a\ndiff --git a/x b/x\n-- b\n@@ -9,9 +9,9 @@\nz\n", "a\nz\n"},
};

// Names and kinds of files, all in one change.
void make_awkward_files(GitRepository& repository, bool after) {
  const std::string content = after ? numbered(1, 9) + "x\n" : numbered(0, 9);
  for (const char* name : {"with space", "with\nline feed", "with\ttab", "with \"quotes\"",
                           "back\\slash", "-dash", "--option", "co:lon", "caf\xC3\xA9", "main",
                           "not \xFF utf-8", "HEAD", "a b/diff --git a/x b/x"}) {
    repository.write(name, content);
  }
  repository.write("binary", after ? std::string("\0\1", 2) : std::string("\0\2", 2));
  repository.write("mode", "same\n");
  if (after) std::filesystem::permissions(repository.root() / "mode", std::filesystem::perms(0755));
  repository.write(after ? "moved/renamed" : "renamed", numbered(1, 30));
  repository.write(after ? "Case" : "case", numbered(31, 60));
  repository.write(after ? "edited too" : "moved", numbered(101, 130) + (after ? "more\n" : ""));
  repository.write(after ? "only after" : "only before", after ? "new\n" : "old\nlines\n");
  for (const char* name : {"becomes link", "was link"}) repository.remove(name);
  const bool first_is_link = after;
  repository.write(first_is_link ? "was link" : "becomes link", numbered(1, 4));
  std::filesystem::create_symlink("mode",
                                  repository.root() / (after ? "becomes link" : "was link"));
}

TEST(BranchChanges, SaysWhatPlainGitSaysOfEveryKindOfChange) {
  GitRepository repository;
  for (const auto& [name, before, after] : EDITS) repository.write(name, before);
  make_awkward_files(repository, false);
  repository.commit();
  repository.git({"switch", "-q", "-c", "topic"});
  for (const auto& [name, before, after] : EDITS) repository.write(name, after);
  for (const char* name : {"renamed", "case", "moved", "only before"}) repository.remove(name);
  make_awkward_files(repository, true);
  repository.commit();
  const auto lines = plain(repository, "main", "topic");
  EXPECT_EQ(lines.size(), std::size(EDITS) + 22);
  EXPECT_EQ(ours(repository, "main", "topic"), lines);
  EXPECT_EQ(ours(repository, "topic~1", "topic"), lines);
}

// Without lines of context git compares files without their equal ends, and then takes for a match
// what it otherwise holds for chance: the brace, rare at the start but common in the file.
TEST(BranchChanges, CountsLinesAsGitDoesThatShowsThemInContext) {
  GitRepository repository;
  std::string rest;
  for (int i = 0; i < 60; ++i) rest += std::string(300, 'x') + std::to_string(i) + "\n}\n";
  repository.write("file", "a\n}\nb\n" + rest);
  repository.commit();
  repository.write("file", numbered(1, 4) + "}\n" + numbered(5, 8) + rest);
  repository.commit();
  EXPECT_TRUE(repository.git({"diff", "--numstat", "HEAD~1", "HEAD"}).starts_with("9\t3"));
  EXPECT_TRUE(repository.git({"diff", "--numstat", "-U0", "HEAD~1", "HEAD"}).starts_with("8\t2"));
  const std::vector<std::string> lines = {"modified  > file +9 -3 1-9"};
  EXPECT_EQ(ours(repository, "HEAD~1", "HEAD"), lines);
  EXPECT_EQ(plain(repository, "HEAD~1", "HEAD"), lines);
}

TEST(BranchChanges, SubmodulesAreCountedAsGitCountsThem) {
  GitRepository repository;
  const std::string first = repository.commit();
  repository.write("file", "a\n");
  repository.git({"update-index", "--add", "--cacheinfo", "160000," + first + ",bumped"});
  repository.git({"add", "file"});
  repository.git({"commit", "-q", "-m", "before"});
  const std::string before = repository.git({"rev-parse", "HEAD"});
  repository.git({"update-index", "--cacheinfo", "160000," + before + ",bumped"});
  repository.git({"update-index", "--cacheinfo", "160000," + before + ",file"});
  repository.git({"commit", "-q", "-m", "after"});
  EXPECT_EQ(
      ours(repository, "HEAD~1", "HEAD"),
      (std::vector<std::string>{"modified  > bumped +1 -1 1-1", "type_changed  > file +1 -1 1-1"}));
}

TEST(BranchChanges, StartAtTheMergeBase) {
  GitRepository repository;
  repository.write("shared.py", numbered(1, 40));
  repository.write("old.py", numbered(50, 90));
  repository.commit();
  repository.git({"switch", "-q", "-c", "topic"});
  repository.write("ours.py", "a\n");
  repository.commit();
  repository.git({"switch", "-q", "main"});
  repository.git({"mv", "old.py", "renamed-in-base.py"});
  repository.write("shared.py", numbered(1, 39));
  repository.commit();
  const std::vector<std::string> only = {"added  > ours.py +1 -0 1-1"};
  EXPECT_EQ(ours(repository, "main", "topic"), only);

  repository.git({"switch", "-q", "topic"});
  repository.git({"merge", "-q", "--no-edit", "main"});
  EXPECT_EQ(ours(repository, "main", "topic"), only);
  const git_utils::Git git(repository.root());
  const BranchChanges changes = History(git).branch_changes("main", "topic", "target_branch");
  EXPECT_EQ(changes.commit_count, 2);
  EXPECT_EQ(changes.note, "'main' was merged into 'topic'");
  EXPECT_EQ(changes.base_commit, repository.git({"rev-parse", "main"}));
  EXPECT_EQ(changes.head_commit, repository.git({"rev-parse", "topic"}));

  repository.git({"switch", "-q", "main"});
  repository.write("shared.py", numbered(1, 38));
  repository.commit();
  repository.git({"switch", "-q", "topic"});
  repository.git({"merge", "-q", "--no-edit", "main"});
  EXPECT_EQ(ours(repository, "main", "topic"), only);
}

TEST(BranchChanges, NotesEmptyAndCrissCrossComparisons) {
  GitRepository repository;
  repository.commit();
  repository.git({"branch", "topic"});
  const git_utils::Git git(repository.root());
  const auto note = [&](const char* base, const char* head) {
    return History(git).branch_changes(base, head, "target_branch").note.value_or("");
  };
  EXPECT_EQ(note("main", "main"), "'main' is the base branch itself");
  EXPECT_EQ(note("main", "topic"), "'topic' has no commit that 'main' lacks");
  for (const char* branch : {"main", "topic"}) {
    repository.git({"switch", "-q", branch});
    repository.write(branch, numbered(1, 3));
    repository.commit();
    repository.git({"tag", std::string("before-") + branch});
  }
  EXPECT_EQ(note("main", "topic"), "");
  repository.git({"merge", "-q", "--no-edit", "before-main"});
  repository.git({"switch", "-q", "main"});
  repository.git({"merge", "-q", "--no-edit", "before-topic"});
  EXPECT_EQ(note("main", "topic"),
            "'main' and 'topic' have several merge bases: compared with the first that git names; "
            "'main' was merged into 'topic'");
}

TEST(BranchChanges, ProcessesAreTheSameForOneFileAndForFiveThousand) {
  GitRepository repository;
  std::map<std::string, std::string> files;
  for (int i = 0; i < 5000; ++i) files[std::to_string(i)] = numbered(i, i + 4);
  repository.commit_files("main", files);
  files["0"] = numbered(0, 2);
  repository.commit_files("main", files);
  for (auto& [path, content] : files) content.erase(content.rfind('\n', content.size() - 2) + 1);
  repository.commit_files("main", files);
  const auto processes = [&](const char* base, const char* head, std::size_t count) {
    const git_utils::Git git(repository.root());
    History history(git);
    const BranchChanges changes = history.branch_changes(base, head, "target_branch");
    EXPECT_EQ(changes.files.size(), count);
    const std::size_t before = git.processes_started();
    history.changed_line_spans(changes.base_commit, changes.head_commit, changes.files, true);
    EXPECT_EQ(git.processes_started(), before);
    return before;
  };
  EXPECT_EQ(processes("HEAD~2", "HEAD~1", 1), 4u);
  EXPECT_EQ(processes("HEAD~1", "main", 5000), 4u);
}

TEST(ChangedLineSpans, ReadsOtherCommitsWithADiffOfTheirOwn) {
  GitRepository repository;
  repository.write("a", numbered(1, 10));
  const std::string first = repository.commit();
  repository.write("a", numbered(1, 11));
  repository.write("b", "b\n");
  const std::string second = repository.commit();
  const git_utils::Git git(repository.root());
  History history(git);
  history.branch_changes("HEAD", "HEAD", "target_branch");
  const std::vector<FileChange> wanted = {{"a", "modified", {}, 1, 0}};
  const LineSpans there = history.changed_line_spans(first, second, wanted, true);
  EXPECT_EQ(there, (LineSpans{{"a", {{11, 11}}}}));
  const LineSpans back = history.changed_line_spans(second, first, wanted, false);
  EXPECT_EQ(back, (LineSpans{{"a", {{10, 10}}}}));
  EXPECT_THROW(history.changed_line_spans("main", first, wanted, true), GitHistoryError);
}

TEST(BranchChanges, OfAMergedBranchAreNone) {
  GitRepository repository;
  repository.commit();
  repository.git({"switch", "-q", "-c", "topic"});
  repository.write("topic.py", numbered(1, 3));
  repository.commit();
  repository.git({"switch", "-q", "main"});
  repository.git({"merge", "-q", "--no-ff", "--no-edit", "topic"});
  const git_utils::Git git(repository.root());
  const BranchChanges changes = History(git).branch_changes("main", "topic", "target_branch");
  EXPECT_EQ(changes.files.size(), 0u);
  EXPECT_EQ(changes.commit_count, 0);
  EXPECT_EQ(changes.note, "'topic' has no commit that 'main' lacks");
}

TEST(BranchChanges, RenamesBeyondTheLimitAreFoundWhenExact) {
  GitRepository repository;
  std::map<std::string, std::string> before, after;
  for (int i = 0; i < 1005; ++i) {
    before["a/" + std::to_string(i)] = numbered(i, i + 9);
    // Names differ too: files of one name are paired before the limit counts.
    after["b/new" + std::to_string(i)] = numbered(i, i + 8);
  }
  for (int i = 0; i < 3; ++i) {
    before["a/exact" + std::to_string(i)] = numbered(i, i + 5);
    after["b/exact" + std::to_string(i)] = numbered(i, i + 5);
  }
  repository.commit_files("main", before);
  repository.commit_files("main", after);
  const git_utils::Git git(repository.root());
  std::map<std::string, int> statuses;
  for (const auto& file : History(git).branch_changes("HEAD~1", "HEAD", "head").files) {
    ++statuses[file.status];
  }
  EXPECT_EQ(statuses,
            (std::map<std::string, int>{{"added", 1005}, {"deleted", 1005}, {"renamed", 3}}));
}

TEST(LineRanges, KeepTheOrderOfThePathsAndLeaveOutThoseWithoutSpans) {
  const LineSpans spans = {{"a", {{1, 2}}}, {"b", {}}, {"c", {{3, 3}, {5, 9}}}};
  const std::vector<std::string> paths = {"c", "b", "x", "a"};
  EXPECT_EQ(line_ranges(spans, paths), (LineRanges{{"c", {{3, 3}, {5, 9}}}, {"a", {{1, 2}}}}));
}

TEST(ChangeRow, NamesTheOldPathOfRenamesOnly) {
  EXPECT_EQ(
      json::json_text(change_row({"b", "renamed", "a", 3, 1})),
      R"({"path": "b", "status": "renamed", "old_path": "a", "additions": 3, "deletions": 1})");
  EXPECT_EQ(json::json_text(change_row({"b", "added", {}, 3, 0})),
            R"({"path": "b", "status": "added", "additions": 3, "deletions": 0})");
}

}  // namespace
}  // namespace context_delta::git_history
