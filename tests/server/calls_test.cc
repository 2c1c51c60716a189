#include <filesystem>
#include <fstream>
#include <set>

#include <gtest/gtest.h>
#include <unistd.h>

#include "server/session.h"
#include "storage/repository.h"
#include "support/git_repository.h"
#include "utils/git_utils.h"
#include "workers/context_builder.h"

namespace context_delta::test {
namespace {

namespace fs = std::filesystem;

/// A repository whose branch changes a function that another file calls.
class Reviewed {
 public:
  Reviewed() {
    git.write("base.py", "def used():\n    return 1\n");
    git.write("user.py", "from base import used\n\ndef caller():\n    return used()\n");
    git.commit();
    git.git({"checkout", "-q", "-b", "work"});
    git.write("base.py", "def used():\n    return 2\n");
    git.write("README.md", "text\n");
    git.commit();
  }
  GitRepository git;
};

std::string text_of(const Json& answer) {
  return answer["result"]["content"][0]["text"].get<std::string>();
}

class Calls : public testing::Test {
 protected:
  Reviewed reviewed;
  Session session{{reviewed.git.root()}};

  void SetUp() override { session.open(); }
  Json called(const Json& arguments) {
    session.call(1, arguments);
    return session.answer();
  }
};

TEST_F(Calls, AnswerWithThePackInBothHalves) {
  const Json answer = called({{"action", "delta"}, {"source_only", false}, {"wiki", nullptr}});
  const Json& pack = answer["result"]["structuredContent"];
  EXPECT_EQ(answer["result"]["isError"], false);
  EXPECT_EQ(pack["base_branch"], "main");
  EXPECT_EQ(pack["total_changed_files"], 2);
  EXPECT_EQ(pack["callers"][0]["fqn"], "user.caller");
  EXPECT_EQ(Json::parse(text_of(answer)), pack);

  const Json none = called({{"base_branch", "HEAD"}});
  EXPECT_EQ(none["result"]["isError"], false);
  EXPECT_TRUE(none["result"]["structuredContent"].contains("message"));
  reviewed.git.write("fresh.py", "def fresh():\n    return 1\n");
  const Json uncommitted = called({{"base_branch", "HEAD"}, {"uncommitted", true}});
  EXPECT_EQ(uncommitted["result"]["structuredContent"]["symbols"][0]["fqn"], "fresh.fresh");
  const Json error = called({{"base_branch", "mian"}});
  EXPECT_EQ(error["result"]["isError"], true);
  EXPECT_NE(text_of(error).find("base_branch"), std::string::npos);
  EXPECT_EQ(Json::parse(text_of(error)), error["result"]["structuredContent"]);
}

TEST_F(Calls, OfOldRevisionsHaveTheTextOnly) {
  session.open("2025-03-26");
  const Json answer = called(Json::object());
  EXPECT_FALSE(answer["result"].contains("structuredContent"));
  EXPECT_EQ(Json::parse(text_of(answer))["base_branch"], "main");
}

TEST_F(Calls, WithWrongArgumentsSayWhatIsRight) {
  const std::vector<std::pair<Json, std::string>> cases = {
      {{{"base_brunch", "main"}}, "unknown argument 'base_brunch'; did you mean base_branch?"},
      {{{"xyzzy", 1}}, "unknown argument 'xyzzy' (there are action, repo_root, "},
      {{{"action", "index"}}, "action must be delta, not 'index'"},
      {{{"token_budget", -1}}, "token_budget must be an integer from 0 to 20000"},
      {{{"token_budget", 1e300}}, "token_budget must be an integer from 0 to 20000"},
      {{{"token_budget", 18446744073709551615u}}, "token_budget must be an integer from 0 to"},
      {{{"token_budget", 12.5}}, "token_budget must be an integer from 0 to 20000"},
      {{{"token_budget", "4000"}}, "token_budget must be an integer from 0 to 20000"},
      {{{"include_snippets", "yes"}}, "include_snippets must be true or false"},
      {{{"base_branch", ""}}, "base_branch must not be empty"},
      {{{"uncommitted", true}, {"target_branch", "main"}},
       "uncommitted reviews what is checked out"},
      {{{"base_branch", Json::array()}}, "base_branch must be a string"},
      {{{"repo_root", std::string("/\0x", 3)}}, "repo_root must not hold the character NUL"},
  };
  for (const auto& [arguments, text] : cases) {
    const Json answer = called(arguments);
    EXPECT_EQ(answer["result"]["isError"], true) << arguments;
    EXPECT_TRUE(text_of(answer).starts_with(text)) << text_of(answer);
  }
  EXPECT_EQ(called({{"token_budget", 4000.0}})["result"]["isError"], false);
}

TEST_F(Calls, KnowTheirOwnTools) {
  session.send(R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"contxet"}})");
  const Json error = session.answer()["error"];
  EXPECT_EQ(error["code"], -32602);
  EXPECT_EQ(error["message"],
            "unknown tool 'contxet'; did you mean context? (tools/list lists them)");
  session.call(2, Json::object(), {{"_meta", {{"progressToken", 1.5}}}});
  EXPECT_EQ(session.answer()["error"]["code"], -32602);
  session.call(3, "delta");
  EXPECT_EQ(session.answer()["error"]["code"], -32602);
}

