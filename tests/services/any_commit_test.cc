#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "indexer/update.h"
#include "services/delta.h"
#include "support/git_repository.h"

namespace context_delta {
namespace {

namespace fs = std::filesystem;
using services::DeltaAnswer;
using services::DeltaRequest;

indexer::UpdateReport update(storage::Repository& repository, const git_utils::Git& git,
                             const std::string& commit) {
  return indexer::update(repository, git, commit, {.threads = 1});
}

DeltaAnswer answer(const fs::path& folder, const fs::path& index, const std::string& base,
                   const std::optional<std::string>& target) {
  const git_utils::Git git(folder);
  DeltaRequest request;
  request.base_branch = base;
  request.target_branch = target;
  request.token_budget = 6000;
  request.include_snippets = true;
  request.source_only = false;
  return services::delta_answer(git, index, request, update);
}

constexpr std::array<const char*, 7> PATHS = {
    "a.py", "b.py", "lib/a.py", "lib/c.py", "lib/d/\xE9.py", "x\ny/two.py", "lib/link.py"};
constexpr std::array<const char*, 4> NAMES = {"f", "g", "h", "run"};

/// Random commits on random branches, merges among them: functions that call each other by a few
/// names, texts that are no source, symbolic links, renames, modes.
class Historian {
 public:
  explicit Historian(std::uint32_t seed) : random_(seed) {
    for (const char* path : PATHS) repository.write(path, text());
    commits = {repository.commit()};
    for (int i = 0; i < 11; ++i) step();
  }

  template <class List>
  const auto& pick(const List& list) {
    return list[random_() % std::size(list)];
  }

  test::GitRepository repository;
  std::vector<std::string> commits;

 private:
  std::string text() {
    std::string lines;
    for (int i = 0; i < 3; ++i) {
      lines += "def " + std::string(pick(NAMES)) + std::to_string(random_() % 3) + "(a):\n    " +
               pick(NAMES) + std::to_string(random_() % 3) + "(" + std::to_string(random_() % 9) +
               ")\n";
    }
    return lines;
  }

  void step() {
    const fs::path root = repository.root();
    const fs::path path = root / pick(PATHS);
    switch (random_() % 8) {
      case 0:
        repository.git({"checkout", "-q", "--detach", pick(commits)});
        break;
      case 1:
        repository.git({"merge", "-q", "-s", "ours", "--no-edit", pick(commits)});
        break;
      case 2:
        fs::remove(path);
        break;
      case 3:
        fs::remove(path);
        fs::create_directories(path.parent_path());
        fs::create_symlink("b.py", path);
        break;
      case 4:
        if (!fs::is_symlink(path) && fs::exists(path)) fs::rename(path, root / "moved.py");
        break;
      default:
        break;
    }
    for (int i = 0; i < 2; ++i) {
      const char* edited = pick(PATHS);
      fs::remove(root / edited);
      repository.write(edited, random_() % 6 == 0 ? text() + '\0' : text());
    }
    commits.push_back(repository.commit());
  }

