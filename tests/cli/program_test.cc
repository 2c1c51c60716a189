#include "cli/program.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "storage/repository.h"
#include "support/git_repository.h"
#include "utils/utf8.h"

namespace context_delta::test {
namespace {

/// A repository whose branch "work" changes one function that another file calls.
class Program : public testing::Test {
 protected:
  Program() {
    repository_.write("store.py", "def save(item):\n    return item\n");
    repository_.write("app.py", "from store import save\n\n\ndef run():\n    save(1)\n");
    repository_.write("notes.md", "old\n");
    repository_.commit();
    repository_.git({"checkout", "-q", "-b", "work"});
    repository_.write("store.py", "def save(item):\n    return [item]\n");
    repository_.write("notes.md", "new\n");
    repository_.commit();
  }

  std::vector<std::string> in_repository(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"-C", repository_.root()});
    return arguments;
  }
  Ending run_here(std::vector<std::string> arguments,
                  const std::vector<std::string>& environment = {}) const {
    return run(in_repository(std::move(arguments)), environment);
  }
  std::string beside(const std::string& name) const { return repository_.beside() / name; }

  GitRepository repository_;
};

std::string content(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t entries_in(const std::filesystem::path& folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST_F(Program, ShowsAPersonWhatTheBranchChanged) {
  const Ending ending = run_here({});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.errors, "");
  EXPECT_TRUE(
      ending.out.starts_with("work since it left main \u00b7 1 commit\n"
                             "1 file changed +1 \u22121 \u00b7 1 changed symbol"))
      << ending.out;
  EXPECT_NE(ending.out.find("1 more file is no production source"), std::string::npos);
  EXPECT_EQ(ending.out.find('\x1b'), std::string::npos);
  EXPECT_NE(run_here({"--all-files"}).out.find("2 files changed"), std::string::npos);
}

TEST_F(Program, WritesThePackAsOneLineOfJson) {
  const Ending ending = run_here({"--format", "json", "--base", "main", "--target", "work"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.errors, "");
  EXPECT_TRUE(ending.out.starts_with(
      R"({"base_branch":"main","target_branch":"work","commit_count":1,)"
      R"("total_changed_files":1,"excluded_files":1,"affected_files":[{"path":"store.py",)"))
      << ending.out;
  EXPECT_EQ(ending.out.find('\n'), ending.out.size() - 1);
  EXPECT_EQ(run_here({"--format", "json", "--base", "main", "--target", "work"}).out, ending.out);
}

TEST_F(Program, ReviewsAnyCommitFromAnyPlace) {
  repository_.git({"switch", "-q", "main"});
  repository_.git({"clone", "-q", "--mirror", repository_.root(), beside("bare")});
  const Ending here = run_here({"main..work"});
  EXPECT_TRUE(here.out.starts_with("work since it left main \u00b7 1 commit\n")) << here.out;
  EXPECT_EQ(run({"-C", beside("bare"), "main...work"}).out, here.out);
  const std::string work = repository_.git({"rev-parse", "work"}).substr(0, 12);
  EXPECT_TRUE(run_here({"index", "--at", "work"}).out.starts_with("indexed " + work + ": "));
  EXPECT_NE(run_here({"graph", "--at", "work"}).out, "");
  EXPECT_EQ(run_here({"index", "--at", "wrok"}).status, 3);
}

TEST_F(Program, SaysInAClauseWhatIsNotCommitted) {
  repository_.write("store.py", "def save(item):\n    return [item, item]\n");
  const std::string clause = "1 file with uncommitted changes is not in this; ";
  for (const char* format : {"text", "markdown", "html"}) {
    const Ending report = run_here({"--format", format}, {"COLUMNS=120"});
    EXPECT_NE(report.out.find(clause), std::string::npos) << report.out;
    EXPECT_EQ(report.errors, "");
  }
  EXPECT_EQ(run_here({"--format", "json"}).errors,
            "context-delta: " + clause + "--uncommitted reviews it\n");
  EXPECT_EQ(run_here({"--format", "json", "-q"}).errors, "");
  const Ending all = run_here({"--uncommitted", "--snippets", "--format", "json"});
  EXPECT_NE(all.out.find("\"content\":\"    return [item, item]\""), std::string::npos) << all.out;
  EXPECT_EQ(all.errors, "");
}

TEST_F(Program, ShowsTheTextOfALinkAndNotOfWhatItLeadsTo) {
  std::filesystem::create_symlink("store.py", repository_.root() / "link.py");
  repository_.commit();
  const Ending ending = run_here({"--snippets", "--format", "json", "HEAD~1"});
  EXPECT_NE(ending.out.find(R"({"file":"link.py","line":1,"end_line":1,"content":"store.py"})"),
            std::string::npos)
      << ending.out;
}

// U+10FFNN stands for the byte NN.
TEST_F(Program, TellsFilesApartWhoseNamesAreNotUtf8) {
  for (const char* name : {"caf\xE8.py", "caf\xE9.py"}) {
    const std::string path = name;
    repository_.write(path, "def f():\n    return '" + utf8::path_text(path.substr(3, 1)) + "'\n");
  }
  repository_.commit();
  const Ending ending = run_here({"--format=json", "--snippets", "--base=HEAD~1"});
  EXPECT_TRUE(utf8::is_valid(ending.out));
  for (const char* byte : {"\U0010FFE8", "\U0010FFE9"}) {
    const std::string path = std::string("caf") + byte + ".py";
    for (const std::string& part :
         {R"({"path":")" + path + R"(","status":"added","additions":2)",
          R"("name":"f","kind":"function","file":")" + path + "\"",
          R"({"file":")" + path + R"(","line":1,"end_line":2,"content":"def f():\n    )" +
              "return '" + byte + "'\""}) {
      EXPECT_NE(ending.out.find(part), std::string::npos) << part << "\n" << ending.out;
    }
  }
}