TEST_F(Calls, TellTheirProgress) {
  for (const Json& token : {Json("t"), Json(7)}) {
    fs::remove_all(reviewed.git.root() / ".git" / "context-delta");
    session.call(token, Json::object(), {{"_meta", {{"progressToken", token}}}});
    double last = -1;
    for (Json line = session.receive(); line.contains("method"); line = session.receive()) {
      EXPECT_EQ(line["method"], "notifications/progress");
      EXPECT_EQ(line["params"]["progressToken"], token);
      EXPECT_GT(line["params"]["progress"], last);
      EXPECT_LE(line["params"]["progress"], line["params"]["total"]);
      last = line["params"]["progress"];
    }
    EXPECT_GE(last, 0);
  }
}

TEST_F(Calls, AnswerManyAtOnce) {
  std::set<Json> ids;
  for (int i = 0; i < 20; ++i) session.call(i, {{"token_budget", 100 * i}});
  for (int i = 0; i < 20; ++i) {
    const Json answer = session.answer();
    ids.insert(answer["id"]);
    EXPECT_EQ(answer["result"]["isError"], false) << answer;
  }
  EXPECT_EQ(ids.size(), 20U);
}

/// Calls that wait for an index that another process holds are given up, threads and all.
TEST_F(Calls, ThatAreCancelledSayNothingAndMakeRoom) {
  const Reviewed other;
  Session both({reviewed.git.root(), other.git.root()});
  both.open();
  const fs::path index = reviewed.git.root() / ".git" / "context-delta" / "index.sqlite";
  const storage::Repository holder(index);
  {
    const storage::Transaction writing(holder.db, storage::Transaction::Mode::WRITE);
    const Json held = {{"repo_root", reviewed.git.root().string()}};
    for (int i = 0; i < 64; ++i) both.call(i, held);
    both.call(0, held);
    EXPECT_EQ(both.answer()["error"]["code"], -32600);  // the id is in use
    both.call("late", held);
    const Json refused = both.answer();
    EXPECT_EQ(refused["id"], "late");
    EXPECT_EQ(refused["error"]["message"],
              "64 calls are under way: wait for one of them to be answered");
    for (int i = 0; i < 64; ++i) {
      both.send(Json{
          {"jsonrpc", "2.0"}, {"method", "notifications/cancelled"}, {"params", {{"requestId", i}}}}
                    .dump());
    }
    both.call("other", {{"repo_root", other.git.root().string()}});
    EXPECT_EQ(both.answer()["id"], "other");
  }
  both.call("again", {{"repo_root", reviewed.git.root().string()}});
  const Json again = both.answer();
  EXPECT_EQ(again["id"], "again");
  EXPECT_EQ(again["result"]["structuredContent"]["callers"][0]["fqn"], "user.caller");
  EXPECT_TRUE(both.finish().empty());
}

