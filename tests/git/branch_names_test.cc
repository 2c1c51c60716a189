#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "support/git_repository.h"
#include "workers/git_history.h"

namespace context_delta::git_history {
namespace {

using test::GitRepository;
using Name = std::optional<std::string>;

BranchChanges compared(const GitRepository& repository, const Name& base, const Name& head) {
  const git_utils::Git git(repository.root());
  return History(git).branch_changes(base, head, "target_branch");
}

std::string error_of(const std::filesystem::path& root, const Name& base, const Name& head) {
  try {
    const git_utils::Git git(root);
    History(git).branch_changes(base, head, "target_branch");
  } catch (const GitHistoryError& error) {
    std::string text = error.what();
    EXPECT_EQ(text.find('\n'), std::string::npos);
    for (auto at = text.find(root.string()); at != std::string::npos;
         at = text.find(root.string())) {
      text.replace(at, root.string().size(), "ROOT");
    }
    return text;
  }
  return "no error";
}

void add_remote_branch(const GitRepository& repository, const std::string& name,
                       const std::string& revision) {
  repository.git({"update-ref", "refs/remotes/" + name, revision});
}

TEST(Base, IsTheRemotesDefaultBranchElseMainElseMaster) {
  GitRepository repository;
  repository.commit();
  repository.git({"switch", "-q", "-c", "topic"});
  repository.commit();
  const auto base = [&] { return compared(repository, {}, {}).base_branch; };
  EXPECT_EQ(base(), "main");
  repository.git({"branch", "-m", "main", "master"});
  EXPECT_EQ(base(), "master");
  repository.git({"branch", "-m", "master", "trunk"});
  EXPECT_EQ(error_of(repository.root(), {}, {}),
            "no base to compare with in ROOT: tried the remote's default branch "
            "(refs/remotes/origin/HEAD), main, master, origin/main and origin/master: name one as "
            "base_branch");
  add_remote_branch(repository, "origin/master", "trunk");
  EXPECT_EQ(base(), "origin/master");
  add_remote_branch(repository, "fork/develop", "trunk");
  repository.git({"symbolic-ref", "refs/remotes/fork/HEAD", "refs/remotes/fork/develop"});
  EXPECT_EQ(base(), "fork/develop");
  add_remote_branch(repository, "origin/next", "trunk");
  repository.git({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/next"});
  EXPECT_EQ(base(), "origin/next");
  repository.git({"update-ref", "-d", "refs/remotes/origin/next"});
  EXPECT_EQ(base(), "fork/develop");
}

TEST(Base, IsExplainedWhenItWasChosenAndNothingChanged) {
  GitRepository repository;
  repository.commit();
  EXPECT_EQ(compared(repository, {}, {}).note,
            "'main' is the base branch itself; 'main' was taken as base: no remote says what its "
            "default branch is");
  add_remote_branch(repository, "origin/dev", "main");
  repository.git({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/dev"});
  EXPECT_EQ(compared(repository, {}, {}).note,
            "'main' has no commit that 'origin/dev' lacks; 'origin/dev' was taken as base: it is "
            "the default branch of remote 'origin'");
}

TEST(Head, IsNamedByItsBranchOrByAShortId) {
  GitRepository repository;
  repository.write("topic", "a file named as the branch is\n");
  const std::string first = repository.commit();
  repository.git({"switch", "-q", "-c", "feature/topic"});
  const std::string second = repository.commit();
  EXPECT_EQ(compared(repository, "main", {}).head_branch, "feature/topic");
  EXPECT_EQ(compared(repository, "main", "HEAD").head_branch, "feature/topic");
  repository.git({"checkout", "-q", "--detach"});
  EXPECT_EQ(compared(repository, "main", {}).head_branch, second.substr(0, 12));
  EXPECT_EQ(compared(repository, first, second).commit_count, 1);
}

TEST(Names, MeanTheLocalBranchFirstThenWhatGitSaysThenThatOfOrigin) {
  GitRepository repository;
  repository.write("topic", "a file of that name\n");
  const std::string first = repository.commit();
  const std::string second = repository.commit();
  const std::string third = repository.commit();
  const auto head = [&](const char* name) { return compared(repository, first, name).head_commit; };
  add_remote_branch(repository, "origin/topic", first);
  EXPECT_EQ(head("topic"), first);
  repository.git({"tag", "-a", "-m", "annotated", "topic", second});
  EXPECT_EQ(head("topic"), second);
  repository.git({"branch", "topic", third});
  EXPECT_EQ(head("topic"), third);
  EXPECT_EQ(head("origin/topic"), first);
  EXPECT_EQ(head("refs/tags/topic"), second);
  EXPECT_EQ(head("HEAD~1"), second);
  EXPECT_EQ(head("topic^"), second);
  EXPECT_EQ(head(third.substr(0, 8).c_str()), third);
}

TEST(Errors, OfNamesSayWhatWhereAndWhatHelps) {
  GitRepository repository;
  repository.write("file", "text\n");
  repository.commit();
  repository.git({"branch", "feature/login"});
  add_remote_branch(repository, "origin/release", "main");
  const std::string see = ": see git -C ROOT branch --all";
  const struct {
    const char *head, *text;
  } cases[] = {
      {"featrue/login",
       "target_branch 'featrue/login' is no branch, tag or commit of ROOT (did you mean "
       "feature/login?): see git -C ROOT branch --all"},
      {"relaese",
       "target_branch 'relaese' is no branch, tag or commit of ROOT (did you mean "
       "origin/release?): see git -C ROOT branch --all"},
      {"something-else",
       "target_branch 'something-else' is no branch, tag or commit of ROOT: see git -C ROOT branch "
       "--all"},
      {"--output=stolen",
       "target_branch '--output=stolen' looks like an option, not like a branch of ROOT: see git "
       "-C "
       "ROOT branch --all"},
      {"main\nHEAD",
       "target_branch 'main?HEAD' is no branch, tag or commit of ROOT: see git -C ROOT branch "
       "--all"},
      {"HEAD:",
       "target_branch 'HEAD:' is a tree of ROOT, not a commit: name a branch, tag or commit"},
      {"HEAD:file",
       "target_branch 'HEAD:file' is a blob of ROOT, not a commit: name a branch, tag or commit"},
      {"", "target_branch is empty: name a branch"},
  };
  for (const auto& [head, text] : cases) EXPECT_EQ(error_of(repository.root(), "main", head), text);
  EXPECT_EQ(
      error_of(repository.root(), "mian", {}),
      "base_branch 'mian' is no branch, tag or commit of ROOT (did you mean main?): see git -C "
      "ROOT branch --all");
}

TEST(PullRequests, AreFoundWhereHostsAndUsersFetchThem) {
  GitRepository repository;
  const std::string first = repository.commit();
  const git_utils::Git git(repository.root());
  const auto head = [&](std::int64_t number) {
    const Sides sides = find_sides(git, {"main", {}, "--base", "--target", number});
    EXPECT_EQ(sides.head.commit, first);
    return sides.head.name;
  };
  const struct {
    const char *ref, *name;
  } cases[] = {{"refs/pull/1/head", "pull request 1"},
               {"refs/merge-requests/2/head", "merge request 2"},
               {"refs/remotes/origin/pr/3", "pull request 3"},
               {"refs/remotes/fork/merge-requests/4/head", "merge request 4"},
               {"refs/remotes/pull/5/merge", "pull request 5"}};
  for (const auto& [ref, name] : cases) {
    repository.git({"update-ref", ref, first});
    EXPECT_EQ(head(name[std::string_view(name).size() - 1] - '0'), name);
  }
  repository.git({"update-ref", "refs/remotes/a/b/pr/6", first});
  try {
    head(6);
    FAIL();
  } catch (const GitHistoryError& error) {
    EXPECT_EQ(std::string(error.what()).find("no pull or merge request 6 has been fetched in "), 0U)
        << error.what();
  }
}

TEST(Errors, OfCommitsThatAreMissing) {
  GitRepository repository;
  repository.git({"config", "gc.auto", "0"});
  const std::string first = repository.commit();
  const std::string lost = repository.commit();
  repository.commit();
  repository.git({"switch", "-q", "-c", "work"});
  repository.commit();
  repository.git({"branch", "-f", "main", first});
  std::filesystem::remove(repository.root() / ".git/objects" / lost.substr(0, 2) / lost.substr(2));
  const std::string missing =
      " needs objects that are missing in ROOT (Could not read " + lost + "): run git -C ROOT fsck";
  EXPECT_EQ(error_of(repository.root(), "main", "work"), "comparing 'main' and 'work'" + missing);
  EXPECT_EQ(error_of(repository.root(), "work~3", "work"), "looking up 'work~3'" + missing);
  repository.git({"checkout", "-q", "--orphan", "unborn"});
  EXPECT_EQ(error_of(repository.root(), "main", "unborn"),
            "branch 'unborn' has no commit yet in ROOT: commit first, or check out a branch that "
            "has commits");
}

TEST(Errors, OfHistoriesThatCannotBeCompared) {
  GitRepository repository;
  EXPECT_EQ(error_of(repository.root(), {}, {}),
            "branch 'main' has no commit yet in ROOT: commit first, or check out a branch that has "
            "commits");
  repository.commit();
  repository.write("file", "a\n");
  repository.commit();
  repository.git({"switch", "-q", "--orphan", "other"});
  repository.commit();
  EXPECT_EQ(error_of(repository.root(), "main", {}),
            "no merge base of 'main' and 'other' in ROOT: their histories are unrelated: name "
            "another base_branch");

  repository.git({"switch", "-q", "-C", "other", "main~1"});
  repository.commit("left the base");
  const auto shallow = repository.beside() / "shallow";
  repository.git({"clone", "-q", "--depth=1", "--no-single-branch",
                  "file://" + repository.root().string(), shallow.string()});
  EXPECT_EQ(error_of(shallow, "origin/main", "origin/other"),
            "no merge base of 'origin/main' and 'origin/other' in ROOT: its history is cut off "
            "(shallow clone): run git -C ROOT fetch --unshallow");
}

// Does what an error advises to do.
void follow(const GitRepository& repository, const std::filesystem::path& root,
            const std::string& error) {
  const std::string start = "run git -C ROOT ";
  const auto at = error.find(start);
  ASSERT_NE(at, std::string::npos) << error;
  std::istringstream words(error.substr(at + start.size()));
  std::vector<std::string> arguments = {"-C", root.string()};
  for (std::string word; words >> word;) arguments.push_back(word);
  repository.git(arguments);
}

TEST(Advice, LeadsFromAShallowCloneOfOneBranchToAComparison) {
  GitRepository repository;
  repository.commit();
  repository.commit();
  repository.git({"switch", "-q", "-c", "topic"});
  repository.commit();
  repository.commit();
  const auto clone = [&](const char* name) {
    const auto folder = repository.beside() / name;
    repository.git({"clone", "-q", "--depth=1", "--branch=topic",
                    "file://" + repository.root().string(), folder.string()});
    return folder;
  };
  repository.git({"switch", "-q", "main"});
  const auto named = clone("named"), not_named = clone("not named");
  const std::string unknown = error_of(named, "main", {});
  EXPECT_EQ(unknown,
            "base_branch 'main' is not in the shallow clone at ROOT: run git -C ROOT fetch "
            "--unshallow origin main:refs/remotes/origin/main");
  follow(repository, named, unknown);
  EXPECT_EQ(error_of(named, "main", {}), "no error");
  EXPECT_EQ(error_of(named, "origin/main", {}), "no error");

  const std::string none = error_of(not_named, {}, {});
  EXPECT_TRUE(
      none.ends_with("name one as base_branch, or run git -C 'ROOT' fetch --unshallow origin "
                     "HEAD:refs/remotes/origin/HEAD"))
      << none;
  repository.git({"-C", not_named, "fetch", "origin", "HEAD:refs/remotes/origin/HEAD"});
  const std::string shallow = error_of(not_named, {}, {});
  EXPECT_EQ(shallow,
            "no merge base of 'origin/HEAD' and 'topic' in ROOT: its history is cut off (shallow "
            "clone): run git -C 'ROOT' fetch --unshallow");
  follow(repository, not_named, "run git -C ROOT fetch --unshallow");
  const git_utils::Git git(not_named);
  EXPECT_EQ(History(git).branch_changes({}, {}, "target_branch").base_branch, "origin/HEAD");
}

}  // namespace
}  // namespace context_delta::git_history