TEST_F(Program, ExplainsWhichFilesAreSource) {
  EXPECT_EQ(run_here({"--explain-files"}).out,
            "document   notes.md  (text: *.{md,markdown,rst,adoc,asciidoc,tex,txt})\n"
            "kept       store.py\n");
  EXPECT_EQ(run_here({"--explain-files", "--format=json"}).out,
            R"({"path": "notes.md", "kept": false, "class": "document", "rule": "text", )"
            R"("pattern": "*.{md,markdown,rst,adoc,asciidoc,tex,txt}"})"
            "\n"
            R"({"path": "store.py", "kept": true})"
            "\n");
  EXPECT_EQ(run_here({"--explain-files", "--base", "nowhere"}).status, 3);
}

TEST_F(Program, DividesTheBudgetByTheScale) {
  const Ending scaled = run_here({"--format=json", "--budget=120", "--token-scale=600"});
  EXPECT_EQ(scaled.out, run_here({"--format=json", "--budget=20"}).out);
  EXPECT_NE(scaled.out, run_here({"--format=json", "--budget=120"}).out);
  EXPECT_NE(run_here({"--budget", "0"}).out.find("--budget "), std::string::npos);
}

TEST_F(Program, ShowsStaleWikiPages) {
  std::filesystem::create_directory(beside("wiki"));
  std::ofstream(beside("wiki/store.md"))
      << "---\nsources: store.py\ncommit: " << repository_.git({"rev-parse", "main"}) << "\n---\n";
  const Ending ending = run_here({"--wiki", beside("wiki")});
  EXPECT_NE(ending.out.find("stale   store.md\n"), std::string::npos) << ending.out;
  const Ending missing = run_here({"--wiki", beside("none")});
  EXPECT_EQ(missing.status, 4);
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.errors, "context-delta: cannot read the wiki folder " + beside("none") +
                                ": No such file or directory\n");
}

