#include "server/parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "server/tools.h"
#include "utils/git_utils.h"
#include "utils/suggestion.h"

namespace context_delta::server {
namespace {

using Type = Parameter::Type;

constexpr std::size_t MOST_STRING_BYTES = 4096;

json::Value default_of(const Parameter& parameter) {
  switch (parameter.type) {
    case Type::STRING:
      return parameter.only_value.empty() ? json::Value() : json::Value(parameter.only_value);
    case Type::INTEGER:
      return *parameter.default_number;
    case Type::BOOLEAN:
      return *parameter.default_number != 0;
  }
  return {};
}

json::Mapping schema(const Parameter& parameter) {
  json::Mapping row;
  switch (parameter.type) {
    case Type::STRING:
      if (parameter.only_value.empty()) {
        row.set("type", json::List{"string", "null"});
        row.set("maxLength", MOST_STRING_BYTES);
      } else {
        row.set("type", "string");
        row.set("enum", json::List{parameter.only_value});
      }
      break;
    case Type::INTEGER:
      row.set("type", "integer");
      row.set("minimum", parameter.least);
      row.set("maximum", parameter.most);
      break;
    case Type::BOOLEAN:
      row.set("type", "boolean");
      break;
  }
  row.set("default", default_of(parameter));
  row.set("description", parameter.description);
  return row;
}

[[noreturn]] void fail(const Parameter& parameter, const std::string& what) {
  throw ToolError(std::string(parameter.name) + " " + what);
}

json::Value checked_string(const Parameter& parameter, const Json& value) {
  if (!value.is_string()) fail(parameter, "must be a string");
  const auto& text = value.get_ref<const std::string&>();
  if (text.empty()) fail(parameter, "must not be empty: leave it out instead");
  if (text.size() > MOST_STRING_BYTES) {
    fail(parameter, "must not be longer than " + std::to_string(MOST_STRING_BYTES) + " bytes");
  }
  if (text.find('\0') != text.npos) fail(parameter, "must not hold the character NUL");
  if (!parameter.only_value.empty() && text != parameter.only_value) {
    fail(parameter,
         "must be " + std::string(parameter.only_value) + ", not " + git_utils::in_quotes(text));
  }
  return text;
}

/// The number, if it is a whole one that 64 bits hold: JSON knows but one kind, so 4000.0 is one.
std::optional<std::int64_t> whole_number(const Json& value) {
  constexpr double BEYOND = 9007199254740992.0;
  if (value.is_number_float()) {
    const double number = value.get<double>();
    if (std::trunc(number) != number || std::fabs(number) > BEYOND) return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (!value.is_number_integer()) return std::nullopt;
  if (value.is_number_unsigned()) {
    constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(std::min(value.get<std::uint64_t>(), MOST));
  }
  return value.get<std::int64_t>();
}

json::Value checked(const Parameter& parameter, const Json& value) {
  if (value.is_null()) return default_of(parameter);
  switch (parameter.type) {
    case Type::STRING:
      return checked_string(parameter, value);
    case Type::INTEGER: {
      const std::optional<std::int64_t> number = whole_number(value);
      if (!number || *number < parameter.least || *number > parameter.most) {
        fail(parameter, "must be an integer from " + std::to_string(parameter.least) + " to " +
                            std::to_string(parameter.most));
      }
      return *number;
    }
    case Type::BOOLEAN:
      if (!value.is_boolean()) fail(parameter, "must be true or false");
      return value.get<bool>();
  }
  return {};
}

[[noreturn]] void fail_on_unknown(std::span<const Parameter> parameters, const std::string& name) {
  std::vector<std::string_view> names;
  std::string all;
  for (const Parameter& parameter : parameters) {
    names.push_back(parameter.name);
    all.append(all.empty() ? "" : ", ").append(parameter.name);
  }
  throw ToolError("unknown argument " + git_utils::in_quotes(name) + did_you_mean(name, names) +
                  " (there are " + all + ")");
}

}  // namespace

json::Mapping input_schema(std::span<const Parameter> parameters) {
  json::Mapping properties;
  for (const Parameter& parameter : parameters) {
    properties.set(parameter.name, schema(parameter));
  }
  return {
      {"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

json::Mapping checked_arguments(std::span<const Parameter> parameters, const Json& arguments) {
  json::Mapping values;
  for (const Parameter& parameter : parameters) {
    const auto given = arguments.find(parameter.name);
    values.set(parameter.name,
               given == arguments.end() ? default_of(parameter) : checked(parameter, *given));
  }
  for (const auto& [name, value] : arguments.items()) {
    if (values.find(name) == nullptr) fail_on_unknown(parameters, name);
  }
  return values;
}

}  // namespace context_delta::server
