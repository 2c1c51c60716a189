#include "utils/git_utils.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "plain_git.h"
#include "support/git_repository.h"
#include "utils/utf8.h"

namespace context_delta::git_utils {
namespace {

namespace fs = std::filesystem;
using test::GitRepository;

std::string opening_error(const fs::path& folder) {
  try {
    const Git git(folder);
  } catch (const GitHistoryError& error) {
    return error.what();
  }
  return "no error";
}

// The one file and its lines that the tip of every repository here changed.
std::string change_seen(const fs::path& root) {
  const auto lines = test::our_comparison(Git(root), "HEAD~1", "HEAD");
  return lines.size() == 1 ? lines.front() : "not one file";
}

constexpr const char* SEEN = "modified  > folder/file +1 -1 2-2";

void fill(GitRepository& repository) {
  repository.write("folder/file", "a\nb\nc\n");
  repository.commit();
  repository.write("folder/file", "a\nx\nc\n");
  repository.commit();
}

TEST(Git, FindsTheRepositoryFromASubfolderALinkAndALinkedWorkTree) {
  GitRepository repository;
  fill(repository);
  const auto link = repository.beside() / "link";
  fs::create_directory_symlink(repository.root() / "folder", link);
  EXPECT_EQ(Git(repository.root() / "folder").root(), repository.root());
  EXPECT_EQ(Git(link).root(), repository.root());
  EXPECT_EQ(Git(link).common_directory(), repository.root() / ".git");
  const auto tree = repository.beside() / "linked\ntree";
  repository.git({"worktree", "add", "-q", "-b", "other", tree.string()});
  EXPECT_EQ(Git(tree).root(), tree);
  EXPECT_EQ(Git(tree).common_directory(), repository.root() / ".git");
  EXPECT_EQ(change_seen(tree), SEEN);
}

TEST(Git, ReadsSharedShallowSha256AndWriteProtectedRepositories) {
  GitRepository repository;
  fill(repository);
  const auto clone = [&](std::vector<std::string> options, const char* name) {
    const auto folder = repository.beside() / name;
    options.insert(options.begin(), {"clone", "-q"});
    options.insert(options.end(), {"file://" + repository.root().string(), folder.string()});
    repository.git(options);
    return folder;
  };
  repository.git({"clone", "-q", "--shared", repository.root().string(),
                  (repository.beside() / "shared").string()});
  EXPECT_EQ(change_seen(repository.beside() / "shared"), SEEN);
  EXPECT_EQ(change_seen(clone({"--depth=2"}, "shallow")), SEEN);
  EXPECT_TRUE(Git(repository.beside() / "shallow").is_shallow());
  GitRepository other({"--object-format=sha256"});
  fill(other);
  EXPECT_EQ(change_seen(other.root()), SEEN);
  EXPECT_EQ(resolve_commit(Git(other.root()), "HEAD").size(), 64u);
  other.git({"gc", "-q"});
  for (const auto& file : fs::recursive_directory_iterator(other.root())) {
    fs::permissions(file, fs::perms(0222), fs::perm_options::remove);
  }
  EXPECT_EQ(change_seen(other.root()), SEEN);
  for (const auto& file : fs::recursive_directory_iterator(other.root())) {
    fs::permissions(file, fs::perms(0200), fs::perm_options::add);
  }
}

TEST(Git, WritesNothingIntoTheRepositoryAndLeavesNothingBehind) {
  GitRepository repository;
  fill(repository);
  const test::TemporaryFolder temporary;
  const auto state = [&] {
    std::vector<std::string> files;
    for (const auto& file : fs::recursive_directory_iterator(repository.root())) {
      const auto time = fs::last_write_time(file).time_since_epoch().count();
      files.push_back(file.path().string() + " " + std::to_string(time));
    }
    std::sort(files.begin(), files.end());
    return files;
  };
  const auto before = state();
  const char* inherited = std::getenv("TMPDIR");
  const std::string previous = inherited != nullptr ? inherited : "";
  setenv("TMPDIR", temporary.path().c_str(), 1);
  EXPECT_EQ(change_seen(repository.root()), SEEN);
  setenv("TMPDIR", previous.c_str(), 1);
  if (inherited == nullptr) unsetenv("TMPDIR");
  EXPECT_EQ(state(), before);
  EXPECT_TRUE(fs::is_empty(temporary.path()));
}

TEST(Git, SaysWhatIsWrongWithAFolder) {
  GitRepository repository;
  fill(repository);
  const std::string beside = repository.beside().string();
  EXPECT_EQ(opening_error(repository.beside() / "none"), "no such folder: " + beside + "/none");
  EXPECT_EQ(opening_error(repository.root() / "folder/file"),
            "no such folder: " + repository.root().string() + "/folder/file");
  EXPECT_EQ(opening_error(repository.beside()), "not a git repository: " + beside +
                                                    " (nor any folder above it): run git init, or "
                                                    "name a folder of one");
  repository.git({"clone", "-q", "--bare", ".", beside + "/bare one"});
  const Git bare(repository.beside() / "bare one" / "refs");
  EXPECT_EQ(bare.root(), beside + "/bare one");
  EXPECT_FALSE(bare.has_work_tree());
  const Git inside(repository.root() / ".git");
  EXPECT_EQ(inside.root(), repository.root() / ".git");
  EXPECT_FALSE(inside.has_work_tree());
  const std::string path = std::getenv("PATH");
  setenv("PATH", "/nonexistent", 1);
  EXPECT_EQ(opening_error(repository.root()), "git is not installed or not on PATH: install git");
  setenv("PATH", path.c_str(), 1);
}

TEST(Git, NamesTheCommandForARepositoryOfAnotherUser) {
  GitRepository repository;
  fill(repository);
  setenv("GIT_TEST_ASSUME_DIFFERENT_OWNER", "1", 1);  // dropped, as all such variables are
  EXPECT_EQ(change_seen(repository.root()), SEEN);
  unsetenv("GIT_TEST_ASSUME_DIFFERENT_OWNER");
  if (getuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_EQ(chown(repository.root().c_str(), 12345, 12345), 0);
  const std::string root = repository.root().string();
  EXPECT_EQ(opening_error(repository.root()),
            "git refuses " + root +
                " because it belongs to another user: if you trust it, run git config --global "
                "--add safe.directory " +
                root);
}

TEST(Git, FetchesNothingForAPartialClone) {
  GitRepository repository;
  fill(repository);
  repository.git({"config", "uploadpack.allowFilter", "true"});
  const auto clone = repository.beside() / "partial";
  repository.git({"clone", "-q", "--no-checkout", "--filter=blob:none",
                  "file://" + repository.root().string(), clone.string()});
  // Every git process that is started tells of itself there, children of children too.
  const auto trace = repository.beside() / "trace";
  std::ofstream(repository.beside() / ".gitconfig") << "[trace2]\neventTarget = " << trace.string();
  const std::string home = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
  setenv("HOME", repository.beside().c_str(), 1);
  const Git git(clone);
  const auto changes = git_history::History(git).branch_changes("HEAD~1", "HEAD", "target_branch");
  ASSERT_EQ(changes.files.size(), 1U);
  EXPECT_EQ(changes.without_texts, 1U);
  EXPECT_EQ(changes.files[0].path, "folder/file");
  EXPECT_EQ(changes.files[0].status, "modified");
  EXPECT_THROW(git_history::History(git).branch_changes("HEAD~1", std::string(40, '1'), "target"),
               GitHistoryError);
  setenv("HOME", home.c_str(), 1);
  std::ifstream stream(trace);
  const std::string told{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_NE(told.find("\"cat-file\""), std::string::npos);
  EXPECT_EQ(told.find("\"fetch\""), std::string::npos);
  repository.git({"-C", clone.string(), "fetch", "-q", "--refetch", "--no-filter"});
  EXPECT_EQ(change_seen(clone), SEEN);
}

TEST(ListTree, GivesRegularFilesByPath) {
  GitRepository repository;
  repository.write("b", "12345");
  repository.write("a-b", "");
  repository.write("a/z\n\xFF", "\0\n");
  fs::create_symlink("b", repository.root() / "link");
  const std::string commit = repository.commit();
  repository.git({"update-index", "--add", "--cacheinfo", "160000," + commit + ",module"});
  repository.git({"update-index", "--chmod=+x", "b"});
  repository.git({"commit", "-q", "-m", "more"});
  const Git git(repository.root() / "a");
  const auto files = list_tree(git, resolve_commit(git, "HEAD"));
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0].path, "a-b");
  EXPECT_EQ(files[1].path, utf8::path_text("a/z\n\xFF"));
  EXPECT_EQ(files[2].path, "b");
  EXPECT_EQ(files[2].bytes, 5);
  EXPECT_EQ(files[2].object, repository.git({"rev-parse", "HEAD:b"}));
  EXPECT_THROW(list_tree(git, "HEAD"), GitHistoryError);
  EXPECT_THROW(list_tree(git, std::string(40, '1')), GitHistoryError);
}

TEST(Blobs, AreReadOneByOneAndAllAtOnce) {
  GitRepository repository;
  std::vector<std::string> contents = {"", "a\n", "no line feed", std::string("\0\n\xFF", 3),
                                       std::string(3'000'000, 'x') + "\n"};
  for (int i = 0; i < 200; ++i)
    contents.push_back(std::string(static_cast<std::size_t>(i * 37), 'y'));
  for (std::size_t i = 0; i < contents.size(); ++i)
    repository.write(std::to_string(i), contents[i]);
  repository.commit();
  std::vector<std::string> objects;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    objects.push_back(repository.git({"rev-parse", "HEAD:" + std::to_string(i)}));
  }
  const std::string missing(40, '1');
  const Git git(repository.root());
  BlobReader reader(git);
  EXPECT_EQ(reader.read(missing, 100), std::nullopt);
  EXPECT_EQ(reader.read(objects[4], 3'000'000), std::nullopt);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    EXPECT_EQ(reader.read(objects[i], 3'000'001), contents[i]);
  }
  EXPECT_THROW(reader.read("HEAD", 100), GitHistoryError);

  objects.insert(objects.begin() + 1, missing);
  std::vector<std::optional<std::string>> got;
  const std::size_t before = git.processes_started();
  read_blobs(git, objects, 5000, [&](std::size_t i, std::optional<std::string_view> blob) {
    EXPECT_EQ(i, got.size());
    got.emplace_back(blob);
  });
  EXPECT_EQ(git.processes_started(), before + 1);
  ASSERT_EQ(got.size(), objects.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    const std::string& content = contents[i == 0 ? 0 : i - 1];
    const bool is_absent = i == 1 || content.size() > 5000;
    EXPECT_EQ(got[i], is_absent ? std::nullopt : std::optional(content));
  }
}

TEST(Advice, QuotesWhatAShellWouldTakeApart) {
  EXPECT_EQ(in_quotes("a\nb\x1b[31m"), "'a?b?[31m'");
  EXPECT_EQ(shown(std::string(300, 'a')).size(), 203u);
}

}  // namespace
}  // namespace context_delta::git_utils