TEST_F(Calls, UnderWayAtTheEndOfInputAreGivenUp) {
  const fs::path index = reviewed.git.root() / ".git" / "context-delta" / "index.sqlite";
  const storage::Repository holder(index);
  const storage::Transaction writing(holder.db, storage::Transaction::Mode::WRITE);
  for (int i = 0; i < 9; ++i) session.call(i, Json::object());
  EXPECT_TRUE(session.finish().empty());
}

TEST(ToolRoots, KeepCallsInside) {
  const TemporaryFolder outside;
  const Reviewed inner, secret;
  const fs::path root = inner.git.beside();
  fs::create_directory(root / "empty");
  fs::create_directory_symlink(secret.git.root(), root / "link");
  fs::create_directory(root / "forged");
  std::ofstream(root / "forged" / ".git") << "gitdir: " << (secret.git.root() / ".git").string();
  secret.git.git({"worktree", "add", "-q", (root / "tree").string(), "main"});
  fs::create_directory(root / "pages");
  fs::create_directory_symlink(outside.path(), root / "wiki");
  Session session({root});
  session.open();
  const std::string not_in = "lies outside of what this server may read";
  const std::vector<std::pair<Json, std::string>> cases = {
      {{{"repo_root", (root / "repository").string()}}, "\"base_branch\":\"main\""},
      {{{"repo_root", "repository/.."}}, "not a git repository"},
      {{{"repo_root", "repository"}, {"wiki", (root / "pages").string()}}, "\"callers\":[{"},
      {{{"repo_root", "tree"}}, "No changes detected"},  // the main repository knows it
      {{{"repo_root", "empty"}}, "not a git repository"},
      {{{"repo_root", "none"}}, "is no folder in " + root.string()},
      {{{"repo_root", "link"}}, not_in},
      {{{"repo_root", "repository/../../" + secret.git.beside().filename().string()}}, not_in},
      {{{"repo_root", secret.git.root().string()}}, not_in},
      {{{"repo_root", "/none/such"}}, not_in},
      {{{"repo_root", "forged"}}, not_in},
      {{{"repo_root", "repository"}, {"wiki", outside.path().string()}}, not_in},
      {{{"repo_root", "repository"}, {"wiki", "../wiki"}}, not_in},
      {{{"repo_root", "repository"}, {"wiki", "no-wiki"}}, "is no folder in"},
  };
  for (const auto& [arguments, text] : cases) {
    session.call(1, arguments);
    EXPECT_NE(text_of(session.answer()).find(text), std::string::npos) << arguments << text;
  }
  Session two({root / "repository", root / "empty"});
  two.open();
  two.call(1, Json::object());
  EXPECT_TRUE(text_of(two.answer()).starts_with("repo_root is missing: name a folder in one of "));
  Session below({root / "repository" / ".git"});
  below.open();
  two.call(1, {{"repo_root", "repository"}});
  EXPECT_TRUE(text_of(two.answer()).starts_with("repo_root must be absolute"));
}

/// Hosts warn from 10,000 tokens on and refuse 25,000.
TEST_F(Calls, StayBelowWhatHostsTake) {
  std::map<std::string, std::string> before, after;
  for (int i = 0; i < 400; ++i) {
    const std::string path = "some/package_of_code/module_number_" + std::to_string(i) + ".py";
    for (int j = 0; j < 20; ++j) {
      const std::string head = "def function_with_a_name_" + std::to_string(j) +
                               "(first, second, *, third=None):\n    return ";
      before[path] += head + "1\n";
      after[path] += head + "second + \"\xc3\xa9\xe2\x82\xac\"\n";
    }
  }
  reviewed.git.commit_files("before", before);
  reviewed.git.git({"branch", "after", "before"});
  reviewed.git.commit_files("after", after);
  reviewed.git.git({"checkout", "-q", "-f", "after"});
  for (const auto& [budget, most] : {std::pair(4000, 5000), std::pair(20000, 25000)}) {
    const Json answer =
        called({{"base_branch", "before"}, {"token_budget", budget}, {"include_snippets", true}});
    const std::int64_t tokens = context_builder::estimate_tokens(text_of(answer));
    EXPECT_GT(tokens, budget / 3);
    EXPECT_LT(tokens, most);
  }
}

}  // namespace
}  // namespace context_delta::test
