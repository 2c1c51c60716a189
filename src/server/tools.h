#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "server/parameters.h"
#include "server/roots.h"
#include "utils/cancellation.h"
#include "utils/json.h"

/// What a tool is, and the table of them all.
namespace context_delta::server {

/// What the model can mend: it becomes a result that says so. One line: what, and what to do.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What every call works with.
struct Surroundings {
  Roots roots;
  unsigned jobs = 0;               ///< as in Options
  std::int64_t token_scale = 100;  ///< likewise
};

/// One call of a tool.
struct Call {
  const json::Mapping&
      arguments;  ///< all parameters of the tool, those not given at their defaults
  CancelFlag cancelled;
  /// Takes how far the work is; null when nobody wants to know.
  std::function<void(std::string_view phase, std::int64_t done, std::int64_t total)> progress;
};

struct Answer {
  json::Mapping content;
  bool is_error = false;
};

struct Tool {
  std::string_view name;
  std::string_view title;
  std::string_view description;
  std::span<const Parameter> parameters;
  /// JSON text of the schema of every `content`, errors included.
  const std::string& (*output_schema)();
  /// Raises ToolError, Cancelled, and anything else for what nobody has foreseen.
  Answer (*call)(const Surroundings& surroundings, const Call& call);
};

/// In the order in which they are listed.
std::span<const Tool* const> tools();

/// The tool of a name; null when there is none.
const Tool* find_tool(std::string_view name);

}  // namespace context_delta::server
