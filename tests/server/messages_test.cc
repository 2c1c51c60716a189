#include <random>

#include <gtest/gtest.h>

#include "server/session.h"
#include "support/git_repository.h"

namespace context_delta::test {
namespace {

using std::string_literals::operator""s;

const char* const CALL = R"("method":"tools/call","params":{"name":"context","arguments":)";

class FirstMessages : public testing::Test {
 protected:
  TemporaryFolder folder;
  Session session{{folder.path()}};

  void expect_error(const Json& answer, const Json& id, int code, const std::string& line) {
    ASSERT_TRUE(answer.contains("error")) << line << "\n" << answer;
    EXPECT_EQ(answer["id"], id) << line;
    EXPECT_EQ(answer["error"]["code"], code) << line << "\n" << answer;
  }
};

/// Each of them is the first message of a server and the next of one that got those before it.
TEST_F(FirstMessages, AreAnsweredOrRefusedAndNeverTheEnd) {
  struct Case {
    std::string line;
    Json id;
    int code;
  };
  const std::vector<Case> cases = {
      {"garbage", nullptr, -32700},
      {"{", nullptr, -32700},
      {R"({"jsonrpc":"2.0","id":1,"method":"x","params":{"a":"\ud800"}})", nullptr, -32700},
      {"{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", nullptr, -32700},
      {"{\"jsonrpc\":\"2.0\",\"id\":1,\0}"s, nullptr, -32700},
      {R"({"jsonrpc":"2.0","id":1,"method":"x","params":{"a":1e999}})", nullptr, -32700},
      {std::string(1'000'000, '['), nullptr, -32600},
      {"[]", nullptr, -32600},
      {R"([{"jsonrpc":"2.0","id":1,"method":"ping"}])", nullptr, -32600},
      {"null", nullptr, -32600},
      {"\"ping\"", nullptr, -32600},
      {R"({"id":1,"method":"ping"})", 1, -32600},
      {R"({"jsonrpc":"1.0","id":"x","method":"ping"})", "x", -32600},
      {R"({"jsonrpc":"2.0","id":null,"method":"ping"})", nullptr, -32600},
      {R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})", nullptr, -32600},
      {R"({"jsonrpc":"2.0","id":{},"method":"ping"})", nullptr, -32600},
      {R"({"jsonrpc":"2.0","id":1})", 1, -32600},
      {R"({"jsonrpc":"2.0","id":1,"method":7})", 1, -32600},
      {R"({"jsonrpc":"2.0","id":1,"method":"ping","params":[1]})", 1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"no/such"})", 1, -32601},
      {R"({"jsonrpc":"2.0","id":1,"method":"resources/list"})", 1, -32601},
      {R"({"jsonrpc":"2.0","id":1,"method":"initialize"})", 1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})", 1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"server/discover"})", 1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"server/discover","params":{"_meta":{)"
       R"("io.modelcontextprotocol/protocolVersion":"2026-07-28"}}})",
       1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"_meta":{)"
       R"("io.modelcontextprotocol/clientCapabilities":{}}}})",
       1, -32602},
      {R"({"jsonrpc":"2.0","id":1,"method":"ping","params":)" + envelope().dump() + "}", 1, -32601},
      {R"({"jsonrpc":"2.0","id":1,"method":"logging/setLevel"})", 1, -32601},
      {R"({"jsonrpc":"2.0","id":1,)"s + CALL + "{}}}", 1, -32602},
  };
  for (const Case& each : cases) {
    session.send(each.line);
    expect_error(session.receive(), each.id, each.code, each.line.substr(0, 200));
    Session fresh({folder.path()});
    fresh.send(each.line);
    expect_error(fresh.receive(), each.id, each.code, each.line.substr(0, 200));
  }
  for (const char* silent :
       {"", " \r", R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{}})",
        R"({"jsonrpc":"2.0","method":"notifications/none"})",
        R"({"jsonrpc":"2.0","id":9,"result":{}})",
        R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":5}})"}) {
    session.send(silent);
  }
  session.send(R"({"jsonrpc":"2.0","id":18446744073709551615,"method":"ping"})");
  EXPECT_EQ(session.receive(), Json::parse(R"({"jsonrpc":"2.0","id":18446744073709551615,
                                               "result":{}})"));
  EXPECT_TRUE(session.finish().empty());
}

TEST_F(FirstMessages, SettleOnARevision) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"2024-11-05", "2024-11-05"}, {"2025-03-26", "2025-03-26"}, {"2025-06-18", "2025-06-18"},
      {"2025-11-25", "2025-11-25"}, {"2026-07-28", "2025-11-25"}, {"1999-01-01", "2025-11-25"}};
  for (const auto& [asked, settled] : cases) {
    const Json result = session.open(asked)["result"];
    EXPECT_EQ(result["protocolVersion"], settled);
    EXPECT_EQ(result["serverInfo"]["version"], "1.2.3");
    session.send(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})");
    const Json list = session.answer()["result"];
    EXPECT_EQ(list["tools"][0].contains("outputSchema"), settled >= "2025-06-18") << settled;
    EXPECT_EQ(list["tools"][0].contains("annotations"), settled >= "2025-03-26") << settled;
    EXPECT_FALSE(list.contains("resultType")) << settled;
  }
}

