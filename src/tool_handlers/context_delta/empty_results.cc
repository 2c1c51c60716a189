#include "tool_handlers/context_delta/empty_results.h"

namespace context_delta {

std::string nothing_changed_message(std::int64_t excluded, std::optional<std::string_view> note) {
  if (excluded != 0) {
    return "No source file changed between branches; " + std::to_string(excluded) +
           " other files did (source_only=false lists them)";
  }
  std::string message = "No changes detected between branches";
  if (note) message.append(" (").append(*note).append(")");
  return message;
}

}  // namespace context_delta
