#include "cli/command_line.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cli/progress.h"
#include "utils/suggestion.h"

namespace context_delta::cli {
namespace {

using Words = std::vector<std::string>;

Settings settings_for(const Words& words) {
  Settings settings;
  apply(parse_command_line(words), settings);
  return settings;
}

std::string usage_error(const Words& words) {
  try {
    settings_for(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(CommandLine, IsDeltaByDefault) {
  const Settings settings = settings_for({});
  EXPECT_EQ(settings.command, Command::DELTA);
  EXPECT_EQ(settings.request.token_budget, 4000);
  EXPECT_EQ(settings.token_scale, 100);
  EXPECT_TRUE(settings.request.source_only);
  EXPECT_EQ(settings.output, "-");
  EXPECT_EQ(settings.request.base_parameter, "--base");
  EXPECT_EQ(settings.request.target_parameter, "--target");
}

TEST(CommandLine, ReadsOptionsAroundTheCommand) {
  const Settings settings = settings_for(Words{
      "-C", "index", "--base=a b", "-qv", "delta", "--budget", "9", "--target", "--odd", "-ofile",
      "--all-files", "--snippets", "--no-call-graph", "--wiki", "w", "-j4", "--format", "json"});
  EXPECT_EQ(settings.command, Command::DELTA);
  EXPECT_EQ(settings.directory, "index");
  EXPECT_EQ(settings.request.base_branch, "a b");
  EXPECT_EQ(settings.request.target_branch, "--odd");
  EXPECT_EQ(settings.request.token_budget, 9);
  EXPECT_EQ(settings.request.wiki, "w");
  EXPECT_EQ(settings.output, "file");
  EXPECT_EQ(settings.jobs, 4U);
  EXPECT_EQ(settings.format->name, "json");
  EXPECT_TRUE(settings.quiet && settings.verbose && settings.request.include_snippets);
  EXPECT_FALSE(settings.request.source_only || settings.request.include_call_graph);
}

TEST(CommandLine, LetsTheLastOfAnOptionCount) {
  const Settings settings =
      settings_for(Words{"--budget", "1", "--budget=2", "-v", "-v", "--base", "a", "--base", "b"});
  EXPECT_EQ(settings.request.token_budget, 2);
  EXPECT_EQ(settings.request.base_branch, "b");
  EXPECT_FALSE(settings_for(Words{"--snippets", "--no-snippets"}).request.include_snippets);
  EXPECT_TRUE(settings_for(Words{"--no-snippets", "--snippets"}).request.include_snippets);
  EXPECT_EQ(settings_for(Words{"--base", "--quiet"}).request.base_branch, "--quiet");
  EXPECT_EQ(settings_for(Words{"graph", "--index", "x"}).command, Command::GRAPH);
}

TEST(CommandLine, ReadsRangesAsGitWritesThem) {
  const struct {
    const char* range;
    std::optional<std::string> base, target;
  } cases[] = {{"main..feature", "main", "feature"},
               {"main...feature", "main", "feature"},
               {"HEAD~3", "HEAD~3", {}},
               {"HEAD~3..", "HEAD~3", {}},
               {"..feature", "HEAD", "feature"},
               {"feature", "feature", {}},
               {"v1...", "v1", {}},
               {"...x/y", "HEAD", "x/y"}};
  for (const auto& [range, base, target] : cases) {
    for (const Words& words : {Words{range}, Words{"-q", "delta", range}}) {
      const Settings settings = settings_for(words);
      EXPECT_EQ(settings.command, Command::DELTA) << range;
      EXPECT_EQ(settings.request.base_branch, base) << range;
      EXPECT_EQ(settings.request.target_branch, target) << range;
      EXPECT_EQ(settings.request.base_parameter, "revision");
    }
  }
}

TEST(CommandLine, SaysWhatIsWrong) {
  const std::vector<std::pair<Words, std::string>> cases = {
      {{"--bugdet", "5"}, "unknown option --bugdet; did you mean --budget?"},
      {{"--tagret=x"}, "unknown option --tagret; did you mean --target?"},
      {{"--xyzzy"}, "unknown option --xyzzy"},
      {{"-x"}, "unknown option -x"},
      {{"-qx"}, "unknown option -x"},
      {{"idnex"}, "unknown command 'idnex'; did you mean index?"},
      {{"one", "two"}, "unexpected argument 'two'"},
      {{"a..b", "--base", "c"},
       "'a..b' does not go with --base, --target and --pr: name both sides once"},
      {{"..."}, "'...' names no revision"},
      {{"--pr", "7", "--target", "a"},
       "--pr does not go with --target: each names what is reviewed"},
      {{"--staged", "--pr=7"}, "--staged reviews what is checked out and does not go with --pr"},
      {{"a..b", "--uncommitted"},
       "--uncommitted reviews what is checked out and does not go with a target"},
      {{"completion", "fihs"},
       "completion takes one of bash|zsh|fish, not 'fihs'; did you mean fish?"},
      {{"--no-snipets"}, "unknown option --no-snipets; did you mean --no-snippets?"},
      {{"--no-budget", "3"}, "unknown option --no-budget"},
      {{"--no-snippets=3"}, "--no-snippets takes no value"},
      {{"index", "--base", "x"}, "option --base does not belong to 'index'"},
      {{"index", "graph"}, "unexpected argument 'graph'"},
      {{"index", "--", "--base"}, "unexpected argument '--base'"},
      {{"--budget"}, "--budget needs a value: TOKENS"},
      {{"-C"}, "-C needs a value: DIR"},
      {{"--base="}, "--base needs a value: REF"},
      {{"--base", ""}, "--base needs a value: REF"},
      {{"--index", "", "--fail-if", "changed"}, "--index needs a value: FILE"},
      {{"--index=", "--fail-if", "changed"}, "--index needs a value: FILE"},
      {{"-o", "", "--quiet"}, "--output needs a value: FILE"},
      {{"-qo", ""}, "--output needs a value: FILE"},
      {{"serve", "--root", "", "-v"}, "--root needs a value: DIR"},
      {{"-C", "", "index"}, "-C needs a value: DIR"},
      {{"--fail-if", ""}, "--fail-if needs a value: changed|stale-wiki|truncated"},
      {{"--quiet=3"}, "--quiet takes no value"},
      {{"--budget", "-1"}, "--budget takes a number of tokens from 0 to 1000000000, not '-1'"},
      {{"--budget", "4k"}, "--budget takes a number of tokens from 0 to 1000000000, not '4k'"},
      {{"--budget", "99999999999999999999"},
       "--budget takes a number of tokens from 0 to 1000000000, not '99999999999999999999'"},
      {{"--token-scale", "0"}, "--token-scale takes a percentage from 1 to 10000, not '0'"},
      {{"--format", "xml"}, "--format takes one of text|json|markdown|html, not 'xml'"},
      {{"--color=red"}, "--color takes one of auto, always, never, not 'red'"},
  };
  for (const auto& [words, text] : cases) EXPECT_EQ(usage_error(words), text);
}

TEST(CommandLine, DescribesEveryOptionOnce) {
  for (const OptionRow& option : options()) {
    EXPECT_FALSE(option.help.empty() || option.help.ends_with('.')) << option.name;
    EXPECT_FALSE(option.commands.empty()) << option.name;
    for (const std::string_view name : {option.name, option.flag}) {
      EXPECT_TRUE(name.empty() || find_option(name) == &option) << name;
    }
  }
}

TEST(Suggestion, FindsTheNearestName) {
  const std::vector<std::string_view> names = {"--base", "--budget", "--target", "--wiki"};
  EXPECT_EQ(nearest("--bse", names), "--base");
  EXPECT_EQ(nearest("--wkii", names), "--wiki");
  EXPECT_EQ(nearest("--targets", names), "--target");
  EXPECT_EQ(nearest("--help", names), std::nullopt);
  EXPECT_EQ(nearest(std::string(100'000, '-'), names), std::nullopt);
}

Progress::Time at(int milliseconds) {
  return Progress::Time(std::chrono::milliseconds(milliseconds));
}

TEST(Progress, ShowsABarOnlyOfLongRunsOnATerminal) {
  Progress progress(true, at(0));
  EXPECT_EQ(progress.update("parsing", 1, 10, at(499)), "");
  EXPECT_EQ(progress.finish(), "");
  EXPECT_EQ(progress.update("parsing", 5, 10, at(500)),
            "\r\x1b[K[############            ] parsing 5 of 10");
  EXPECT_EQ(progress.update("parsing", 6, 10, at(599)), "");
  EXPECT_EQ(progress.update("writing", 0, 0, at(600)),
            "\r\x1b[K[                        ] writing");
  EXPECT_EQ(progress.finish(), "\r\x1b[K");
}

TEST(Progress, WritesFewLinesElsewhere) {
  Progress progress(false, at(0));
  EXPECT_EQ(progress.update("parsing", 1, 10, at(1999)), "");
  EXPECT_EQ(progress.update("parsing", 2, 10, at(2000)), "context-delta: parsing 2 of 10\n");
  EXPECT_EQ(progress.update("parsing", 3, 10, at(3999)), "");
  EXPECT_EQ(progress.update("parsing", 4, 10, at(4000)), "context-delta: parsing 4 of 10\n");
  EXPECT_EQ(progress.finish(), "");
}

}  // namespace
}  // namespace context_delta::cli
