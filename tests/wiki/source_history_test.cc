#include "wiki/source_history.h"

#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/git_repository.h"

namespace context_delta::wiki {
namespace {

using Known = PageAnswer::Known;

const std::vector<std::string> FILES = {"a", "b", "dir/c", "dir/d", "dir/sub/e", "f"};
const std::vector<std::string> SOURCES = {"a",      "b",    "dir/c",  "dir/d", "dir/sub/e",
                                          "f",      "dir",  "dir/su", "*",     "dir/*",
                                          "dir/**", "**/e", "never"};

/// A history at random: branches and merges of two or three sides, in which each file comes from
/// any side or is new, whatever the merge would have done; files that go and come back.
class RandomHistory {
 public:
  RandomHistory(test::GitRepository& repository, unsigned seed) : engine_(seed) {
    const std::filesystem::path script = repository.beside() / "history";
    std::ofstream(script) << told(12 + below(14));
    repository.git({"-c", "alias.tell=!git fast-import --quiet <" + script.string(), "tell"});
    repository.git({"symbolic-ref", "HEAD", "refs/heads/c" + std::to_string(trees_.size() - 1)});
  }

 private:
  using Tree = std::vector<int>;  // the content of each file, 0 for none

  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(engine_); }

  std::string told(int commits) {
    std::ostringstream script;
    for (int i = 0; i < commits; ++i) {
      std::set<int> parents;
      const int sides = i == 0 ? 0 : below(3) == 0 ? 2 + below(2) : 1;
      // Mostly recent ones; sometimes a second root.
      for (int j = 0; j < sides; ++j) parents.insert(std::max(0, i - 1 - below(below(3) + 1) * 2));
      if (i > 0 && below(12) == 0) parents.clear();
      tell(script, i, {parents.rbegin(), parents.rend()});
    }
    return script.str();
  }

  void tell(std::ostream& script, int number, const std::vector<int>& parents) {
    Tree tree(FILES.size(), 0);
    for (std::size_t file = 0; file < FILES.size(); ++file) {
      if (!parents.empty()) {
        const int side = parents[static_cast<std::size_t>(below(static_cast<int>(parents.size())))];
        tree[file] = trees_[static_cast<std::size_t>(side)][file];
      }
      if (below(parents.size() > 1 ? 8 : 3) == 0) tree[file] = below(4);
    }
    trees_.push_back(tree);
    script << "commit refs/heads/c" << number << "\ncommitter a <a@example.org> "
           << 1'700'000'000 + number * 60 << " +0000\ndata 2\nm\n";
    for (std::size_t i = 0; i < parents.size(); ++i) {
      script << (i == 0 ? "from" : "merge") << " refs/heads/c" << parents[i] << "\n";
    }
    script << "deleteall\n";
    for (std::size_t file = 0; file < FILES.size(); ++file) {
      if (tree[file] == 0) continue;
      script << "M 100644 inline " << FILES[file] << "\ndata 2\n" << tree[file] << "\n\n";
    }
  }

