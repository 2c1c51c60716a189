#include "indexer/model/rules.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace context_delta::indexer {
namespace {

TEST(Rules, WordsAreInOrderAndTheDocumentListsThemAll) {
  std::ostringstream text;
  text << std::ifstream(DOCUMENTS "/index.md").rdbuf();
  const std::string document = text.str();
  const auto says = [&](const std::string& line) {
    return document.find("\n" + line + "\n") != std::string::npos;
  };
  EXPECT_TRUE(std::is_sorted(doubts().begin(), doubts().end()));
  for (const std::string_view each : doubts()) {
    EXPECT_TRUE(is_doubt(each)) << each;
    EXPECT_TRUE(says("- " + std::string(each))) << each;
  }
  for (const Rule& each : rules()) {
    EXPECT_TRUE(is_rule(each.text)) << each.text;
    EXPECT_TRUE(says("| `" + std::string(each.text) + "` | " + std::string(each.meaning) + " |"))
        << each.text;
  }
  EXPECT_FALSE(is_rule("the receiver is an interface") || is_doubt("dispatch") || is_doubt(""));
}

}  // namespace
}  // namespace context_delta::indexer
