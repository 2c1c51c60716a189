#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "plain_git.h"
#include "support/git_repository.h"
#include "utils/subprocess.h"

namespace context_delta::git_history {
namespace {

namespace fs = std::filesystem;
using test::GitRepository;

// A variable of this process, for as long as the object lives.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    setenv(name, value.c_str(), 1);
  }
  ~Variable() {
    if (before_) {
      setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  std::string name_;
  std::optional<std::string> before_;
};

std::string message_of(const std::function<void()>& action) {
  try {
    action();
  } catch (const GitHistoryError& error) {
    return error.what();
  }
  return "no error";
}

class HostileProcess : public testing::Test {
 protected:
  HostileProcess() {
    repository_.write("code.py", "a\nb\nc\n");
    repository_.write("folder/other.py", "a\n");
    first_ = repository_.commit();
    repository_.git({"switch", "-q", "-c", "topic"});
    repository_.write("code.py", "a\nx\nc\n");
    repository_.commit();
  }

  fs::path beside(const char* name) const { return repository_.beside() / name; }

  // Status and output of a shell command in the repository, without any variable but one.
  std::string plain(const std::string& variable, const std::string& command) const {
    const std::string whole = "cd '" + repository_.root().string() + "' && env -i PATH=\"$PATH\" " +
                              variable + " " + command + " 2>&1";
    FILE* pipe = popen(whole.c_str(), "r");
    std::string output;
    for (int c = 0; (c = fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    return std::to_string(WEXITSTATUS(pclose(pipe))) + "\n" + output;
  }

  // A program called "git" that runs `script` first and then the real one.
  fs::path folder_of_git(const std::string& script) const {
    const fs::path folder = beside("bin");
    fs::create_directories(folder);
    std::ofstream(folder / "git") << "#!/bin/sh\n"
                                  << script << "\nexec '"
                                  << subprocess::find_program("git")->string() << "' \"$@\"\n";
    fs::permissions(folder / "git", fs::perms(0755));
    return folder;
  }
  Variable path_to_git(const std::string& script) const {
    return {"PATH", folder_of_git(script).string() + ":" + std::getenv("PATH")};
  }

  void compare(const git_utils::Limits& limits = {}, const std::string& head = "topic") const {
    const std::vector<std::string> seen = {"modified  > code.py +1 -1 2-2"};
    const git_utils::Git git(repository_.root() / "folder", limits);
    EXPECT_EQ(test::our_comparison(git, "main", head), seen);
  }

  GitRepository repository_;
  std::string first_;
};

TEST_F(HostileProcess, InheritedVariablesDoNotReachGit) {
  GitRepository other;
  other.commit();
  const std::string git_directory = (other.root() / ".git").string();
  std::ofstream(beside("settings")) << "[diff]\n\tnoPrefix = true\n";
  std::ofstream(beside("shallow")) << repository_.git({"rev-parse", "topic"}) << "\n";
  fs::create_directories(beside("home/git"));
  fs::copy_file(beside("settings"), beside("home/.gitconfig"));
  std::ofstream(beside("home/git/attributes")) << "*.py -diff\n";
  std::ofstream(beside("program")) << "#!/bin/sh\ntouch '" << beside("mark").string() << "'\n";
  fs::permissions(beside("program"), fs::perms(0755));
  const std::string diff = "git diff main topic";
  const struct {
    const char* name;
    std::string value, command;
  } cases[] = {
      {"GIT_DIR", git_directory, diff},
      {"GIT_COMMON_DIR", git_directory, diff},
      {"GIT_OBJECT_DIRECTORY", git_directory + "/objects", diff},
      {"GIT_WORK_TREE", other.root(), "git rev-parse --show-toplevel"},
      {"GIT_CEILING_DIRECTORIES", repository_.root(), "git -C folder rev-parse HEAD"},
      {"GIT_TEST_ASSUME_DIFFERENT_OWNER", "1", "git rev-parse HEAD"},
      {"GIT_SHALLOW_FILE", beside("shallow"), "git rev-list topic"},
      {"GIT_GRAFT_FILE", beside("shallow"), "git rev-list topic"},
      {"GIT_EXTERNAL_DIFF", beside("program"), diff},
      {"GIT_DIFF_OPTS", "-u0", diff},
      {"GIT_CONFIG_PARAMETERS", "'diff.noPrefix=true'", diff},
      {"GIT_CONFIG_GLOBAL", beside("settings"), diff},
      {"GIT_CONFIG_SYSTEM", beside("settings"), diff},
      {"HOME", beside("home"), diff},
      {"XDG_CONFIG_HOME", beside("home"), diff},
      {"GIT_TRACE", beside("trace"), "git rev-parse HEAD; cat ../trace"},
      {"GIT_TRACE2_EVENT", beside("trace"), "git rev-parse HEAD; cat ../trace"},
  };
  for (const auto& [name, value, command] : cases) {
    SCOPED_TRACE(name);
    const std::string without = plain("", command);
    std::string setting = name;
    setting += "=\"" + value + "\"";
    EXPECT_NE(plain(setting, command), without);
    fs::remove(beside("mark"));
    fs::remove(beside("trace"));
    const Variable variable(name, value);
    compare();
    EXPECT_FALSE(fs::exists(beside("mark")));
    EXPECT_FALSE(fs::exists(beside("trace")));
  }
}

TEST_F(HostileProcess, APipeAmongTheRefsIsGivenUp) {
  ASSERT_EQ(mkfifo((repository_.root() / ".git/refs/heads/hang").c_str(), 0600), 0);
  EXPECT_EQ(plain("", "timeout 1 git rev-parse --verify refs/heads/hang"), "124\n");
  compare();
  git_utils::Limits limits;
  limits.time = std::chrono::milliseconds(500);
  EXPECT_EQ(message_of([&] { compare(limits, "hang"); }),
            "git: stopped at its time limit of 1 s (in " + repository_.root().string() + ")");
}

TEST_F(HostileProcess, EndlessOutputIsGivenUp) {
  git_utils::Limits limits;
  limits.output_bytes = 1'000'000;
  limits.time = std::chrono::seconds(20);
  const std::string root = repository_.root().string();
  const struct {
    const char *script, *message;
  } cases[] = {
      {"case \"$*\" in *cat-file*) exec cat /dev/zero;; esac",
       "git prints more than 1000000 bytes in ROOT"},
      {"case \"$*\" in *' diff '*) exec cat /dev/zero;; esac",
       "git printed a diff that cannot be read: too long a line: ????"},
      {"case \"$*\" in *' diff '*) printf :; exec tr '\\0' a < /dev/zero;; esac",
       "git printed a diff that cannot be read: too long a name: :aaaa"},
      {"case \"$*\" in *' diff '*) printf '\\0'; exec tr '\\0' a < /dev/zero;; esac",
       "git printed a diff that cannot be read: too long a line: aaaa"},
  };
  for (const auto& [script, message] : cases) {
    SCOPED_TRACE(script);
    const Variable path = path_to_git(script);
    std::string text = message_of([&] { compare(limits); });
    if (const auto at = text.find(root); at != std::string::npos) {
      text.replace(at, root.size(), "ROOT");
    }
    EXPECT_TRUE(text.starts_with(message)) << text;
    EXPECT_LT(text.size(), 400u);
  }
}

// Each tree holds ten times the one below it: ten million files in a few hundred bytes.
TEST_F(HostileProcess, ATreeThatHoldsItselfIsGivenUp) {
  std::string entry = "100644 blob " + repository_.git({"rev-parse", "main:code.py"});
  const fs::path list = beside("list");
  for (int level = 0; level < 7; ++level) {
    std::ofstream stream(list);
    for (int i = 0; i < 10; ++i) stream << entry << "\t" << i << "\n";
    stream.close();
    const std::string made = plain("", "git mktree < '" + list.string() + "'");
    entry = "040000 tree " + made.substr(2, 40);
  }
  repository_.git({"update-ref", "refs/heads/bomb",
                   repository_.git({"commit-tree", "-p", first_, "-m", "x", entry.substr(12)})});
  git_utils::Limits limits;
  limits.memory_bytes = 64 << 20;
  limits.tree_files = 1000;
  const std::string error = message_of([&] { compare(limits, "bomb"); });
  EXPECT_TRUE(error.starts_with("comparing 'main' and 'bomb' failed in ")) << error;
  EXPECT_NE(error.find("emory"), std::string::npos) << error;
  const git_utils::Git git(repository_.root(), limits);
  const std::string commit = git_utils::resolve_commit(git, "bomb");
  EXPECT_EQ(
      message_of([&] { git_utils::list_tree(git, commit); }),
      "commit " + commit + " of " + repository_.root().string() + " has more than 1000 files");
  compare(limits);
}

// Each of the two commands waits for the other to have begun.
TEST_F(HostileProcess, IndependentCommandsRunSideBySide) {
  const std::string folder = beside("begun").string();
  const std::string meet =
      "meet() { mkdir -p '" + folder + "/'$1; i=0; while [ ! -e '" + folder +
      "/'$2 ]; do i=$((i + 1)); [ $i -gt 600 ] && exit 9; sleep 0.05; done; }\n"
      "case \"$*\" in *' diff '*) meet diff list;; *' rev-list '*) meet list diff;;\n"
      "  *'symbolic-ref -q HEAD') meet symbol names;; *batch-check*) meet names symbol;; esac";
  const Variable path = path_to_git(meet);
  const git_utils::Git git(repository_.root());
  EXPECT_EQ(History(git).branch_changes("main", {}, "target_branch").files.size(), 1u);
}

}  // namespace
}  // namespace context_delta::git_history
