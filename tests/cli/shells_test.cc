#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "cli/options.h"
#include "cli/program.h"
#include "support/git_repository.h"

namespace context_delta::test {
namespace {

std::set<std::string> lines_of(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.insert(line.substr(0, line.find('\t')));
  return lines;
}

/// What a shell offers for the last of the words, in `folder`.
std::set<std::string> bash_offers(const std::string& words, const std::string& folder) {
  const Ending ending = run_shell("cd '" + folder +
                                  R"sh(' && exec bash --norc --noprofile -c '
        source <("$program" completion bash)
        compopt() { :; }
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _context_delta
        printf "%s\n" "${COMPREPLY[@]}"' bash context-delta )sh" +
                                  words);
  EXPECT_EQ(ending.errors, "");
  return lines_of(ending.out);
}

std::set<std::string> fish_offers(const std::string& words, const std::string& folder) {
  const Ending ending = run_shell(
      "cd '" + folder +
      R"sh(' && export HOME="$PWD/../home" && mkdir -p "$HOME" && exec fish --no-config -c '
        $program completion fish | source
        complete -C "context-delta )sh" +
      words + "\"'");
  EXPECT_EQ(ending.errors, "");
  return lines_of(ending.out);
}

/// A repository with a branch whose name a careless shell would run.
class Shells : public testing::Test {
 protected:
  Shells() {
    repository_.write("docs/a.md", "text\n");
    repository_.commit();
    repository_.git({"branch", "feature"});
    repository_.git({"branch", "f$(touch${IFS}ran)`touch${IFS}ran`"});
  }
  ~Shells() override {
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(repository_.root()) / "ran"));
  }

  GitRepository repository_;
};

TEST_F(Shells, BashCompletes) {
  const std::string here = repository_.root();
  using Offers = std::set<std::string>;
  EXPECT_EQ(bash_offers("in", here), Offers{"index"});
  EXPECT_EQ(bash_offers("--bu", here), Offers{"--budget"});
  EXPECT_EQ(bash_offers("index --bu", here), Offers{""});
  EXPECT_EQ(bash_offers("--format j", here), Offers{"json"});
  EXPECT_EQ(bash_offers("--format = j", here), Offers{"json"});
  EXPECT_EQ(bash_offers("completion f", here), Offers{"fish"});
  EXPECT_EQ(bash_offers("--base fe", here), Offers{"feature"});
  EXPECT_EQ(bash_offers("--wiki d", here), Offers{"docs"});
  EXPECT_EQ(bash_offers("--base f", here),
            (Offers{"feature", "f\\$\\(touch\\$\\{IFS\\}ran\\)\\`touch\\$\\{IFS\\}ran\\`"}));
}

TEST_F(Shells, FishCompletes) {
  const std::string here = repository_.root();
  EXPECT_TRUE(fish_offers("in", here).contains("index"));
  EXPECT_EQ(fish_offers("--bu", here), std::set<std::string>{"--budget"});
  EXPECT_EQ(fish_offers("index --bu", here), std::set<std::string>{});
  EXPECT_TRUE(fish_offers("--format j", here).contains("json"));
  EXPECT_EQ(fish_offers("completion f", here), std::set<std::string>{"fish"});
  EXPECT_EQ(fish_offers("--base fe", here), std::set<std::string>{"feature"});
  EXPECT_EQ(fish_offers("--base f", here).size(), 2U);
}

TEST_F(Shells, ZshTakesItsCompletion) {
  const Ending ending = run_shell(R"sh(exec zsh -f -c '
      autoload -U compinit && compinit -D -u
      source <($program completion zsh) && echo $_comps[context-delta]')sh");
  EXPECT_EQ(ending.out, "_context-delta\n");
  EXPECT_EQ(ending.errors, "");
}

TEST(Manual, IsAWellFormedPageThatNamesEveryOption) {
  const Ending lint =
      run_shell("\"$program\" manual | mandoc -T lint -W warning | grep -v 'missing date'");
  EXPECT_EQ(lint.out, "");
  const Ending page = run_shell("\"$program\" manual | mandoc -T ascii | col -b");
  for (const cli::OptionRow& option : cli::options()) {
    const std::string name = cli::shown_name(option);
    EXPECT_NE(page.out.find(name), std::string::npos) << name;
    EXPECT_NE(page.out.find(option.flag), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace context_delta::test
