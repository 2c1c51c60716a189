#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "component/scripted_services.h"
#include "tool_handlers/context_delta/context_delta.h"

namespace context_delta::test {
namespace {

using Services = ScriptedServices;

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  std::int64_t upto(std::int64_t most) {
    return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(most + 1));
  }
  bool one_in(std::int64_t sides) { return upto(sides - 1) == 0; }
  std::string word(std::int64_t longest) {
    return std::string(static_cast<std::size_t>(upto(longest)), 'w');
  }

 private:
  std::mt19937_64 engine_;
};

World random_world(Dice& dice) {
  World world;
  const std::int64_t files = dice.one_in(8) ? 0 : dice.upto(25);
  for (std::int64_t i = 0; i < files; ++i) {
    const std::string path = "p" + std::to_string(i) + dice.word(30);
    world.changes.files.push_back({path, "modified", dice.upto(9), dice.upto(9)});
    if (dice.one_in(3)) world.not_source.insert(path);
    if (!dice.one_in(3)) world.impact[path] = {dice.upto(3), dice.upto(3), "python"};
    if (!dice.one_in(4)) {
      for (std::int64_t n = dice.upto(3); n > 0; --n) {
        world.spans[path].push_back({1 + dice.upto(60), dice.upto(120)});
      }
    }
    if (!dice.one_in(4))
      world.texts[path] = std::string(static_cast<std::size_t>(dice.upto(90)), '\n');
    for (std::int64_t n = dice.upto(4); n > 0; --n) {
      world.symbols.push_back(
          {.id = {dice.upto(60)},
           .path = path,
           .start_line = dice.upto(5),
           .fqn = dice.word(40),
           .name = "n",
           .signature = dice.one_in(2) ? std::optional(dice.word(50)) : std::nullopt});
    }
  }
  for (auto* callers : {&world.proven, &world.guessed}) {
    for (std::int64_t n = dice.upto(30); n > 0; --n) {
      callers->push_back({.of = {dice.upto(60)}, .total = 1 + dice.upto(40), .fqn = dice.word(40)});
    }
  }
  for (std::int64_t n = dice.upto(2); n > 0; --n) world.pages.push_back(dice.word(300));
  return world;
}

std::int64_t number(const json::Mapping& pack, std::string_view key) {
  return *pack.at(key).as<std::int64_t>();
}

const json::List& list(const json::Mapping& pack, std::string_view key) {
  return *pack.at(key).as<json::List>();
}

json::Mapping ask(const World& world, const Request<Services>& request) {
  Services services(world);
  return handle_build_delta_context_pack(services, request);
}

bool is_prefix(const json::List& shorter, const json::List& longer) {
  return shorter.size() <= longer.size() &&
         std::equal(shorter.begin(), shorter.end(), longer.begin());
}

void check_counts(const json::Mapping& pack, const json::Mapping& whole,
                  const Request<Services>& request) {
  std::int64_t tokens = 0;
  for (const char* key : {"affected_files", "symbols", "callers", "neighbours", "snippets"}) {
    for (const json::Value& row : list(pack, key)) {
      tokens += static_cast<std::int64_t>(json_text(row).size());
    }
  }
  const json::Value* pages = pack.find("wiki_pages");
  const auto pages_cost =
      pages == nullptr ? 0 : static_cast<std::int64_t>(json_text(*pages).size());
  EXPECT_EQ(number(pack, "tokens_used"), tokens + pages_cost);
  EXPECT_LE(tokens, std::max<std::int64_t>(0, request.token_budget - pages_cost));

  EXPECT_EQ(number(pack, "files_omitted") +
                static_cast<std::int64_t>(list(pack, "affected_files").size()),
            number(pack, "total_changed_files"));
  EXPECT_EQ(
      number(pack, "symbols_omitted") + static_cast<std::int64_t>(list(pack, "symbols").size()),
      number(pack, "total_changed_symbols"));
  EXPECT_EQ(number(pack, "total_changed_symbols"), number(whole, "total_changed_symbols"));
  const bool any = number(pack, "files_omitted") != 0 || number(pack, "symbols_omitted") != 0 ||
                   number(pack, "callers_omitted") != 0 || number(pack, "neighbours_omitted") != 0;
  EXPECT_EQ(*pack.at("truncated").as<bool>(), any);
}

TEST(RandomWorlds, BudgetsOnlyCutTheEndsOfLists) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    const World world = random_world(dice);
    const std::string lens = "lens";
    Request<Services> request{.repository = {{"db"}}, .repo_root = {"root"}};
    request.include_call_graph = !dice.one_in(4);
    request.include_snippets = dice.one_in(2);
    request.source_only = dice.one_in(2);
    request.wiki_lens = dice.one_in(2) ? &lens : nullptr;
    request.token_budget = 100000000;
    const json::Mapping whole = ask(world, request);
    EXPECT_EQ(json_text(whole), json_text(ask(world, request)));
    if (whole.find("message") != nullptr) continue;

    std::size_t files_before = 0;
    for (std::int64_t budget = -50; budget < 20000; budget += 1 + dice.upto(5000)) {
      request.token_budget = budget;
      const json::Mapping pack = ask(world, request);
      check_counts(pack, whole, request);
      for (const char* key : {"affected_files", "symbols"}) {
        EXPECT_TRUE(is_prefix(list(pack, key), list(whole, key))) << key;
      }
      // Callers follow the symbols shown: whole when no symbol is missing.
      if (number(pack, "symbols_omitted") == number(whole, "symbols_omitted")) {
        EXPECT_TRUE(is_prefix(list(pack, "callers"), list(whole, "callers")));
        EXPECT_TRUE(is_prefix(list(pack, "neighbours"), list(whole, "neighbours")));
      }
      EXPECT_GE(list(pack, "affected_files").size(), files_before);
      files_before = list(pack, "affected_files").size();
    }
    if (::testing::Test::HasFailure()) return;
  }
}

}  // namespace
}  // namespace context_delta::test
