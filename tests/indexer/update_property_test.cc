#include <algorithm>
#include <array>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "indexer/update.h"
#include "support/git_repository.h"
#include "support/index_dump.h"
#include "support/toy_language.h"

namespace context_delta {
namespace {

constexpr std::array<const char*, 14> PATHS = {
    "a.toy",         "b.toy",       "c.toy",   "lib/common.toy", "lib/c.toy",        "lib/d/e.toy",
    "lib/d/x y.toy", "lib/d/f.toy", "lib.toy", "lib-a/z.toy",    "other/common.toy", "other/o.toy",
    "other/p.toy",   "z/common.toy"};
constexpr std::array<const char*, 4> NAMES = {"f", "g", "h", "run"};

/// Random edits of a small repository with few names, so that they collide all the time.
class Editor {
 public:
  explicit Editor(std::uint32_t seed) : random_(seed) {
    for (const char* path : PATHS) repository.write(path, text());
    branches_ = {"main"};
    repository.commit();
  }

  /// Makes a random change and returns the commit that is checked out after it.
  std::string step() {
    switch (below(8)) {
      case 0:
        return switch_branch();
      case 1:
        for (int i = 0; i < 2; ++i) repository.remove(pick(PATHS));
        break;
      case 2:
        repository.write(pick(PATHS),
                         contents_.empty() ? text() : contents_[below(contents_.size())]);
        break;
      case 3:
        repository.write(pick(PATHS), below(2) == 0 ? "other\n" + text() : text() + '\0');
        break;
      case 4:
        repository.write(pick(PATHS), text());
        break;
      default:
        for (int i = 0; i < 3; ++i) edit_line(pick(PATHS));
    }
    return repository.commit();
  }

  test::GitRepository repository;

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }
  template <std::size_t N>
  std::string pick(const std::array<const char*, N>& choices) {
    return choices[below(N)];
  }

  std::string switch_branch() {
    if (branches_.size() < 3) {
      branches_.push_back("branch" + std::to_string(branches_.size()));
      repository.git({"checkout", "-q", "-b", branches_.back(), "HEAD"});
    } else {
      repository.git({"checkout", "-q", branches_[below(branches_.size())]});
    }
    return repository.git({"rev-parse", "HEAD"});
  }

  /// Replaces, inserts or removes one line, or changes the numbers of arguments.
  void edit_line(const std::string& path) {
    std::ifstream file(repository.root() / path);
    std::vector<std::string> lines;
    for (std::string each; std::getline(file, each);) lines.push_back(each);
    const std::size_t place = below(lines.size() + 1);
    const bool changes = below(2) == 0;
    if (changes) std::for_each(lines.begin(), lines.end(), change_count);
    const bool removes = !changes && place < lines.size() && below(2) == 0;
    const bool inserts = !changes && below(2) == 0;
    std::string text;
    for (std::size_t i = 0; i <= lines.size(); ++i) {
      if (i == place && inserts) text += line() + "\n";
      if (i < lines.size() && (i != place || !removes)) text += lines[i] + "\n";
    }
    repository.write(path, text);
  }

  static void change_count(std::string& line) {
    if (line.ends_with('0') || line.ends_with('1')) line.back() = line.back() == '0' ? '1' : '0';
  }

  std::string text() {
    std::string text;
    std::size_t indentation = 0;
    for (std::size_t lines = below(9); lines > 0; --lines) {
      indentation = below(indentation + 2);
      text.append(indentation, ' ');
      text += line() + "\n";
    }
    contents_.push_back(text);
    return text;
  }

  std::string line() {
    switch (below(10)) {
      case 0:
        return "class " + pick(NAMES);
      case 1:
      case 2:
      case 3:
        return "def " + pick(NAMES) + " " + std::to_string(below(2));
      case 4:
        return "include " + pick(PATHS);
      case 5:
        return (below(2) == 0 ? "beside " : "anywhere ") + pick(NAMES);
      case 6:
        return "beside " + pick(NAMES);
      case 7:
        return "type " + pick(NAMES);
      default:
        return "call " + pick(NAMES) + " " + std::to_string(below(2));
    }
  }

  std::mt19937 random_;
  std::vector<std::string> branches_;
  std::vector<std::string> contents_;
};

class UpdateProperty : public testing::TestWithParam<std::uint32_t> {};

TEST_P(UpdateProperty, EqualsColdBuild) {
  Editor editor(GetParam());
  const git_utils::Git git(editor.repository.root());
  const std::array<const indexer::Language*, 2> languages = {&test::other_toy_language(),
                                                             &test::toy_language()};
  indexer::UpdateOptions options;
  options.languages = languages;
  options.threads = 1 + GetParam() % 3;
  storage::Repository updated(editor.repository.beside() / "updated.sqlite");
  for (int step = 0; step < 20; ++step) {
    const std::string commit = editor.step();
    indexer::update(updated, git, commit, options);
    const auto path = editor.repository.beside() / ("cold" + std::to_string(step) + ".sqlite");
    storage::Repository cold(path);
    indexer::update(cold, git, commit, options);
    ASSERT_EQ(test::difference(test::index_dump(updated.db), test::index_dump(cold.db)), "")
        << "step " << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, UpdateProperty, testing::Range(0u, 5u));

}  // namespace
}  // namespace context_delta
