#include "tool_handlers/context_docs.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/git_repository.h"
#include "utils/utf8.h"

namespace context_delta::context_docs {
namespace {

constexpr std::int64_t MOST = 1000;

class ReadRepoText : public testing::Test {
 protected:
  ReadRepoText() : root_(folder_.path() / "root") {
    std::filesystem::create_directories(root_ / "src/deep");
    write("root/src/a.py", "print()\n");
    write("secret", "secret");
    write("root-twin", "secret");
  }

  void write(const std::string& path, const std::string& bytes) const {
    std::ofstream(folder_.path() / path, std::ios::binary) << bytes;
  }
  void link(const std::string& target, const std::string& path) const {
    std::filesystem::create_symlink(target, root_ / path);
  }
  std::optional<std::string> read(std::string_view path, std::int64_t most = MOST) const {
    return read_repo_text(root_, path, most);
  }

  test::TemporaryFolder folder_;
  std::filesystem::path root_;
};

TEST_F(ReadRepoText, ReadsFilesBelowTheRoot) {
  EXPECT_EQ(read("src/a.py"), "print()\n");
  EXPECT_EQ(read("./src//deep/../a.py"), "print()\n");
  std::filesystem::create_directory_symlink(root_, folder_.path() / "also-root");
  EXPECT_EQ(read_repo_text(folder_.path() / "also-root", "src/a.py", MOST), "print()\n");
}

TEST_F(ReadRepoText, FollowsLinksThatStayInside) {
  link("a.py", "src/same_folder");
  link("../src/./a.py", "src/deep/up");
  link("src", "folder");
  link("folder/same_folder", "through_two");
  EXPECT_EQ(read("src/same_folder"), "print()\n");
  EXPECT_EQ(read("src/deep/up"), std::nullopt) << "src/deep/../src does not exist";
  EXPECT_EQ(read("folder/a.py"), "print()\n");
  EXPECT_EQ(read("through_two"), "print()\n");
}

TEST_F(ReadRepoText, NeverLeavesTheRoot) {
  link(folder_.path() / "secret", "absolute");
  link("../secret", "relative");
  link("../../secret", "src/relative");
  link("..", "parent");
  link("src/../../root/src/a.py", "out_and_back");
  link(root_ / "src/a.py", "absolute_inside");
  for (const char* path :
       {"../secret", "src/../../secret", "../root/src/a.py", "absolute", "relative", "src/relative",
        "parent/secret", "out_and_back", "absolute_inside", "../root-twin"}) {
    EXPECT_EQ(read(path), std::nullopt) << path;
  }
  EXPECT_EQ(read((folder_.path() / "secret").native()), std::nullopt);
  EXPECT_EQ(read((root_ / "src/a.py").native()), std::nullopt);
}

TEST_F(ReadRepoText, HasNoTextOfWhatIsNoRegularFile) {
  ASSERT_EQ(mkfifo((root_ / "pipe").c_str(), 0600), 0);
  link("pipe", "link_to_pipe");
  link("loop", "loop");
  link("nowhere", "dangling");
  for (const char* path : {"", ".", "/", "src", "src/", "pipe", "link_to_pipe", "loop", "dangling",
                           "missing", "missing/a.py", "src/a.py/b"}) {
    EXPECT_EQ(read(path), std::nullopt) << path;
  }
  EXPECT_EQ(read(std::string_view("src/a.py\0x", 10)), std::nullopt);
  EXPECT_EQ(read_repo_text(root_ / "missing", "a", MOST), std::nullopt);
}

TEST_F(ReadRepoText, HasNoTextOfUnreadableFiles) {
  if (geteuid() == 0) GTEST_SKIP() << "everything is readable for root";
  std::filesystem::permissions(root_ / "src/a.py", std::filesystem::perms::none);
  EXPECT_EQ(read("src/a.py"), std::nullopt);
}

TEST_F(ReadRepoText, CountsCharactersNotBytes) {
  write("root/wide", "\u65E5\u672C\U0001F600e");
  EXPECT_EQ(read("wide", 4), "\u65E5\u672C\U0001F600e");
  EXPECT_EQ(read("wide", 3), std::nullopt);
  write("root/empty", "");
  EXPECT_EQ(read("empty", 0), "");
  EXPECT_EQ(read("empty", -1), std::nullopt);
  EXPECT_EQ(read("wide", std::numeric_limits<std::int64_t>::max()).value().size(), 11U);
  write("root/stray", std::string(9, '\x80'));
  EXPECT_EQ(read("stray", 9).value().size(), 27U);
  EXPECT_EQ(read("stray", 8), std::nullopt);
  std::filesystem::resize_file(root_ / "empty", std::uintmax_t{1} << 40);
  EXPECT_EQ(read("empty"), std::nullopt);
}

TEST_F(ReadRepoText, KnowsBinaryFilesAndMendsTexts) {
  write("root/late_nul", std::string(100'000, 'a') + '\0');
  EXPECT_EQ(read("late_nul", 1'000'000), std::nullopt);
  write("root/latin", "caf\xE9\r\n");
  EXPECT_EQ(read("latin"), "caf\uFFFD\r\n");
}

TEST_F(ReadRepoText, FindsNamesThatAreNotUtf8) {
  write("root/\xFF\xE9.py", "x");
  EXPECT_EQ(read(utf8::path_text("\xFF\xE9.py")), "x");
}

}  // namespace
}  // namespace context_delta::context_docs
