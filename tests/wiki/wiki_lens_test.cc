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
                ", src/a.py changed since\", \"stale_source\": \"src/a.py\", "
                "\"changed_in\": \"" +
                second_.substr(0, 12) +
                "\"}, "
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
             "glob.md stale written at " + one + ", src/**/*.py changed since",
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

TEST_F(Wiki, TakesPagesInTheRepositoryAsOldAsTheirLastChange) {
  repository_.write("docs/old.md", "[a](../src/a.py)\n");
  repository_.write("docs/new.md", "[a](../src/a.py)\n");
  repository_.write("docs/dated.md", "---\ncommit: " + first_ + "\n---\n[a](/src/a.py)\n");
  const std::string third = repository_.commit();
  repository_.write("src/a.py", "a = 3\n");
  const std::string fourth = repository_.commit();
  repository_.write("docs/new.md", "[a](../src/a.py), again\n");
  const std::string fifth = repository_.commit();
  repository_.write("docs/untracked.md", "[a](../src/a.py)\n");
  const git_utils::Git git(repository_.root());
  const auto started = git.processes_started();
  Lines lines;
  for (const json::Value& entry :
       WikiLens(repository_.root() / "docs", git).pages_citing(one_by_one({"src/a.py"}))) {
    lines.push_back(json::json_text(entry));
  }
  EXPECT_EQ(git.processes_started(), started + 1);
  const auto line = [](const std::string& name, bool stale, const std::string& reason) {
    return "{\"page\": \"" + name + ".md\", \"title\": \"" + name +
           ".md\", \"sources\": [\"src/a.py\"], \"stale\": " + (stale ? "true" : "false") +
           ", \"reason\": \"" + reason;
  };
  const std::string since =
      "\", \"stale_source\": \"src/a.py\", \"changed_in\": \"" + fourth.substr(0, 12) + "\"}";
  const auto written = [](const std::string& commit) {
    return "written at " + commit.substr(0, 7) + ", ";
  };
  EXPECT_EQ(lines, (Lines{line("dated", true, written(first_) + "src/a.py changed since" + since),
                          line("new", false, written(fifth) + "no source changed since\"}"),
                          line("old", true, written(third) + "src/a.py changed since" + since),
                          line("untracked", true, "names no commit and was never committed\"}")}));
}

TEST_F(Wiki, TakesSourcesFromLinks) {
  repository_.git({"remote", "add", "origin", "git@host.example:team/project.git"});
  const std::string host = "https://host.example/team/project/";
  const std::vector<std::pair<std::string, Lines>> cases = {
      {"[a](../../src/a.py) and [b](../../src/sub/b.py#L3-L9 \"title\")",
       {"src/a.py", "src/sub/b.py"}},
      {"[a][1] [same](/src/./x/../a.py)\n\n[1]: </src/a.py>", {"src/a.py"}},
      {"[spaces](../../my%20file.py) [and](/a&amp;b.py?raw=1)", {"my file.py", "a&b.py"}},
      {"[folder](../../src/) | [beside](notes.txt)", {"src", "docs/guide/notes.txt"}},
      {"[blob](" + host + "blob/main/src/a.py#L1) <" + host + "-/blob/1a2b/lib/c.py>",
       {"src/a.py", "lib/c.py"}},
      {"[tree](" + host + "tree/main/src)", {"src"}},
      {"[other](https://host.example/team/other/blob/main/src/a.py)", {}},
      {"[shorter](https://host.example/team/proj/blob/main/src/a.py)", {}},
      {"[out](../../../src/a.py) [page](../other.md) [top](#x) [up](../..) []()", {}},
      {"[mail](mailto:src/a.py) [site](//src/a.py) [glob](/src/*.py) [nul](/a%00b)", {}},
      {"`[code](/src/a.py)`\n\n    [indented](/src/a.py)\n\n```\n[fenced](/src/a.py)\n```\n"
       "<!-- [comment](/src/a.py) -->\n\n![image](/src/a.py) \\[escaped](/src/a.py)",
       {}},
      {"---\nsources: lib/c.py\n---\n[a](/src/a.py) [c](/lib/c.py)", {"lib/c.py", "src/a.py"}},
  };
  for (const auto& [text, sources] : cases) {
    repository_.write("docs/guide/page.md", text);
    const RepositorySite site{repository_.root(),
                              "[remote \"origin\"]\n\turl = git@host.example:team/project.git\n"};
    const std::vector<Page> pages = read_pages(repository_.root() / "docs", site);
    EXPECT_EQ(pages.empty() ? Lines{} : pages[0].sources, sources) << text;
  }
  // Outside the repository a path that does not begin at the top has no place to begin.
  page("outside.md",
       "[a](src/a.py) [b](../src/sub/b.py) [c](/lib/c.py) [d](" + host + "blob/main/src/a.py)");
  EXPECT_EQ(pages_citing({"lib/c.py"}), Lines{"outside.md"});
  EXPECT_EQ(pages_citing({"src/a.py"}), Lines{"outside.md"});
  EXPECT_EQ(pages_citing({"src/sub/b.py"}), Lines{});
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
  page("list_key.md", "---\nsources: src\n[a, b]: src\n---\n");
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
