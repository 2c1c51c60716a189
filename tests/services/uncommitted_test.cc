#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "indexer/update.h"
#include "services/delta.h"
#include "support/git_repository.h"
#include "utils/git_work_tree.h"

namespace context_delta {
namespace {

namespace fs = std::filesystem;
using git_utils::Git;
using git_utils::WorkTree;

std::string tree_of(const Git& git, const std::string& commit) {
  const Git::Command command{{"rev-parse", commit + "^{tree}"}, git_utils::View::OBJECTS, {}, {}};
  return git.run(std::span(&command, 1)).front().out;
}

/// Every file of a folder with its bytes and its time.
std::map<std::string, std::pair<std::string, fs::file_time_type>> files_of(const fs::path& folder) {
  std::map<std::string, std::pair<std::string, fs::file_time_type>> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!fs::is_regular_file(entry.symlink_status())) continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    files[entry.path()] = {{std::istreambuf_iterator<char>(stream), {}}, entry.last_write_time()};
  }
  return files;
}

constexpr std::array<const char*, 8> PATHS = {"a.py",  "b.txt",     "lib/c.py", "lib/d/e.py",
                                              "lib/d", "\xE9 x.py", "out/new",  "n\nl"};

class Uncommitted : public testing::TestWithParam<std::uint32_t> {
 protected:
  Uncommitted() : random_(GetParam()) {
    write("a.py", text());
    write("b.txt", text());
    write("lib/c.py", text());
    write("lib/d/e.py", text());
    write(".gitignore", "*.o\nout/\n");
    write(".gitattributes", "*.txt text\nlib/* text=auto\n*.py filter=spy diff=spy\n");
    head_ = repository_.commit();
    const std::string spy = "touch " + (repository_.beside() / "spied").string() + "; cat";
    const std::string hook = repository_.beside() / "hook";
    std::ofstream(hook) << "#!/bin/sh\n" << spy << "\n";
    chmod(hook.c_str(), 0755);
    for (const auto& [name, value] :
         std::map<std::string, std::string>{{"filter.spy.clean", spy},
                                            {"diff.spy.textconv", hook},
                                            {"core.fsmonitor", hook},
                                            {"core.hooksPath", repository_.beside()}}) {
      repository_.git({"config", name, value});
    }
  }

  std::size_t below(std::size_t bound) { return random_() % bound; }

  std::string text() {
    std::string text;
    const char* end = below(3) == 0 ? "\r\n" : "\n";
    for (int i = 0; i < 4; ++i) text += "line " + std::to_string(below(5)) + end;
    return text;
  }

  void write(const std::string& path, const std::string& bytes) const {
    const fs::path file = repository_.root() / path;
    if (!fs::is_directory(fs::symlink_status(file.parent_path()))) fs::remove(file.parent_path());
    fs::remove_all(file);
    repository_.write(path, bytes);
  }

  void edit() {
    const std::string path = PATHS[below(PATHS.size())];
    const fs::path file = repository_.root() / path;
    switch (below(6)) {
      case 0:
        fs::remove_all(file);
        break;
      case 1:
        write(path, text());
        chmod(file.c_str(), 0755);
        break;
      case 2:
        write(path, "");
        fs::remove(file);
        fs::create_symlink("a.py", file);
        break;
      default:
        write(path, text() + (below(8) == 0 ? '\0' : ' '));
    }
  }