TEST_F(Program, TellsByItsExitCodeWhatItWasAskedToFailOn) {
  const auto ends = [&](std::vector<std::string> arguments, int status, const std::string& errors) {
    const Ending ending = run_here(arguments);
    EXPECT_EQ(ending.status, status) << errors;
    EXPECT_EQ(ending.errors, errors);
    EXPECT_EQ(ending.out.empty(), status == 2) << errors;
  };
  std::filesystem::create_directory(beside("wiki"));
  const std::string page = "---\nsources: store.py\ncommit: ";
  const std::vector<std::string> wiki = {"--wiki", beside("wiki"), "--fail-if=stale-wiki"};
  repository_.write("../wiki/store.md", page + repository_.git({"rev-parse", "HEAD"}) + "\n---\n");
  ends(wiki, 0, "");
  repository_.write("../wiki/store.md", page + repository_.git({"rev-parse", "main"}) + "\n---\n");
  ends(wiki, 1, "context-delta: --fail-if stale-wiki: the wiki page store.md is stale\n");
  repository_.write("../wiki/again.md", page + "main~9\n---\n");
  ends(wiki, 1,
       "context-delta: --fail-if stale-wiki: 2 wiki pages are stale, the first is again.md\n");

  ends({"--fail-if=changed", "--fail-if=truncated", "--budget=0", "--format=json"}, 1,
       "{\"error\": \"--fail-if changed: 1 file changed\", \"exit_code\": 1}\n"
       "{\"error\": \"--fail-if truncated: the budget left something out\", \"exit_code\": 1}\n");
  ends({"--fail-if=changed", "--fail-if=truncated", "--base=HEAD"}, 0, "");
  EXPECT_EQ(run_here({"--fail-if=changed", "--base=nowhere"}).status, 3);

  const std::string help = " (see context-delta --help)\n";
  ends({"--fail-if=stale-wiki"}, 2,
       "context-delta: --fail-if stale-wiki needs a wiki: --wiki DIR" + help);
  ends({"--fail-if=changed", "--explain-files"}, 2,
       "context-delta: --fail-if changed does not go with --explain-files" + help);
  ends({"--fail-if=x"}, 2,
       "context-delta: --fail-if takes one of changed|stale-wiki|truncated, not 'x'" + help);
}

