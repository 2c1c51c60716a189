#include "tool_handlers/quality_impact.h"

#include <string>

namespace context_delta::quality_impact {
namespace {

std::string choice(const storage::Caller& caller) {
  if (caller.candidates <= 1) return "the only definition named so";
  const std::string among = "one of " + std::to_string(caller.candidates);
  if (caller.relation == "dispatch") return among + " definitions the call may be dispatched to";
  return among + " definitions named so";
}

std::string reason(const storage::Caller& caller) {
  if (caller.why.empty()) return choice(caller);
  return choice(caller) + (caller.candidates <= 1 ? ", but " : "; ") + caller.why;
}

}  // namespace

json::Mapping guessed_caller_row(const storage::Caller& caller) {
  return {{"fqn", caller.fqn},           {"name", caller.name},     {"kind", caller.kind},
          {"file", caller.path},         {"line", caller.line},     {"call_line", caller.call_line},
          {"relation", caller.relation}, {"reason", reason(caller)}};
}

}  // namespace context_delta::quality_impact
