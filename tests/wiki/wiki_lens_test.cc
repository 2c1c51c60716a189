#include "wiki/wiki_lens.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/git_repository.h"

namespace context_delta::wiki {
namespace {

NextPath one_by_one(std::vector<std::string> paths) {
  return [paths = std::move(paths), next = std::size_t{0}]() mutable -> std::optional<std::string> {
    if (next == paths.size()) return std::nullopt;
    return paths[next++];
  };
}

class Wiki : public testing::Test {
 protected:
  Wiki() : folder_(repository_.beside() / "wiki") {
    std::filesystem::create_directory(folder_);
    repository_.write("src/a.py", "a = 1\n");
    repository_.write("src/sub/b.py", "b = 1\n");
    repository_.write("lib/c.py", "c = 1\n");
    first_ = repository_.commit();
    repository_.write("src/a.py", "a = 2\n");
    second_ = repository_.commit();
  }

  void page(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  /// A page with this front matter and a heading.
  void page_about(const std::string& name, const std::string& front_matter) const {
    page(name, "---\n" + front_matter + "---\n# About " + name + "\n");
  }

  json::List citing(std::vector<std::string> paths) const {
    return WikiLens(folder_, git_utils::Git(repository_.root()))
        .pages_citing(one_by_one(std::move(paths)));
  }

  /// "page stale|current reason" of every page that cites a path.
  std::vector<std::string> verdicts(std::vector<std::string> paths) const {
    std::vector<std::string> lines;
    for (const json::Value& value : citing(std::move(paths))) {
      const json::Mapping& entry = *value.as<json::Mapping>();
      lines.push_back(*entry.at("page").as<std::string>() +
                      (*entry.at("stale").as<bool>() ? " stale " : " current ") +
                      *entry.at("reason").as<std::string>());
    }
    return lines;
  }

  std::vector<std::string> pages_citing(std::vector<std::string> paths) const {
    std::vector<std::string> pages;
    for (const json::Value& value : citing(std::move(paths))) {
      pages.push_back(*value.as<json::Mapping>()->at("page").as<std::string>());
    }
    return pages;
  }

  test::GitRepository repository_;
  std::filesystem::path folder_;
  std::string first_, second_;
};

using Lines = std::vector<std::string>;

TEST_F(Wiki, DescribesThePagesThatCiteChangedFiles) {
  page("guide/a.md",
       "---\ntitle: \"All of A\"\nsources: [lib/c.py, ./src/a.py, src/a.py]\ncommit: " + first_ +
           "\n---\n# Other\n");
  page_about("z.md", "sources:\n  - src/sub/\ncommit: " + second_ + "\n");
  page_about("unrelated.md", "sources: lib/c.py\n");
  const json::List entries = citing({"src/sub/b.py", "src/a.py", "docs/x.md"});
  EXPECT_EQ(json::json_text(json::Value(entries)),
            "[{\"page\": \"guide/a.md\", \"title\": \"All of A\", \"sources\": [\"src/a.py\"], "
            "\"stale\": true, \"reason\": \"written at " +
                first_.substr(0, 7) +
                ", src/a.py changed since\"}, "
                "{\"page\": \"z.md\", \"title\": \"About z.md\", \"sources\": [\"src/sub\"], "
                "\"stale\": false, \"reason\": \"written at " +
                second_.substr(0, 7) + ", no source changed since\"}]");
}

TEST_F(Wiki, TellsStalePagesFromCurrentOnes) {
  repository_.remove("lib/c.py");
  repository_.write("src/sub/new.py", "n\n");
  repository_.commit();
  const std::string one = first_.substr(0, 7);
  page_about("any_source.md", "sources: [src/sub/b.py, src/a.py]\ncommit: " + first_ + "\n");
  page_about("deleted.md", "sources: lib/c.py\ncommit: " + first_ + "\n");
  page_about("folder.md", "sources: [src/sub]\ncommit: '" + second_ + "'\n");
  page_about("glob.md", "sources: ['src/**/*.py']\ncommit: " + first_ + "\n");
  page_about("no_commit.md", "sources: lib/c.py\n");
  page_about("not_an_id.md", "sources: lib/c.py\ncommit: HEAD~1\n");
  page_about("short.md", "sources: src/sub/b.py\ncommit: " + second_.substr(0, 8) + "\n");
  page_about("tree.md",
             "sources: lib/c.py\ncommit: " + repository_.git({"rev-parse", "HEAD^{tree}"}) + "\n");
  page_about("unknown.md", "sources: lib/c.py\ncommit: 0123456789\n");
  const std::string tree = repository_.git({"rev-parse", "HEAD^{tree}"}).substr(0, 12);
  EXPECT_EQ(
      verdicts({"src/sub/b.py", "lib/c.py", "src/a.py"}),
      (Lines{"any_source.md stale written at " + one + ", src/a.py changed since",
             "deleted.md stale written at " + one + ", lib/c.py deleted since",
             "folder.md stale written at " + second_.substr(0, 7) + ", src/sub changed since",
             "glob.md stale written at " + one + ", src/a.py changed since",
             "no_commit.md stale names no commit", "not_an_id.md stale unknown commit HEAD~1",
             "short.md current written at " + second_.substr(0, 7) + ", no source changed since",
             "tree.md stale unknown commit " + tree,
             "unknown.md stale unknown commit 0123456789"}));
}

TEST_F(Wiki, AsksGitOnceHoweverManyPages) {
  for (int i = 0; i < 50; ++i) {
    page_about(std::to_string(i) + ".md",
               "sources: src/a.py\ncommit: " + (i % 2 == 0 ? first_ : second_) + "\n");
  }
  const git_utils::Git git(repository_.root());
  const WikiLens lens(folder_, git);
  const auto started = git.processes_started();
  EXPECT_EQ(lens.pages_citing(one_by_one({"src/a.py"})).size(), 50U);
  EXPECT_EQ(git.processes_started(), started + 1);
  EXPECT_TRUE(lens.pages_citing(one_by_one({"src/other.py"})).empty());
  EXPECT_EQ(git.processes_started(), started + 1);
}

TEST_F(Wiki, TakesTitlesFromFrontMatterHeadingOrName) {
  page("1.md", "---\ntitle: T\nsources: src\n---\n# H\n");
  page("2.md", "---\r\nsources: src\r\n---\r\n```\n# code\n```\n##  H two ##\n");
  page("3.md", "---\nsources: src\n---\n#hash\n");
  page("4.md", "\xEF\xBB\xBF---\nsources: src\ntitle: " + std::string(300, 'x') + "\n...\n");
  Lines titles;
  for (const json::Value& entry : citing({"src/a.py"})) {
    titles.push_back(*entry.as<json::Mapping>()->at("title").as<std::string>());
  }
  EXPECT_EQ(titles, (Lines{"T", "H two", "3.md", std::string(200, 'x') + "\u2026"}));
}

TEST_F(Wiki, PassesOverPagesItCannotTrust) {
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "[";
  std::string many = "sources:\n";
  for (int i = 0; i <= 1000; ++i) many += "- s" + std::to_string(i) + "\n";
  page("alias.md", "---\na: &x [src]\nsources: *x\n---\n");
  page("anchor.md", "---\nsources: &x src\n---\n");
  page("bad_yaml.md", "---\nsources: [src\n---\n");
  page("deep.md", "---\nsources: src\nx: " + deep + "\n---\n");
  page("late.md", "\n---\nsources: src\n---\n");
  page("list.md", "---\n- sources\n- src\n---\n");
  page("long.md", "---\nsources: src\nx: " + std::string(70'000, 'x') + "\n---\n");
  page("many.md", "---\n" + many + "---\n");
  page("open.md", "---\nsources: src\n");
  page("outside.md", "---\nsources: [../src, 'a\\nb', /../x]\n---\n");
  page("scalar.md", "---\nsources\n---\n");
  page("two_keys.md", "---\n? {a: b}\n: src\nsources: src\n---\n");
  page(".hidden/page.md", "---\nsources: src\n---\n");
  page("text.txt", "---\nsources: src\n---\n");
  page("real.md", "---\nextra: {sources: [lib]}\nsources: [src, {a: lib}]\n---\n");
  std::filesystem::create_symlink(folder_ / "real.md", folder_ / "link.md");
  std::filesystem::create_directory_symlink(folder_, folder_ / "loop");
  EXPECT_EQ(pages_citing({"src/a.py", "lib/c.py"}), (Lines{"real.md"}));
}

TEST_F(Wiki, MatchesFoldersAndGlobs) {
  page_about("deep.md", "sources: src/**\n");
  page_about("exact.md", "sources: src/a.py\n");
  page_about("folder.md", "sources: src\n");
  page_about("flat.md", "sources: src/*.py\n");
  page_about("one.md", "sources: /src/?.py\n");
  page_about("suffix.md", "sources: '**/b.py'\n");
  EXPECT_EQ(pages_citing({"src/a.py"}),
            (Lines{"deep.md", "exact.md", "flat.md", "folder.md", "one.md"}));
  EXPECT_EQ(pages_citing({"src/sub/b.py"}), (Lines{"deep.md", "folder.md", "suffix.md"}));
  EXPECT_EQ(pages_citing({"b.py"}), (Lines{"suffix.md"}));
  EXPECT_EQ(pages_citing({"srcs/a.py", "a.py", "src"}), (Lines{"folder.md"}));
}

TEST_F(Wiki, SaysWhichFolderItCannotRead) {
  try {
    read_pages(folder_ / "missing");
    FAIL();
  } catch (const WikiError& error) {
    EXPECT_EQ(error.what(), "cannot read the wiki folder " + (folder_ / "missing").string() +
                                ": No such file or directory");
  }
  page("file.md", "");
  EXPECT_THROW(read_pages(folder_ / "file.md"), WikiError);
}

}  // namespace
}  // namespace context_delta::wiki
