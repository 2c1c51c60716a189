#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "plain_git.h"
#include "support/git_repository.h"
#include "workers/git_history.h"

namespace context_delta::git_history {
namespace {

namespace fs = std::filesystem;
using test::GitRepository;

// A branch that changes code.py, in a repository with a program that leaves a mark when it runs.
struct HostileRepository {
  HostileRepository() {
    repository.write("code.py", "a\nb\nc\n");
    repository.write("other.py", "a\nb\nc\n");
    repository.commit();
    repository.git({"switch", "-q", "-c", "topic"});
    repository.write("code.py", "a\nx\nc\n");
    repository.commit();
    std::ofstream(program()) << "#!/bin/sh\necho ran >> '" << mark().string() << "'\n";
    fs::permissions(program(), fs::perms(0755));
  }

  fs::path mark() const { return repository.beside() / "mark"; }
  fs::path program() const { return repository.beside() / "program"; }
  void set(const char* name, const std::string& value) { repository.git({"config", name, value}); }

  // Whether `git ARGUMENTS` runs the program.
  bool fires(const std::vector<std::string>& arguments) const {
    fs::remove(mark());
    try {
      repository.git(arguments);
    } catch (const std::exception&) {  // the program may also make the command fail
    }
    return fs::remove(mark());
  }

  std::string seen() const {
    const git_utils::Git git(repository.root());
    History history(git);
    const BranchChanges changes = history.branch_changes("main", "topic", "target_branch");
    const auto spans =
        history.changed_line_spans(changes.base_commit, changes.head_commit, changes.files, true);
    git_utils::list_tree(git, git_utils::resolve_commit(git, "HEAD"));
    std::string text;
    for (const FileChange& change : changes.files) {
      const auto found = spans.find(change.path);
      text +=
          test::described(change, found == spans.end() ? std::vector<LineSpan>() : found->second);
      text += "\n";
    }
    return text;
  }