  std::mt19937 engine_;
  std::vector<Tree> trees_;
};

std::set<std::string> lines(const std::string& text) {
  std::istringstream stream(text);
  std::set<std::string> result;
  for (std::string line; std::getline(stream, line);) result.insert(line);
  return result;
}

/// As git itself says it of one source, in a process of its own.
std::string newest_change(const test::GitRepository& repository, const std::string& source) {
  const bool glob = source.find('*') != source.npos;
  return repository.git(
      {"log", "-1", "--format=%H", "HEAD", "--", (glob ? ":(glob)" : ":(literal)") + source});
}

TEST(SourceHistory, SaysWhatGitSaysOfEachSource) {
  int stale = 0;
  int current = 0;
  for (unsigned seed = 0; seed < 15; ++seed) {
    test::GitRepository repository;
    const RandomHistory history(repository, seed);
    const git_utils::Git git(repository.root());
    std::vector<PageQuestion> questions;
    for (const std::string& commit : lines(repository.git({"rev-list", "--all"}))) {
      questions.push_back({.sources = SOURCES, .commit = commit, .path = {}});
    }
    const std::vector<PageAnswer> answers = ask_history(git, questions);
    EXPECT_EQ(git.processes_started(), 2U) << "one to open the repository, one for all questions";
    std::vector<std::string> newest;
    for (const std::string& source : SOURCES) newest.push_back(newest_change(repository, source));
    for (std::size_t i = 0; i < questions.size(); ++i) {
      const auto before = lines(repository.git({"rev-list", questions[i].commit}));
      std::set<std::size_t> expected;
      for (std::size_t source = 0; source < SOURCES.size(); ++source) {
        if (!newest[source].empty() && !before.contains(newest[source])) expected.insert(source);
      }
      const PageAnswer& answer = answers[i];
      ASSERT_EQ(answer.known, Known::YES) << "seed " << seed;
      ASSERT_EQ(answer.commit, questions[i].commit);
      ASSERT_EQ(std::set<std::size_t>(answer.changed.begin(), answer.changed.end()), expected)
          << "seed " << seed << ", written at " << questions[i].commit;
      ASSERT_EQ(answer.changed_in, expected.empty() ? "" : newest[answer.changed.front()]);
      ++(expected.empty() ? current : stale);
    }
  }
  EXPECT_GT(stale, 50);
  EXPECT_GT(current, 15);
}

TEST(SourceHistory, StopsReadingWhenAllIsKnown) {
  test::GitRepository repository;
  std::ofstream script(repository.beside() / "history");
  for (int i = 0; i < 3000; ++i) {
    script << "commit refs/heads/main\ncommitter a <a@example.org> " << 1'700'000'000 + i
           << " +0000\ndata 0\nM 100644 inline f" << i << "\ndata 1\nx\n";
  }
  script.close();
  repository.git(
      {"-c", "alias.tell=!git fast-import --quiet <" + (repository.beside() / "history").string(),
       "tell"});
  const git_utils::Git git(repository.root());
  const auto ask = [&](const std::string& commit, const std::string& source) {
    HistoryLimits limits;
    limits.commits = 1000;
    return ask_history(git, {{{source}, repository.git({"rev-parse", commit}), ""}}, "HEAD",
                       limits)[0];
  };
  EXPECT_TRUE(ask("HEAD~500", "f2600").changed == std::vector<std::size_t>{0});
  EXPECT_TRUE(ask("HEAD~500", "f2400").changed.empty());
  EXPECT_EQ(ask("HEAD~500", "f2400").known, Known::YES);
  EXPECT_EQ(ask("HEAD~2000", "f2600").known, Known::NOT_REACHED);
  EXPECT_EQ(ask_history(git, {{{"f1"}, "0123456789", ""}})[0].known, Known::NO_SUCH_COMMIT);
  // Bounds end the reading at the same place however the output was cut.
  HistoryLimits small;
  small.bytes = 100'000;
  EXPECT_EQ(
      ask_history(git, {{{"f1"}, repository.git({"rev-parse", "HEAD~2000"}), ""}}, "HEAD", small)[0]
          .known,
      Known::NOT_REACHED);
  small = {};
  small.sources = 1;
  const auto crowded = ask_history(
      git, {{{"f2999", "f2998"}, repository.git({"rev-parse", "HEAD~5"}), ""}}, "HEAD", small);
  EXPECT_EQ(crowded[0].known, Known::NOT_REACHED);
  EXPECT_EQ(crowded[0].changed, std::vector<std::size_t>{0});
}

TEST(SourceHistory, ReadsWhatTheRepositoryWouldHaveGitShowOtherwise) {
  test::GitRepository repository;
  repository.write("a", "1\n");
  repository.write("only", "1\n");
  repository.write("root", "1\n");
  repository.write("moved", "a file that is moved as it is\n");
  const std::string first = repository.commit("parent 0123456789012345678901234567890123456789");
  repository.write("a", "2\n");
  repository.write("commit " + first, "x\n");
  const std::string second = repository.commit("M\n\ncommit " + first + "\nparent " + first);
  repository.write("D\n\nM", "x\n");
  repository.write("\xFF", "x\n");
  repository.git({"mv", "moved", "new name"});
  const std::string third = repository.commit();
  repository.git({"checkout", "-q", "-b", "side", first});
  repository.write("side", "x\n");
  repository.commit();
  repository.git({"merge", "-q", "--no-commit", "main"});
  repository.write("only", "merged\n");
  const std::string merge = repository.commit();
  for (const char* setting :
       {"log.showRoot=false", "log.decorate=full", "log.showSignature=true", "log.follow=true",
        "log.diffMerges=none", "diff.renames=copies", "color.ui=always", "diff.relative=true",
        "format.pretty=oneline", "notes.displayRef=refs/notes/*", "diff.ignoreSubmodules=all"}) {
    const std::string text = setting;
    const std::size_t equals = text.find('=');
    repository.git({"config", text.substr(0, equals), text.substr(equals + 1)});
  }
  const git_utils::Git git(repository.root());
  const auto ask = [&](const std::string& source, const std::string& commit) {
    return ask_history(git, {{{source}, commit, commit.empty() ? source : ""}}).front();
  };
  EXPECT_EQ(ask("a", first).changed_in, second);
  EXPECT_TRUE(ask("a", third).changed.empty());
  EXPECT_EQ(ask("\U0010FFFF", first).changed_in, third);
  EXPECT_EQ(ask("moved", first).changed_in, third);
  EXPECT_TRUE(ask("moved", first).deleted);
  EXPECT_EQ(ask("only", first).changed_in, merge);
  EXPECT_EQ(ask("root", "").commit, first);
}

TEST(SourceHistory, WorksInAShallowClone) {
  test::GitRepository repository;
  std::vector<std::string> commits;
  for (int i = 0; i < 6; ++i) {
    repository.write(i == 4 ? "late" : "early", std::to_string(i));
    commits.push_back(repository.commit());
  }
  const std::filesystem::path clone = repository.beside() / "clone";
  repository.git({"clone", "-q", "--depth", "3", "file://" + repository.root().string(), clone});
  const git_utils::Git git(clone);
  const auto answers = ask_history(
      git, {{{"late"}, commits[3], ""}, {{"late"}, commits[4], ""}, {{"late"}, commits[1], ""}});
  EXPECT_EQ(answers[0].changed_in, commits[4]);
  EXPECT_TRUE(answers[1].changed.empty());
  EXPECT_EQ(answers[2].known, Known::NO_SUCH_COMMIT);
}

}  // namespace
}  // namespace context_delta::wiki