TEST_F(FirstMessages, OfTheStatelessRevisionNeedNoHandshake) {
  Json request = {{"jsonrpc", "2.0"}, {"id", "d"}, {"method", "server/discover"}};
  request["params"] = envelope();
  session.send(request.dump());
  const Json discovered = session.answer()["result"];
  EXPECT_EQ(discovered["supportedVersions"][0], "2026-07-28");
  EXPECT_EQ(discovered["resultType"], "complete");
  EXPECT_EQ(discovered["cacheScope"], "private");
  EXPECT_EQ(discovered["_meta"]["io.modelcontextprotocol/serverInfo"]["name"], "context-delta");

  request["method"] = "tools/list";
  session.send(request.dump());
  const Json list = session.answer()["result"];
  EXPECT_EQ(list["resultType"], "complete");
  EXPECT_TRUE(list["ttlMs"].is_number_unsigned());
  session.send(request.dump());
  EXPECT_EQ(session.answer()["result"], list);

  for (const char* unknown : {"2031-01-01", "2025-11-25", ""}) {
    request["params"] = envelope(unknown);
    session.send(request.dump());
    const Json error = session.answer()["error"];
    EXPECT_EQ(error["code"], -32022) << unknown;
    EXPECT_EQ(error["data"]["requested"], unknown);
    EXPECT_EQ(error["data"]["supported"], discovered["supportedVersions"]);
  }
}

TEST_F(FirstMessages, MayComeInBatchesWhereTheRevisionHasThem) {
  session.open("2025-03-26");
  session.send(R"([{"jsonrpc":"2.0","id":1,"method":"ping"},7,)"
               R"({"jsonrpc":"2.0","method":"notifications/initialized"},)"
               R"({"jsonrpc":"2.0","id":2,"method":"ping"}])");
  std::vector<Json> ids;
  for (int i = 0; i < 3; ++i) ids.push_back(session.receive()["id"]);
  EXPECT_EQ(ids, (std::vector<Json>{1, nullptr, 2}));
}

TEST_F(FirstMessages, MayBeLong) {
  session.open();
  const std::string long_text(10 << 20, 'x');
  session.call(1, {{"base_branch", long_text}});
  const Json refused = session.answer();
  EXPECT_EQ(refused["id"], 1);
  EXPECT_EQ(refused["result"]["content"][0]["text"],
            "base_branch must not be longer than 4096 bytes");
  session.call(2, {{"base_branch", long_text + long_text}});
  expect_error(session.answer(), nullptr, -32600, "20 MB");
  session.send(R"({"jsonrpc":"2.0","id":3,"method":"ping"})");
  EXPECT_EQ(session.answer()["id"], 3);
}

TEST_F(FirstMessages, MayBeTheLastThingThatAClientTakesCareOf) {
  session.open();
  for (int i = 0; i < 200; ++i) session.send(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})");
  session.abandon();  // much more than a pipe holds is not read
}

/// Whatever comes, every line out is a message and the server answers the next request.
TEST(AnyBytes, LeadToMessagesOnly) {
  const TemporaryFolder folder;
  Session session({folder.path()});
  session.open("2025-03-26");
  const std::vector<std::string> samples = {
      R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{}})",
      R"([{"jsonrpc":"2.0","id":"a","method":"ping"},{"jsonrpc":"2.0","id":2,"method":"x"}])",
      R"({"jsonrpc":"2.0","id":3,"method":"tools/call","params":{"name":"context","arguments":)"
      R"({"action":"delta","token_budget":5,"wiki":null},"_meta":{"progressToken":"t"}}})",
      R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":3}})",
      R"({"jsonrpc":"2.0","id":4,"method":"server/discover","params":{"_meta":{}}})",
      "\xf0\x9f\x98\x80\xff\xc0\x80\\u0000\\ud800"};
  std::mt19937_64 dice(20);
  for (int round = 0; round < 3000; ++round) {
    std::string text = samples[dice() % samples.size()];
    for (std::uint64_t edits = dice() % 6; edits > 0; --edits) {
      const std::size_t at = dice() % text.size();
      switch (dice() % 4) {
        case 0:
          text.erase(at, dice() % 9);
          break;
        case 1:
          text[at] = static_cast<char>(dice());
          break;
        case 2: {
          const std::string& other = samples[dice() % samples.size()];
          text.insert(at, other.substr(dice() % other.size(), dice() % 30));
          break;
        }
        default:
          text.insert(at, 1, "{}[],:\"\\\n0"[dice() % 10]);
      }
      if (text.empty()) text = "x";
    }
    session.send_bytes(text + "\n");
    if (round % 50 != 0) continue;
    const Json id = "probe " + std::to_string(round);
    session.send(Json{{"jsonrpc", "2.0"}, {"id", id}, {"method", "ping"}}.dump());
    while (session.receive()["id"] != id) continue;
  }
  for (const Json& line : session.finish()) EXPECT_TRUE(line.is_object()) << line;
}

}  // namespace
}  // namespace context_delta::test
