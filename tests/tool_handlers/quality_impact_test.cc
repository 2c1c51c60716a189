#include "tool_handlers/quality_impact.h"

#include <gtest/gtest.h>

namespace context_delta::quality_impact {
namespace {

std::string reason(const std::string& relation, const std::string& why, std::int64_t candidates) {
  storage::Caller caller;
  caller.relation = relation;
  caller.why = why;
  caller.candidates = candidates;
  return *guessed_caller_row(caller).at("reason").as<std::string>();
}

TEST(GuessedCallerRow, HoldsTheCallerAndTheDoubt) {
  const storage::Caller caller{.of = 7,
                               .total = 12,
                               .fqn = "pool.Pool.drain",
                               .name = "drain",
                               .kind = "method",
                               .path = "src/pool.py",
                               .line = 30,
                               .call_line = 34,
                               .relation = "namesake",
                               .why = "the receiver's type is not known",
                               .candidates = 3};
  EXPECT_EQ(json::json_text(guessed_caller_row(caller)),
            "{\"fqn\": \"pool.Pool.drain\", \"name\": \"drain\", \"kind\": \"method\", \"file\": "
            "\"src/pool.py\", \"line\": 30, \"call_line\": 34, \"relation\": \"namesake\", "
            "\"reason\": \"one of 3 definitions named so; the receiver's type is not known\"}");
}

TEST(GuessedCallerRow, WordsTheReasonByCandidates) {
  EXPECT_EQ(reason("namesake", "the name is a parameter", 1),
            "the only definition named so, but the name is a parameter");
  EXPECT_EQ(reason("dispatch", "a subclass overrides it", 2),
            "one of 2 definitions the call may be dispatched to; a subclass overrides it");
  EXPECT_EQ(reason("namesake", "", 4), "one of 4 definitions named so");
}

}  // namespace
}  // namespace context_delta::quality_impact
