#include "workers/diff_parser.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "plain_git.h"
#include "support/git_repository.h"

namespace context_delta::git_history {
namespace {

// A diff of every kind of record and hunk.
std::string real_diff() {
  test::GitRepository repository;
  repository.write("changed", "a\nb\nc\nd\ne\nf");
  repository.write("gone", "x\n");
  repository.write("mode", "x\n");
  repository.write("type", "x\ny\n");
  repository.write("moved", "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
  repository.write("binary", std::string("\0\1", 2));
  repository.commit();
  repository.write("changed", "a\nB\nc\nd\nnew\ne");
  for (const char* name : {"gone", "moved", "type"}) repository.remove(name);
  std::filesystem::permissions(repository.root() / "mode", std::filesystem::perms(0755));
  std::filesystem::create_symlink("mode", repository.root() / "type");
  repository.write("new \xFF", "1\n2\n3\n4\n5\n6\n7\n8\n9\nten\n");
  repository.write("binary", std::string("\0\2", 2));
  repository.commit();
  return repository.git({"diff", "--raw", "-z", "-p", "-U1", "--no-abbrev", "--full-index", "-M",
                         "HEAD~1", "HEAD"}) +
         "\n";
}

std::vector<std::string> described(const std::vector<DiffFile>& files) {
  std::vector<std::string> lines;
  for (const DiffFile& file : files) lines.push_back(test::described(file.change, file.spans));
  return lines;
}

TEST(DiffParser, ReadsTheSameHoweverTheOutputIsCut) {
  const std::string diff = real_diff();
  DiffParser at_once;
  at_once.feed(diff);
  const auto whole = described(at_once.finish());
  ASSERT_EQ(whole.size(), 6u);
  for (const std::size_t step : {1U, 2U, 3U, 7U, 64U}) {
    DiffParser parser;
    for (std::size_t at = 0; at < diff.size(); at += step) parser.feed(diff.substr(at, step));
    EXPECT_EQ(described(parser.finish()), whole) << step;
  }
}

// An output that ends between two hunks or files cannot be told from a whole one.
TEST(DiffParser, TellsAnOutputThatEndsTooEarly) {
  const std::string diff = real_diff();
  const std::size_t patch = diff.find(std::string("\0diff --git", 11)) + 1;
  ASSERT_NE(patch, std::string::npos + 1);
  for (std::size_t size = 1; size < diff.size(); ++size) {
    DiffParser parser;
    parser.feed(diff.substr(0, size));
    const bool may_be_whole = size + 1 >= patch && (size <= patch || diff[size - 1] == '\n');
    if (may_be_whole) continue;
    EXPECT_THROW(parser.finish(), GitHistoryError) << size;
  }
}

TEST(DiffParser, RefusesWhatGitNeverPrints) {
  const std::string zeros(40, '0'), ones(40, '1');
  const std::string record = ":100644 100644 " + zeros + " " + ones + " M" + '\0' + "a" + '\0';
  const std::string start = record + '\0' + "diff --git a/a b/a\nindex " + zeros + "..";
  const struct {
    std::string output, message;
  } cases[] = {
      {record + "1\t0\ta" + '\0', "unknown record: 1?0?a"},
      {":100644 M" + std::string(1, '\0') + "a" + '\0', "unknown record: :100644 M"},
      {std::string(1, '\0') + "diff --git a/a b/a\n",
       "more files in the patch than records: diff --git a/a b/a"},
      {std::string(1, '\0') + "@@ -1 +1 @@\n", "unknown line: @@ -1 +1 @@"},
      {start + std::string(40, '2') + "\n",
       "a file of the patch is in no record: " + zeros + ".." + std::string(40, '2')},
      {start + ones + "\n@@ -1 +1 @@\ncontext\n", "unknown line in a hunk of a: c"},
      {start + ones + "\n@@ -1 +0,0 @@\n+a\n", "too long a hunk of a: "},
      {start + ones + "\n@@ -1 +x @@\n", "unknown hunk: -1 +x @@"},
      {start + ones + "\n@@ -1 +1 @@\n-a\n", "it is cut off: "},
  };
  for (const auto& [output, message] : cases) {
    try {
      DiffParser parser;
      parser.feed(output);
      parser.finish();
      ADD_FAILURE() << message;
    } catch (const GitHistoryError& error) {
      EXPECT_EQ(error.what(), "git printed a diff that cannot be read: " + message);
    }
  }
}

}  // namespace
}  // namespace context_delta::git_history
