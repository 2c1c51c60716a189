#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "server/json_rpc.h"
#include "utils/json.h"

/// The parameters of a tool: one table from which its input schema and its checks are made.
namespace context_delta::server {

struct Parameter {
  enum class Type { STRING, INTEGER, BOOLEAN };
  std::string_view name;
  Type type;
  std::string_view description;
  std::optional<std::int64_t> default_number = {};  ///< of integers and (0, 1) booleans
  std::string_view only_value = {};  ///< of a string: the one that is allowed, the default too
  std::int64_t least = 0;            ///< of integers
  std::int64_t most = 0;
};

/// The JSON Schema of the arguments.
json::Mapping input_schema(std::span<const Parameter> parameters);

/// The value of every parameter, checked; of one that is not given, or null, its default, and null
/// for strings. Raises ToolError for the first argument that is not right.
json::Mapping checked_arguments(std::span<const Parameter> parameters, const Json& arguments);

}  // namespace context_delta::server
