#include "cli/presets.h"

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cli/command_line.h"
#include "cli/config_file.h"
#include "support/git_repository.h"

namespace context_delta::cli {
namespace {

namespace fs = std::filesystem;
using Variables = std::map<std::string, std::string>;

class Presets : public testing::Test {
 protected:
  Presets() {
    repository_.write("wiki/page.md", "text\n");
    fs::create_directory_symlink("/", fs::path(repository_.root()) / "out");
  }

  void project(const std::string& text) { repository_.write(std::string(PROJECT_FILE), text); }
  void user(const std::string& text) {
    variables_["CONTEXT_DELTA_CONFIG"] = repository_.beside() / "config.toml";
    repository_.write("../config.toml", text);
  }

  Settings settings(const std::vector<std::string>& words = {}) const {
    Settings settings;
    settings.directory = repository_.root();
    const CommandLine line = parse_command_line(words);
    apply(line, settings);
    apply_presets(settings, [this](const char* name) -> const char* {
      const auto found = variables_.find(name);
      return found == variables_.end() ? nullptr : found->second.c_str();
    });
    apply(line, settings);
    return settings;
  }
  std::string refusal() const {
    try {
      settings();
    } catch (const UsageError& error) {
      return error.what();
    }
    return "accepted";
  }

  test::GitRepository repository_;
  Variables variables_;
};

TEST_F(Presets, GiveWayToWhatIsNearer) {
  user("budget = 1\ntoken-scale = 110\nformat = \"json\"\nsnippets = true\nall-files = true\n");
  EXPECT_EQ(settings().request.token_budget, 1);
  project("budget = 2\nsnippets = false\n");
  EXPECT_EQ(settings().request.token_budget, 2);
  variables_["CONTEXT_DELTA_BUDGET"] = "3";
  variables_["CONTEXT_DELTA_ALL_FILES"] = "no";
  EXPECT_EQ(settings().request.token_budget, 3);
  const Settings nearest = settings({"--budget", "4", "--snippets"});
  EXPECT_EQ(nearest.request.token_budget, 4);
  EXPECT_EQ(nearest.token_scale, 110);
  EXPECT_EQ(nearest.format->name, "json");
  EXPECT_TRUE(nearest.request.include_snippets);
  EXPECT_TRUE(nearest.request.source_only);
}

TEST_F(Presets, OfAProjectStayInsideIt) {
  const std::vector<std::pair<std::string, std::string>> refused = {
      {"base = 'HEAD'", "base cannot be set by a project's file"},
      {"index = 'x'", "index cannot be set by a project's file"},
      {"format = 'json'", "format cannot be set by a project's file"},
      {"output = 'x'", "output is no setting"},
      {"no-config = true", "no-config is no setting"},
      {"bugdet = 1", "bugdet is no setting; did you mean budget?"},
      {"[budget]", ":1: not understood; write one key = value a line"},
      {"budget = [1]", "budget takes a text in quotation marks, a whole number, true or false"},
      {"budget = -1", "budget takes a number of tokens from 0 to 1000000000, not '-1'"},
      {"snippets = 'maybe'", "snippets takes true or false, not 'maybe'"},
      {"wiki = '/etc'", "wiki names '/etc', which is outside the work tree"},
      {"wiki = '..'", "wiki names '..', which is outside the work tree"},
      {"wiki = 'out/etc'", "wiki names 'out/etc', which is outside the work tree"},
      {"wiki = 'nowhere'", "wiki names 'nowhere', which is not there"},
      {"budget = ", ":1: budget takes a text"},
  };
  for (const auto& [text, warning] : refused) {
    project(text + "\n");
    const Settings found = settings();
    ASSERT_EQ(found.warnings.size(), 1U) << text;
    EXPECT_NE(found.warnings[0].find(warning), std::string::npos) << found.warnings[0];
    EXPECT_TRUE(found.warnings[0].ends_with("; passed over")) << found.warnings[0];
    EXPECT_EQ(found.request.token_budget, 4000);
    EXPECT_FALSE(found.request.wiki || found.request.base_branch || found.index);
  }
  project("wiki = 'wiki'\nbudget = 7\n");
  EXPECT_EQ(settings().request.wiki, fs::canonical(repository_.root()) / "wiki");
  EXPECT_EQ(settings().request.token_budget, 7);
}

TEST_F(Presets, OfAProjectCannotFloodOrBeALinkOutside) {
  std::string many;
  for (int i = 0; i < 100; ++i) many += "key" + std::to_string(i) + " = 1\n";
  project(many);
  EXPECT_EQ(settings().warnings.size(), 6U);
  fs::remove(fs::path(repository_.root()) / PROJECT_FILE);
  repository_.write("../elsewhere.toml", "budget = 9\n");
  fs::create_symlink("../elsewhere.toml", fs::path(repository_.root()) / PROJECT_FILE);
  EXPECT_EQ(settings().request.token_budget, 4000);
}

TEST_F(Presets, OfTheUserAreRefusedWhenWrong) {
  user("\nbudget = 'many'\n");
  const std::string file = repository_.beside() / "config.toml";
  EXPECT_EQ(refusal(),
            file + ":2: budget takes a number of tokens from 0 to 1000000000, not 'many'");
  user("index = 'x'\n");
  EXPECT_EQ(refusal(), file + ":1: index cannot be set by a file, only by CONTEXT_DELTA_INDEX");
  user("budget 5\n");
  EXPECT_TRUE(refusal().starts_with(file + ":1: ")) << refusal();
  variables_["CONTEXT_DELTA_CONFIG"] = repository_.beside() / "missing.toml";
  EXPECT_NE(refusal().find("cannot read the configuration file"), std::string::npos);
  variables_ = {{"CONTEXT_DELTA_SNIPPETS", "2"}};
  EXPECT_EQ(refusal(), "CONTEXT_DELTA_SNIPPETS takes true or false, not '2'");
}

TEST_F(Presets, ConcernOnlyTheCommandThatTakesThem) {
  user("budget = 5\njobs = 3\n");
  const Settings index = settings({"index"});
  EXPECT_EQ(index.jobs, 3U);
  EXPECT_EQ(index.request.token_budget, 4000);
}

TEST(ConfigFile, ReadsTextsNumbersAndSwitches) {
  const std::vector<std::pair<std::string, std::string>> values = {{R"("a\t\"b\\")", "a\t\"b\\"},
                                                                   {R"('a\t"b')", "a\\t\"b"},
                                                                   {"\"\"", ""},
                                                                   {"1_000", "1000"},
                                                                   {"+7", "7"},
                                                                   {"-7  # a comment", "-7"},
                                                                   {"true\r", "true"},
                                                                   {"'#'", "#"}};
  for (const auto& [written, value] : values) {
    const auto entries = read_config("# a comment\n\n \"the-key\"\t= " + written + "\n");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].problem, "") << written;
    EXPECT_EQ(entries[0].key, "the-key");
    EXPECT_EQ(entries[0].value, value);
    EXPECT_EQ(entries[0].line, 3U);
  }
  for (const std::string line :
       {"a", "a =", "= 1", "a = b", "a = 1 2", "a = 'b", "a = \"\\u00e9\"", "a = [1]", "[a]",
        "a.b = 1", "a = 1.5", "a = '''b'''", "a = _1", "a = \"b\x01\""}) {
    const auto entries = read_config(line);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_NE(entries[0].problem, "") << line;
  }
}

TEST(ConfigFile, ReadsOrRefusesAnyText) {
  std::mt19937 random(1);
  const std::string_view letters = "ab=.[]{}\"'\\#\n\r\t 01x_-,\xff\x80";
  for (int round = 0; round < 20'000; ++round) {
    std::string text;
    for (auto length = random() % 24; length > 0; --length) {
      text += letters[random() % letters.size()];
    }
    for (const ConfigEntry& entry : read_config(text)) {
      EXPECT_FALSE(entry.key.empty() && entry.problem.empty()) << text;
    }
  }
}

}  // namespace
}  // namespace context_delta::cli