TEST_F(Program, AnswersEvenWhenGitCannotCompare) {
  const Ending base = run_here({"--base", "nowhere", "--format", "json"});
  EXPECT_EQ(base.status, 3);
  EXPECT_TRUE(base.out.starts_with(
      R"({"affected_files":[],"symbols":[],"callers":[],"neighbours":[],)"
      R"("snippets":[],"tokens_used":0,"truncated":false,"error":"--base 'nowhere' )"))
      << base.out;
  EXPECT_TRUE(base.errors.starts_with("{\"error\": \"--base 'nowhere' ")) << base.errors;
  EXPECT_TRUE(base.errors.ends_with(", \"exit_code\": 3}\n")) << base.errors;
  EXPECT_FALSE(std::filesystem::exists(repository_.root() / ".git/context-delta"));
  ASSERT_EQ(run_here({"index"}).status, 0);
  const Ending target = run_here({"--target", "nowhere"});
  EXPECT_EQ(target.status, 3);
  EXPECT_TRUE(target.out.starts_with("error: --target 'nowhere' ")) << target.out;
  EXPECT_TRUE(target.errors.starts_with("context-delta: --target 'nowhere' ")) << target.errors;
}

TEST_F(Program, AnswersWhereThereIsNothingToCompare) {
  const TemporaryFolder empty;
  const GitRepository unborn;
  for (const std::string& folder :
       {empty.path().string(), unborn.root().string(), beside("missing")}) {
    const Ending ending = run({"-C", folder, "--format=json"});
    EXPECT_EQ(ending.status, 3) << folder;
    EXPECT_NE(ending.out.find("\"error\":\""), std::string::npos) << folder << ending.out;
    EXPECT_EQ(ending.errors.find('\n'), ending.errors.size() - 1) << folder << ending.errors;
    for (const std::string command : {"index", "graph"}) {
      const Ending other = run({command, "-C", folder});
      EXPECT_EQ(other.status, 3) << folder;
      EXPECT_EQ(other.out, "") << folder;
    }
  }
}

TEST_F(Program, SaysWhatTheIndexHolds) {
  const Ending first = run_here({"index", "-v"});
  EXPECT_EQ(first.status, 0);
  EXPECT_TRUE(first.out.starts_with(
      "indexed " + repository_.git({"rev-parse", "HEAD"}).substr(0, 12) + ": 2 files, 2 symbols, "))
      << first.out;
  EXPECT_NE(first.errors.find("2 parsed"), std::string::npos) << first.errors;
  const Ending second = run_here({"index"});
  const Ending stats = run_here({"index", "--stats", "json", "--index", beside("cold")});
  EXPECT_NE(stats.out.find(R"("blobs_parsed":2,"blobs_reused":0,"files_resolved":2,)"),
            std::string::npos)
      << stats.out;
  EXPECT_NE(run_here({"index", "--stats", "text"}).out.find("\nparsed 0 blobs"), std::string::npos);
  EXPECT_EQ(second.out, first.out);
  EXPECT_EQ(second.errors, "");
  const Ending elsewhere = run_here({"index", "--index", beside("deep/index")});
  EXPECT_EQ(elsewhere.out, first.out);
  EXPECT_TRUE(std::filesystem::exists(beside("deep/index")));
}

TEST_F(Program, ExportsTheGraph) {
  const Ending ending = run_here({"graph"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_TRUE(ending.out.starts_with(R"({"file": "app.py", "name": "run", )")) << ending.out;
  ASSERT_EQ(run_here({"graph", "-o", beside("graph")}).status, 0);
  EXPECT_EQ(content(beside("graph")), ending.out);
}

TEST_F(Program, PutsTheOutputFileInPlaceWholeOrNotAtAll) {
  const std::string file = beside("pack.json");
  std::ofstream(file) << "old";
  std::filesystem::permissions(
      file, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  std::filesystem::create_symlink("pack.json", beside("link"));
  const std::size_t before = entries_in(repository_.beside());
  const Ending ending = run_here({"--format=json", "-o", beside("link")});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.out, "");
  EXPECT_EQ(content(file), run_here({"--format=json"}).out);
  EXPECT_TRUE(std::filesystem::is_symlink(beside("link")));
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(entries_in(repository_.beside()), before);

  const Ending failed = run_here({"-o", beside("no/such/folder")});
  EXPECT_EQ(failed.status, 4);
  EXPECT_EQ(failed.errors, "context-delta: cannot write " + beside("no/such/folder") +
                               ": No such file or directory\n");
  EXPECT_EQ(run_here({"-o", "/dev/null"}).status, 0);
  EXPECT_EQ(run_here({"-o", "/dev/full"}).status, 4);
}

TEST_F(Program, IsQuietAboutAClosedPipe) {
  const std::string here = " -C '" + repository_.root().string() + "' --format=json ";
  const std::string pipe = "'" + beside("pipe") + "'";
  const Ending closed = run_shell("mkfifo " + pipe + "; : < " + pipe + " & exec 3> " + pipe +
                                  "; wait; \"$program\"" + here + ">&3; echo status $? >&2");
  EXPECT_EQ(closed.errors, "status 0\n");
  const Ending full = run_shell("\"$program\"" + here + "> /dev/full; echo status $? >&2");
  EXPECT_EQ(full.errors,
            "{\"error\": \"cannot write standard output: No space left on device\", \"exit_code\": "
            "4}\nstatus 4\n");
  const Ending none = run_shell("\"$program\"" + here + "--format=text >&-; echo status $? >&2");
  EXPECT_EQ(none.errors,
            "context-delta: cannot write standard output: Bad file descriptor\nstatus 4\n");
}

TEST_F(Program, ColoursAsAsked) {
  const auto coloured = [&](std::vector<std::string> arguments,
                            const std::vector<std::string>& environment) {
    return run_here(std::move(arguments), environment).out.find('\x1b') != std::string::npos;
  };
  EXPECT_FALSE(coloured({}, {"TERM=xterm"}));
  EXPECT_TRUE(coloured({"--color=always"}, {"NO_COLOR=1", "TERM=dumb"}));
  EXPECT_TRUE(coloured({}, {"CLICOLOR_FORCE=1"}));
  EXPECT_FALSE(coloured({}, {"CLICOLOR_FORCE=0"}));
  EXPECT_FALSE(coloured({}, {"CLICOLOR_FORCE=1", "NO_COLOR=1"}));
  EXPECT_TRUE(coloured({}, {"CLICOLOR_FORCE=1", "NO_COLOR="}));
  EXPECT_FALSE(coloured({"--color=never"}, {"CLICOLOR_FORCE=1"}));
  EXPECT_FALSE(coloured({"--format=json"}, {"CLICOLOR_FORCE=1"}));
}

TEST_F(Program, TellsUsageErrorsAndHelpApart) {
  const Ending wrong = run({"--bugdet", "5"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.out, "");
  EXPECT_EQ(wrong.errors,
            "context-delta: unknown option --bugdet; did you mean --budget? (see context-delta "
            "--help)\n");
  const Ending version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(version.out.starts_with("context-delta ") && version.out.ends_with("\n"));
  const Ending brief = run({"-h"});
  const Ending whole = run({"--help"});
  const Ending index = run({"--help", "index"});
  EXPECT_EQ(brief.status + whole.status + index.status, 0);
  EXPECT_LT(brief.out.size(), whole.out.size());
  EXPECT_NE(whole.out.find("Exit codes:\n"), std::string::npos);
  EXPECT_EQ(index.out.find("--budget"), std::string::npos);
  EXPECT_EQ(run({"help", "index"}).out, index.out);
  EXPECT_EQ(run({"help"}).out, whole.out);
  EXPECT_EQ(run({"--format=json", "--bugdet", "5"}).errors,
            "{\"error\": \"unknown option --bugdet; did you mean --budget? (see context-delta "
            "--help)\", \"exit_code\": 2}\n");
}

TEST_F(Program, TakesPresetsFromFilesAndVariables) {
  const std::string file = beside("config.toml");
  const std::string variable = "CONTEXT_DELTA_CONFIG=" + file;
  repository_.write("../config.toml", "format = 'json'\n");
  repository_.write(".context-delta.toml", "all-files = true\nindex = '/etc/passwd'\n");
  const Ending ending = run_here({"-v"}, {variable});
  EXPECT_NE(ending.out.find("\"total_changed_files\":2,"), std::string::npos) << ending.out;
  EXPECT_TRUE(ending.errors.starts_with(
      "context-delta: .context-delta.toml:2: index cannot be set by a project's file; passed "
      "over\ncontext-delta: format = json from " +
      file + "\ncontext-delta: all-files = true from .context-delta.toml\n"))
      << ending.errors;
  EXPECT_EQ(run_here({"-q"}, {variable}).errors, "");
  const Ending without = run_here({"--no-config"}, {variable, "CONTEXT_DELTA_BUDGET=x"});
  EXPECT_NE(without.out.find("1 file changed"), std::string::npos) << without.out;
  EXPECT_EQ(run_here({}, {"CONTEXT_DELTA_BUDGET=x"}).status, 2);
}

class InterruptedProgram : public Program, public testing::WithParamInterface<int> {};

TEST_P(InterruptedProgram, GivesUpAndLeavesTheIndexAsItWas) {
  ASSERT_EQ(run_here({"index"}).status, 0);
  const std::string index = repository_.root() / ".git/context-delta/index.sqlite";
  const storage::Repository held(index);
  const std::optional<std::string> before = held.commit();
  repository_.write("more.py", "def more(): pass\n");
  repository_.commit();
  {
    // The update waits for this writer, for as long as the test needs.
    const storage::Transaction writing(held.db, storage::Transaction::Mode::WRITE);
    const pid_t child = start(in_repository({"index", "-q"}));
    EXPECT_TRUE(opens(child, index));
    kill(child, GetParam());
    EXPECT_EQ(wait_for(child), 128 + GetParam());
  }
  EXPECT_EQ(held.commit(), before);
  EXPECT_EQ(run_here({"index"}).status, 0);
  EXPECT_NE(held.commit(), before);
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedProgram, testing::Values(SIGINT, SIGTERM),
                         [](const auto& test) { return test.param == SIGINT ? "Int" : "Term"; });

}  // namespace
}  // namespace context_delta::test