  /// The tree that git itself would commit, filters aside, in a copy of the repository.
  std::string committed_tree(bool all) const {
    const fs::path copy = repository_.beside() / "copy";
    fs::remove_all(copy);
    fs::copy(repository_.root(), copy,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    const auto git = [&](std::vector<std::string> arguments) {
      arguments.insert(arguments.begin(),
                       {"-C", copy, "-c", "core.fsmonitor=false", "-c", "filter.spy.clean=", "-c",
                        "core.safecrlf=false", "-c", "core.hooksPath=/dev/null"});
      return repository_.git(arguments);
    };
    if (all) git({"add", "-A"});
    return git({"write-tree"}) + "\n";
  }

  std::mt19937 random_;
  test::GitRepository repository_;
  std::string head_;
};

TEST_P(Uncommitted, IsTheTreeThatACommitWouldHoldAndNothingIsWrittenOrRun) {
  const Git git(repository_.root());
  if (GetParam() % 2 == 0) repository_.git({"config", "core.autocrlf", "input"});
  for (int round = 0; round < 4; ++round) {
    for (int i = 0; i < 3; ++i) edit();
    if (round % 2 == 0) {
      repository_.git({"-c", "core.fsmonitor=false", "-c", "filter.spy.clean=", "add", "-A"});
    }
    edit();
    fs::remove(repository_.beside() / "spied");
    const auto before = files_of(repository_.root());
    for (const bool all : {true, false}) {
      WorkTree work_tree(git);
      const std::string commit = work_tree.commit(head_, all);
      EXPECT_EQ(tree_of(work_tree.git(), commit), committed_tree(all)) << all;
      WorkTree again(git);
      EXPECT_EQ(again.commit(head_, all), commit);
    }
    for (const auto& [path, content] : files_of(repository_.root())) {
      const auto known = before.find(path);
      EXPECT_TRUE(known != before.end() && known->second == content) << path;
    }
    EXPECT_FALSE(fs::exists(repository_.beside() / "spied"));
  }
}

INSTANTIATE_TEST_SUITE_P(Worlds, Uncommitted, testing::Range(1U, 7U));

indexer::UpdateReport update(storage::Repository& repository, const Git& git,
                             const std::string& commit) {
  return indexer::update(repository, git, commit, {.threads = 1});
}

services::DeltaAnswer review(const test::GitRepository& repository,
                             services::Uncommitted uncommitted) {
  services::DeltaRequest request;
  request.base_branch = "HEAD";
  request.include_snippets = true;
  request.uncommitted = uncommitted;
  return services::delta_answer(Git(repository.root()), repository.beside() / "index", request,
                                update);
}

std::string paths_of(const json::Mapping& pack) {
  std::string paths;
  for (const json::Value& row : *pack.at("affected_files").as<json::List>()) {
    paths += *row.as<json::Mapping>()->at("path").as<std::string>() + " ";
  }
  return paths;
}

TEST(UncommittedReview, HasItsSymbolsCallersAndTexts) {
  test::GitRepository repository;
  repository.write("store.py", "def save(item):\n    return item\n");
  repository.write("app.py", "from store import save\n\n\ndef run():\n    save(1)\n");
  repository.commit();
  EXPECT_EQ(*review(repository, services::Uncommitted::ALL).pack.at("message").as<std::string>(),
            "No changes detected between branches ('main' has no commit that 'HEAD' lacks)");
  repository.write("store.py", "def save(item):\n    return [item]\n");
  repository.git({"add", "-A"});
  repository.write("fresh.py", "from store import save\n\n\ndef fresh():\n    save(2)\n");
  const auto staged = review(repository, services::Uncommitted::STAGED);
  EXPECT_EQ(*staged.pack.at("target_branch").as<std::string>(), "main with staged changes");
  EXPECT_EQ(*staged.pack.at("commit_count").as<std::int64_t>(), 0);
  EXPECT_EQ(paths_of(staged.pack), "store.py ");
  const std::string all = json::json_text(review(repository, services::Uncommitted::ALL).pack);
  for (const char* part :
       {R"("content": "    return [item]")", R"("fqn": "fresh.fresh", "name": "fresh", "kind")",
        R"("fqn": "app.run")", R"("calls": "store.save")", R"("path": "fresh.py")"}) {
    EXPECT_NE(all.find(part), std::string::npos) << part << "\n" << all;
  }
}

TEST(UncommittedReview, IsOfferedWhereSomethingIsNotCommitted) {
  test::GitRepository repository;
  repository.write("a.py", "a = 1\n");
  repository.write("b.py", "b = 1\n");
  repository.write(".gitignore", "*.o\n");
  repository.commit();
  const auto remarks = [&](const char* target) {
    services::DeltaRequest request;
    if (target != nullptr) request.target_branch = target;
    request.tell_uncommitted = true;
    std::string all;
    for (const std::string& remark :
         services::delta_answer(Git(repository.root()), repository.beside() / "index", request,
                                update)
             .remarks) {
      all += remark + "\n";
    }
    return all;
  };
  EXPECT_EQ(remarks(nullptr), "");
  repository.write("new.o", "ignored\n");
  repository.write("a.py", "a = 2\n");
  EXPECT_EQ(remarks(nullptr),
            "1 file with uncommitted changes is not in this; --uncommitted reviews it\n");
  repository.git({"add", "-A"});
  repository.write("folder/new.py", "new = 2\n");
  repository.remove("b.py");
  EXPECT_EQ(remarks(nullptr),
            "3 files with uncommitted changes are not in this; --uncommitted reviews them\n");
  EXPECT_EQ(remarks("main"), "");
}

TEST(UncommittedReview, SaysWhatCannotBeReviewed) {
  test::GitRepository repository;
  repository.write("a.py", "a = 1\n");
  repository.commit();
  repository.git({"branch", "other"});
  repository.write("a.py", "a = 2\n");
  repository.commit();
  repository.git({"switch", "-q", "other"});
  repository.write("a.py", "a = 3\n");
  repository.commit();
  try {
    repository.git({"merge", "-q", "main"});
  } catch (const std::runtime_error&) {
  }
  const auto error = [](const services::DeltaAnswer& answer) {
    return *answer.pack.at("error").as<std::string>();
  };
  EXPECT_NE(error(review(repository, services::Uncommitted::STAGED)).find("are in conflict"),
            std::string::npos);
  EXPECT_EQ(paths_of(review(repository, services::Uncommitted::ALL).pack), "a.py ");
  repository.git({"config", "core.bare", "true"});
  EXPECT_NE(error(review(repository, services::Uncommitted::ALL)).find("there is no work tree"),
            std::string::npos);
}

}  // namespace
}  // namespace context_delta