  std::mt19937 random_;
};

class AnyCommit : public testing::TestWithParam<std::uint32_t> {};

TEST_P(AnyCommit, IsAnsweredAsIfItWereCheckedOut) {
  Historian historian(GetParam());
  const test::GitRepository& repository = historian.repository;
  const fs::path beside = repository.beside();
  repository.git({"branch", "-q", "all"});
  for (const std::string& commit : historian.commits) {
    repository.git({"update-ref", "refs/pull/" + commit + "/head", commit});
  }
  repository.git({"clone", "-q", "--no-checkout", repository.root(), beside / "out"});
  repository.git({"-C", beside / "out", "fetch", "-q", "origin", "refs/*:refs/kept/*"});
  repository.git({"clone", "-q", "--mirror", repository.root(), beside / "bare"});
  repository.git({"worktree", "add", "-q", "--detach", beside / "linked"});
  repository.write("lib/c.py", "not = what [ is committed\n");
  for (int i = 0; i < 6; ++i) {
    const std::string& base = historian.pick(historian.commits);
    const std::string& target = historian.pick(historian.commits);
    repository.git({"-C", beside / "out", "checkout", "-q", "-f", "--detach", target});
    const std::string expected =
        json::json_text(answer(beside / "out", beside / "out.index", base, target).pack);
    EXPECT_EQ(expected.find("\"warning\""), std::string::npos);
    for (const fs::path& folder : {repository.root(), beside / "bare", beside / "linked"}) {
      const fs::path index = beside / (folder.filename().string() + ".index");
      EXPECT_EQ(json::json_text(answer(folder, index, base, target).pack), expected) << folder;
    }
    const DeltaAnswer by_reference =
        answer(beside / "bare", beside / "bare.index", base, "refs/pull/" + target + "/head");
    EXPECT_EQ(by_reference.head_commit, target);
  }
}

INSTANTIATE_TEST_SUITE_P(Histories, AnyCommit, testing::Range(1U, 6U));

TEST(Wiki, IsJudgedAtTheReviewedCommit) {
  test::GitRepository repository;
  const fs::path wiki = repository.beside() / "wiki";
  fs::create_directories(wiki);
  std::string text = "def f():\n";
  for (int i = 0; i < 9; ++i) text += "    print(" + std::to_string(i) + ")\n";
  repository.write("old.py", text);
  const std::string first = repository.commit();
  std::ofstream(wiki / "page.md") << "---\nsources: [old.py]\ncommit: " << first << "\n---\n# P\n";
  repository.git({"switch", "-q", "-c", "work"});
  repository.git({"mv", "old.py", "new.py"});
  repository.write("new.py", text + "    print(9)\n");
  repository.commit();
  repository.git({"switch", "-q", "main"});
  services::DeltaRequest request;
  request.target_branch = "work";
  request.wiki = wiki;
  const DeltaAnswer answer = services::delta_answer(git_utils::Git(repository.root()),
                                                    repository.beside() / "index", request, update);
  const auto& pages = *answer.pack.at("wiki_pages").as<json::List>();
  ASSERT_EQ(pages.size(), 1U);
  const auto& page = *pages[0].as<json::Mapping>();
  EXPECT_TRUE(*page.at("stale").as<bool>());
  EXPECT_EQ(*page.at("reason").as<std::string>(),
            "written at " + first.substr(0, 7) + ", old.py deleted since");
}

/// The pack under other names of the branches.
std::string unnamed(json::Mapping pack) {
  pack.set("base_branch", "base");
  pack.set("target_branch", "target");
  return json::json_text(pack);
}

TEST(OneAnswer, HangsOnOneCommitWhateverHappensMeanwhile) {
  test::GitRepository repository;
  constexpr int FUNCTIONS = 20;
  const auto write = [&](int version) {
    for (int file = 0; file < 4; ++file) {
      std::string text;
      for (int i = 0; i < FUNCTIONS; ++i) {
        const int next = (i + version) % FUNCTIONS;
        text += "def f" + std::to_string(file) + "_" + std::to_string(i) + "(a):\n";
        text += std::string(static_cast<std::size_t>(version % 5), '\n') + "    f";
        text += std::to_string((file + 1) % 4) + "_" + std::to_string(next) + "(a)\n";
      }
      repository.write("m" + std::to_string(file) + ".py", text);
    }
  };
  write(0);
  repository.commit();
  repository.git({"switch", "-q", "-c", "work"});
  for (const int version : {1, 2, 3}) {
    write(version);
    repository.commit();
  }
  const fs::path index = repository.beside() / "index";

  std::atomic<bool> ended = false;
  std::array<std::vector<DeltaAnswer>, 3> answers;
  std::vector<std::thread> readers;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    readers.emplace_back([&, i] {
      const std::optional<std::string> target = i == 0   ? std::optional<std::string>()
                                                : i == 1 ? "work"
                                                         : "HEAD~1";
      while (!ended) {
        answers[i].push_back(answer(repository.root(), index, "main~0", target));
      }
    });
  }
  for (int version = 4; version < 16; ++version) {
    write(version);
    repository.commit();
    if (version % 3 == 0) repository.git({"switch", "-q", "-C", "work", "HEAD~1"});
    if (version % 4 == 0) repository.git({"checkout", "-q", "--detach"});
    if (version % 5 == 0) repository.git({"reset", "-q", "--hard", "HEAD~1"});
  }
  ended = true;
  for (std::thread& reader : readers) reader.join();

  std::set<std::string> heads;
  for (const auto& taken : answers) {
    ASSERT_FALSE(taken.empty());
    for (const DeltaAnswer& one : taken) {
      ASSERT_EQ(one.pack.find("error"), nullptr) << json::json_text(one.pack);
      heads.insert(one.head_commit);
      const DeltaAnswer fresh = answer(repository.root(), repository.beside() / "fresh",
                                       one.base_commit, one.head_commit);
      ASSERT_EQ(unnamed(one.pack), unnamed(fresh.pack));
    }
  }
  EXPECT_GT(heads.size(), 3U);
}

}  // namespace
}  // namespace context_delta
