#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "plain_git.h"
#include "support/git_repository.h"
#include "workers/git_history.h"

namespace context_delta::git_history {
namespace {

namespace fs = std::filesystem;
using test::GitRepository;

std::string numbered(int from, int to, const std::string& start = "line ") {
  std::string text;
  for (int i = from; i <= to; ++i) text += start + std::to_string(i) + "\n";
  return text;
}

// All that the system asks git for: the comparison, then the tree.
std::string seen_in(const fs::path& root) {
  const git_utils::Git git(root);
  std::string text;
  for (const std::string& line : test::our_comparison(git, "main", "topic")) text += line + "\n";
  git_utils::list_tree(git, git_utils::resolve_commit(git, "HEAD"));
  return text;
}

// A branch that changes code.py, in a repository with a program that leaves a mark when it runs.
struct HostileRepository {
  HostileRepository() {
    repository.write("code.py", "a\nb\nc\n");
    repository.write("other.py", "a\nb\nc\n");
    repository.commit();
    repository.git({"switch", "-q", "-c", "topic"});
    repository.write("code.py", "a\nx\nc\n");
    repository.commit();
    make_program(program());
  }

  fs::path root() const { return repository.root(); }
  fs::path mark() const { return repository.beside() / "mark"; }
  fs::path program() const { return repository.beside() / "program"; }

  void make_program(const fs::path& file) const {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "#!/bin/sh\necho ran >> '" << mark().string() << "'\n";
    fs::permissions(file, fs::perms(0755));
  }

  void add_attributes(const char* text) const {
    std::ofstream(root() / ".git/info/attributes") << text;
  }

  void make_partial_clone_of(const char* url) const {
    set("core.repositoryFormatVersion", "1");
    set("extensions.partialClone", "origin");
    set("remote.origin.promisor", "true");
    set("remote.origin.url", url);
  }

  // The tip of topic once more, with a signature that nobody made.
  void sign_topic() const {
    std::string text = repository.git({"cat-file", "commit", "topic"}) + "\n";
    text.insert(text.find("\n\n"),
                "\ngpgsig -----BEGIN PGP SIGNATURE-----\n \n x\n -----END PGP SIGNATURE-----");
    const fs::path file = repository.beside() / "commit";
    std::ofstream(file) << text;
    repository.git({"update-ref", "refs/heads/topic",
                    repository.git({"hash-object", "-t", "commit", "-w", file})});
  }

  // PROGRAM in the value stands for the program.
  void set(const char* name, std::string value) const {
    if (const auto at = value.find("PROGRAM"); at != std::string::npos) {
      value.replace(at, 7, program().string());
    }
    repository.git({"config", name, value});
  }

  // Whether `git ARGUMENTS` runs the program.
  bool fires(const std::vector<std::string>& arguments) const {
    fs::remove(mark());
    try {
      repository.git(arguments);
    } catch (const std::exception&) {  // the program may also make the command fail
    }
    return fs::remove(mark());
  }

  std::string seen() const { return seen_in(root()); }