  GitRepository repository;
};

constexpr const char* SEEN = "modified  > code.py +1 -1 2-2\n";

TEST(HostileRepository, ProgramsOfItsSettingsDoNotRun) {
  struct Case {
    std::vector<std::pair<const char*, const char*>> settings;  // PROGRAM stands for the program
    const char* attributes;
    std::vector<std::string> plain;  // a command that runs the program
  };
  const Case cases[] = {
      {{{"core.fsmonitor", "PROGRAM"}}, "", {"status"}},
      {{{"diff.external", "PROGRAM"}}, "", {"diff", "main", "topic"}},
      {{{"diff.evil.textconv", "PROGRAM"}}, "*.py diff=evil\n", {"diff", "main", "topic"}},
      {{{"diff.evil.command", "PROGRAM"}}, "*.py diff=evil\n", {"diff", "main", "topic"}},
      {{{"filter.evil.clean", "PROGRAM"}}, "*.py filter=evil\n", {"hash-object", "code.py"}},
      {{{"core.pager", "PROGRAM"}, {"pager.diff", "true"}}, "", {"-p", "status"}},
      {{{"alias.x", "!PROGRAM"}}, "", {"x"}},
      {{{"extensions.partialClone", "origin"},
        {"core.repositoryFormatVersion", "1"},
        {"remote.origin.promisor", "true"},
        {"remote.origin.url", "ext::PROGRAM"},
        {"protocol.allow", "always"}},
       "",
       {"cat-file", "-e", "1234567890123456789012345678901234567890"}},
  };
  for (const auto& [settings, attributes, plain_command] : cases) {
    HostileRepository hostile;
    for (const auto& [name, value] : settings) {
      std::string text = value;
      if (const auto at = text.find("PROGRAM"); at != std::string::npos) {
        text.replace(at, 7, hostile.program().string());
      }
      hostile.set(name, text);
    }
    std::ofstream(hostile.repository.root() / ".git/info/attributes") << attributes;
    // A pager runs on a terminal only; there is none here.
    if (std::string(settings[0].first) != "core.pager") {
      EXPECT_TRUE(hostile.fires(plain_command)) << settings[0].first;
    }
    fs::remove(hostile.mark());
    EXPECT_EQ(hostile.seen(), SEEN) << settings[0].first;
    const git_utils::Git git(hostile.repository.root());
    History history(git);
    EXPECT_THROW(history.branch_changes("1234567890123456789012345678901234567890", {}, "head"),
                 GitHistoryError);
    EXPECT_FALSE(fs::exists(hostile.mark())) << settings[0].first;
  }
}

TEST(HostileRepository, SettingsThatChangeTheOutputDoNotApply) {
  const std::pair<const char*, const char*> settings[] = {
      {"diff.context", "9"},
      {"diff.interHunkContext", "9"},
      {"diff.noprefix", "true"},
      {"diff.mnemonicPrefix", "true"},
      {"diff.renames", "copies"},
      {"diff.algorithm", "histogram"},
      {"diff.submodule", "log"},
      {"diff.wordRegex", "."},
      {"diff.colorMoved", "zebra"},
      {"diff.wsErrorHighlight", "all"},
      {"color.ui", "always"},
      {"color.diff", "always"},
      {"core.quotePath", "true"},
      {"core.abbrev", "4"},
      {"diff.ignoreSubmodules", "all"},
      {"core.bigFileThreshold", "1"},
      {"diff.orderFile", "/nonexistent"},
      {"core.attributesFile", "/nonexistent"},
  };
  HostileRepository hostile;
  for (const auto& [name, value] : settings) hostile.set(name, value);
  EXPECT_EQ(hostile.seen(), SEEN);
}

TEST(HostileRepository, AttributesOfTheBranchDoNotHideItsLines) {
  HostileRepository hostile;
  hostile.repository.write(".gitattributes", "*.py -diff -text\n");
  hostile.repository.commit();
  EXPECT_NE(hostile.repository.git({"diff", "--numstat", "main", "topic"}).find("-\t-\tcode.py"),
            std::string::npos);
  EXPECT_EQ(hostile.seen(), std::string("added  > .gitattributes +1 -0 1-1\n") + SEEN);
}

TEST(HostileRepository, ReplacedObjectsAndGraftsAreNotFollowed) {
  HostileRepository hostile;
  const GitRepository& repository = hostile.repository;
  const std::string blob = repository.git({"rev-parse", "topic:code.py"});
  repository.git({"replace", blob, repository.git({"rev-parse", "main:code.py"})});
  std::ofstream(repository.root() / ".git/info/grafts")
      << repository.git({"rev-parse", "topic"}) << "\n";
  EXPECT_EQ(repository.git({"diff", "-U0", "main", "topic"}).find("@@"), std::string::npos);
  EXPECT_EQ(hostile.seen(), SEEN);
}

TEST(HostileRepository, InheritedVariablesDoNotRedirect) {
  HostileRepository hostile;
  GitRepository other;
  other.commit();
  const std::pair<const char*, std::string> variables[] = {
      {"GIT_DIR", (other.root() / ".git").string()},
      {"GIT_WORK_TREE", other.root().string()},
      {"GIT_OBJECT_DIRECTORY", (other.root() / ".git/objects").string()},
      {"GIT_EXTERNAL_DIFF", hostile.program().string()},
      {"GIT_DIFF_OPTS", "-u9"},
      {"GIT_CONFIG_COUNT", "1"},
      {"GIT_CONFIG_KEY_0", "diff.external"},
      {"GIT_CONFIG_VALUE_0", hostile.program().string()},
  };
  for (const auto& [name, value] : variables) setenv(name, value.c_str(), 1);
  EXPECT_EQ(hostile.seen(), SEEN);
  for (const auto& [name, value] : variables) unsetenv(name);
  EXPECT_FALSE(fs::exists(hostile.mark()));
}

TEST(HostileRepository, WorkTreeElsewhereIsRefused) {
  HostileRepository hostile;
  const test::TemporaryFolder elsewhere;
  hostile.set("core.worktree", elsewhere.path().string());
  try {
    hostile.seen();
    FAIL() << "files of another folder would have been read";
  } catch (const GitHistoryError& error) {
    EXPECT_EQ(error.what(), "the work tree of " + hostile.repository.root().string() +
                                " is elsewhere, at " + elsewhere.path().string() +
                                ": run it there, or git config --unset core.worktree");
  }
}

TEST(HostileRepository, NamesOfBranchesAreNotOptions) {
  HostileRepository hostile;
  const GitRepository& repository = hostile.repository;
  const std::string commit = repository.git({"rev-parse", "topic"});
  for (const char* name : {"--output=stolen", "-O", "--all"}) {
    repository.git({"update-ref", std::string("refs/heads/") + name, commit});
    const git_utils::Git git(repository.root());
    EXPECT_EQ(History(git).branch_changes("main", name, "target_branch").head_commit, commit);
  }
  EXPECT_FALSE(fs::exists(repository.root() / "stolen"));
}

}  // namespace
}  // namespace context_delta::git_history
