#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/git_repository.h"
#include "utils/git_utils.h"

namespace context_delta::git_utils {
namespace {

namespace fs = std::filesystem;

// The folder for temporary files, to itself.
class ScratchFolders : public testing::Test {
 protected:
  ScratchFolders() {
    if (const char* folder = std::getenv("TMPDIR")) inherited_ = folder;
    repository_.write("file", "a\n");
    commit_ = repository_.commit();
    setenv("TMPDIR", folder_.path().c_str(), 1);
  }
  ~ScratchFolders() override {
    if (inherited_) {
      setenv("TMPDIR", inherited_->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }

  void use() const { list_tree(Git(repository_.root()), commit_); }

  std::set<std::string> names() const {
    std::set<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      result.insert(entry.path().filename());
    }
    return result;
  }

  fs::path make(const std::string& name) const {
    fs::create_directories(folder_.path() / name / "refs");
    std::ofstream(folder_.path() / name / "HEAD") << "ref: refs/heads/none\n";
    return folder_.path() / name;
  }

  static void make_old(const fs::path& path) {
    const timespec times[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }

  std::optional<std::string> inherited_;
  test::GitRepository repository_;
  std::string commit_;
  test::TemporaryFolder folder_;
};

TEST_F(ScratchFolders, OfAKilledProcessIsRemovedByALaterOne) {
  const pid_t child = fork();
  if (child == 0) {
    [&]() noexcept {
      const Git git(repository_.root());
      list_tree(git, commit_);
      raise(SIGKILL);
    }();
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_EQ(names().size(), 1u);
  use();
  EXPECT_EQ(names().size(), 1u) << "it could be one that is just being made";
  make_old(folder_.path() / *names().begin());
  use();
  EXPECT_EQ(names(), std::set<std::string>());
}

TEST_F(ScratchFolders, OfOthersAreLeftAlone) {
  const fs::path precious = repository_.beside() / "precious";
  fs::create_directories(precious / "refs");
  std::ofstream(precious / "HEAD") << "x\n";
  make_old(precious);
  fs::create_directory_symlink(precious, folder_.path() / "context-delta-link01");
  std::ofstream(make("context-delta-more01") / "note") << "not ours\n";
  make("context-delta-young1");
  make("context-delta-longer-name");
  const fs::path used = make("context-delta-inuse1");
  const int lock = open(used.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  const fs::path unused = make("context-delta-unused");
  for (const char* name : {"index", "objects/ab/0123", "info/exclude", "sharedindex.ab"}) {
    fs::create_directories((unused / name).parent_path());
    std::ofstream(unused / name) << "old\n";
  }
  for (const std::string& name : names()) {
    if (name != "context-delta-young1") make_old(folder_.path() / name);
  }
  auto expected = names();
  expected.erase("context-delta-unused");
  use();
  EXPECT_EQ(names(), expected);
  EXPECT_TRUE(fs::exists(precious / "HEAD"));
  EXPECT_TRUE(fs::exists(folder_.path() / "context-delta-more01/HEAD"));
  close(lock);
}

TEST_F(ScratchFolders, InUseStaysHoweverOldItIs) {
  const Git git(repository_.root());
  list_tree(git, commit_);
  ASSERT_EQ(names().size(), 1u);
  make_old(folder_.path() / *names().begin());
  use();
  EXPECT_EQ(names().size(), 1u);
  EXPECT_EQ(list_tree(git, commit_).size(), 1u);
}

}  // namespace
}  // namespace context_delta::git_utils