  GitRepository repository;
};

constexpr const char* SEEN = "modified  > code.py +1 -1 2-2\n";

TEST(HostileRepository, RunsNoPrograms) {
  const std::string missing = "1234567890123456789012345678901234567890";
  const struct {
    const char* name;
    std::function<void(const HostileRepository&)> prepare;
    std::vector<std::string> plain;  // a command that runs the program
  } cases[] = {
      {"fsmonitor", [](auto& hostile) { hostile.set("core.fsmonitor", "PROGRAM"); }, {"status"}},
      {"fsmonitor of an included file",
       [](auto& hostile) {
         std::ofstream(hostile.repository.beside() / "included")
             << "[core]\n\tfsmonitor = " << hostile.program().string() << "\n";
         hostile.set("include.path", hostile.repository.beside() / "included");
       },
       {"status"}},
      {"fsmonitor of a submodule",
       [](auto& hostile) {
         hostile.repository.git({"clone", "-q", ".", "sub"});
         hostile.repository.git({"-C", "sub", "config", "core.fsmonitor", hostile.program()});
         hostile.repository.git({"add", "sub"});
       },
       {"status"}},
      {"external diff",
       [](auto& hostile) { hostile.set("diff.external", "PROGRAM"); },
       {"diff", "main", "topic"}},
      {"external diff of a driver",
       [](auto& hostile) {
         hostile.set("diff.evil.command", "PROGRAM");
         hostile.add_attributes("*.py diff=evil\n");
       },
       {"diff", "main", "topic"}},
      {"textconv",
       [](auto& hostile) {
         hostile.set("diff.evil.textconv", "PROGRAM");
         hostile.add_attributes("*.py diff=evil\n");
       },
       {"diff", "main", "topic"}},
      {"clean filter",
       [](auto& hostile) {
         hostile.set("filter.evil.clean", "PROGRAM");
         hostile.add_attributes("*.py filter=evil\n");
       },
       {"hash-object", "code.py"}},
      {"smudge filter",
       [](auto& hostile) {
         hostile.set("filter.evil.smudge", "PROGRAM");
         hostile.add_attributes("*.py filter=evil\n");
       },
       {"cat-file", "--filters", "topic:code.py"}},
      {"filter process",
       [](auto& hostile) {
         hostile.set("filter.evil.process", "PROGRAM");
         hostile.add_attributes("*.py filter=evil\n");
       },
       {"cat-file", "--filters", "topic:code.py"}},
      {"alias", [](auto& hostile) { hostile.set("alias.x", "!PROGRAM"); }, {"x"}},
      {"hook",
       [](auto& hostile) {
         hostile.make_program(hostile.root() / ".git/hooks/reference-transaction");
       },
       {"update-ref", "refs/heads/new", "HEAD"}},
      {"hook elsewhere",
       [](auto& hostile) {
         hostile.make_program(hostile.repository.beside() / "hooks/reference-transaction");
         hostile.set("core.hooksPath", hostile.repository.beside() / "hooks");
       },
       {"update-ref", "refs/heads/new", "HEAD"}},
      {"signature check",
       [](auto& hostile) {
         hostile.set("log.showSignature", "true");
         hostile.set("gpg.program", "PROGRAM");
         hostile.sign_topic();
       },
       {"log", "-1", "topic"}},
      {"refs of an alternate",
       [](auto& hostile) {
         hostile.set("core.alternateRefsCommand", "PROGRAM");
         const fs::path other = hostile.repository.beside() / "other";
         hostile.repository.git({"clone", "-q", ".", other});
         std::ofstream(hostile.root() / ".git/objects/info/alternates")
             << other.string() << "/.git/objects\n";
       },
       {"rev-list", "--alternate-refs"}},
      {"transport of missing objects",
       [](auto& hostile) {
         hostile.make_partial_clone_of("ext::PROGRAM");
         hostile.set("protocol.allow", "always");
       },
       {"cat-file", "-e", missing}},
      {"ssh for missing objects",
       [](auto& hostile) {
         hostile.make_partial_clone_of("ssh://localhost/x");
         hostile.set("core.sshCommand", "PROGRAM");
       },
       {"cat-file", "-e", missing}},
  };
  for (const auto& [name, prepare, plain_command] : cases) {
    SCOPED_TRACE(name);
    const HostileRepository hostile;
    prepare(hostile);
    EXPECT_TRUE(hostile.fires(plain_command));
    fs::remove(hostile.mark());
    EXPECT_EQ(hostile.seen(), SEEN);
    const git_utils::Git git(hostile.root());
    EXPECT_THROW(History(git).branch_changes(missing, {}, "head"), GitHistoryError);
    EXPECT_FALSE(fs::exists(hostile.mark()));
  }
}

void commit_with_module(const GitRepository& repository, const std::string& commit) {
  repository.git({"add", "-A"});
  repository.git({"update-index", "--add", "--cacheinfo", "160000," + commit + ",module"});
  repository.git({"commit", "-q", "-m", "change"});
}

// A branch on which every setting below shows in what plain git prints.
void fill_for_settings(GitRepository& repository) {
  const std::string first = repository.commit();
  repository.write("long.py", numbered(1, 60));
  repository.write("moved.py", numbered(100, 140));
  repository.write("moved too.py", numbered(200, 240));
  repository.write("copied.py", numbered(300, 340));
  repository.write("blocks.py", "f\nf\nend\n  x\n\nend\nf\nf\n");
  repository.write("order.py", "e\nc\nb\na\nc\n");
  repository.write("caf\xC3\xA9.py", "a\n\nb\n");
  commit_with_module(repository, first);
  repository.git({"switch", "-q", "-c", "topic"});
  repository.write("long.py",
                   numbered(1, 20) + "x \n" + numbered(21, 28) + "y\n" + numbered(29, 60));
  for (const char* name : {"moved.py", "moved too.py"}) repository.remove(name);
  repository.write("new.py", numbered(100, 141));
  repository.write("new too.py", numbered(200, 241));
  repository.write("copied.py", numbered(300, 341));
  repository.write("copy.py", numbered(300, 340));
  repository.write("blocks.py", "f\nf\nend\n  x\n\nend\nf\nf\n  x\nend\n  y\nf\n");
  repository.write("order.py", "c\nc\nb\nd\nd\n");
  repository.write("caf\xC3\xA9.py", "a\n\nc\n");
  commit_with_module(repository, repository.git({"rev-parse", "main"}));
}

TEST(HostileRepository, SettingsThatChangeTheOutputDoNotApply) {
  const std::pair<const char*, const char*> settings[] = {
      {"diff.context", "9"},
      {"diff.interHunkContext", "9"},
      {"diff.noPrefix", "true"},
      {"diff.renames", "copies"},
      {"diff.renames", "false"},
      {"diff.renameLimit", "1"},
      {"diff.algorithm", "patience"},
      {"diff.indentHeuristic", "false"},
      {"diff.submodule", "log"},
      {"diff.ignoreSubmodules", "all"},
      {"diff.suppressBlankEmpty", "true"},
      {"diff.orderFile", "ORDER"},
      {"color.ui", "always"},
      {"color.diff", "always"},
      {"core.quotePath", "false"},
      {"core.abbrev", "4"},
      {"core.bigFileThreshold", "1"},
      {"core.attributesFile", "ATTRIBUTES"},
  };
  GitRepository repository;
  fill_for_settings(repository);
  std::ofstream(repository.beside() / "ORDER") << "order.py\n";
  std::ofstream(repository.beside() / "ATTRIBUTES") << "*.py -diff\n";
  const std::string expected = seen_in(repository.root());
  const std::string printed = repository.git({"diff", "main", "topic"});
  for (const auto& [name, value] : settings) {
    SCOPED_TRACE(std::string(name) + " = " + value);
    const fs::path file = repository.beside() / value;
    repository.git({"config", name, fs::exists(file) ? file.string() : value});
    EXPECT_TRUE(repository.git({"diff", "main", "topic"}) != printed);
    EXPECT_EQ(seen_in(repository.root()), expected);
    repository.git({"config", "--unset", name});
  }
}

TEST(HostileRepository, AttributesDoNotHideLines) {
  for (const char* attributes : {"*.py -diff\n", "*.py binary\n", "* diff=evil\n"}) {
    for (const char* file : {".gitattributes", ".git/info/attributes"}) {
      SCOPED_TRACE(std::string(attributes) + file);
      HostileRepository hostile;
      hostile.set("diff.evil.binary", "true");
      hostile.repository.write(file, attributes);
      const std::string more =
          file[1] == 'g' && file[4] == 'a' ? "added  > .gitattributes +1 -0 1-1\n" : "";
      if (!more.empty()) hostile.repository.commit();
      const std::string plain = hostile.repository.git({"diff", "--numstat", "main", "topic"});
      EXPECT_NE(plain.find("-\t-\tcode.py"), std::string::npos);
      EXPECT_EQ(hostile.seen(), more + SEEN);
    }
  }
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

TEST(HostileRepository, WorkTreeElsewhereIsRefused) {
  HostileRepository hostile;
  const test::TemporaryFolder elsewhere;
  hostile.set("core.worktree", elsewhere.path().string());
  try {
    hostile.seen();
    FAIL() << "files of another folder would have been read";
  } catch (const GitHistoryError& error) {
    EXPECT_EQ(error.what(), "the work tree of " + hostile.root().string() + " is elsewhere, at " +
                                elsewhere.path().string() +
                                ": run it there, or git config --unset core.worktree");
  }
}

TEST(HostileRepository, NamesOfBranchesAndFilesAreNotOptions) {
  HostileRepository hostile;
  const GitRepository& repository = hostile.repository;
  const std::string commit = repository.git({"rev-parse", "topic"});
  repository.git({"diff", "main", "--output=stolen"});
  EXPECT_TRUE(fs::remove(hostile.root() / "stolen"));
  for (const char* name : {"--output=stolen", "-O", "--all", "-"}) {
    repository.git({"update-ref", std::string("refs/heads/") + name, commit});
    const git_utils::Git git(hostile.root());
    EXPECT_EQ(History(git).branch_changes("main", name, "target_branch").head_commit, commit);
    EXPECT_EQ(History(git).branch_changes(name, "main", "target_branch").base_commit, commit);
    EXPECT_EQ(git_utils::resolve_commit(git, name), commit);
  }
  EXPECT_FALSE(fs::exists(hostile.root() / "stolen"));
}

}  // namespace
}  // namespace context_delta::git_history
