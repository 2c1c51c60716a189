#include "server/tool_messages.h"

#include <vector>

#include "utils/git_utils.h"
#include "utils/suggestion.h"

namespace context_delta::server {
namespace {

json::Mapping definition(const Tool& tool, const Revision& revision) {
  json::Mapping row = {{"name", tool.name}};
  if (revision.structured_output) row.set("title", tool.title);
  row.set("description", tool.description);
  row.set("inputSchema", input_schema(tool.parameters));
  if (revision.tool_annotations) {
    row.set("annotations", json::Mapping{{"title", tool.title},
                                         {"readOnlyHint", true},
                                         {"destructiveHint", false},
                                         {"idempotentHint", true},
                                         {"openWorldHint", false}});
  }
  return row;
}

std::string text_content(std::string_view text) {
  std::string fields = "\"content\": [{\"type\": \"text\", \"text\": ";
  json::append_quoted(fields, text);
  return fields + "}]";
}

const Tool& tool_called(const Json& params) {
  const auto name = params.find("name");
  if (name == params.end() || !name->is_string()) {
    throw ProtocolError(ErrorCode::INVALID_PARAMS, "tools/call needs the name of a tool");
  }
  const auto& text = name->get_ref<const std::string&>();
  if (const Tool* tool = find_tool(text)) return *tool;
  std::vector<std::string_view> names;
  for (const Tool* tool : tools()) names.push_back(tool->name);
  throw ProtocolError(ErrorCode::INVALID_PARAMS, "unknown tool " + git_utils::in_quotes(text) +
                                                     did_you_mean(text, names) +
                                                     " (tools/list lists them)");
}

Json arguments_of(const Json& params) {
  const auto arguments = params.find("arguments");
  if (arguments == params.end() || arguments->is_null()) return Json::object();
  if (!arguments->is_object()) {
    throw ProtocolError(ErrorCode::INVALID_PARAMS, "the arguments must be an object");
  }
  return *arguments;
}

std::string progress_token(const Json& params) {
  const auto meta = params.find("_meta");
  if (meta == params.end() || !meta->is_object() || !meta->contains("progressToken")) return "";
  std::string token = id_text(meta->at("progressToken"));
  if (!token.empty()) return token;
  throw ProtocolError(ErrorCode::INVALID_PARAMS,
                      "the progressToken must be a string or an integer");
}

}  // namespace

std::string tool_list(const Revision& revision) {
  std::string text = "\"tools\": [";
  for (const Tool* tool : tools()) {
    if (tool != tools().front()) text += ", ";
    text += json::compact_text(definition(*tool, revision));
    if (!revision.structured_output) continue;
    text.pop_back();
    text += ",\"outputSchema\":" + tool->output_schema() + "}";
  }
  return text + "]";
}

ToolRequest read_tool_request(const Json& params) {
  return {&tool_called(params), arguments_of(params), progress_token(params)};
}

std::string answer_fields(const Answer& answer, const Revision& revision) {
  const std::string content = json::compact_text(answer.content);
  // The same text twice: some hosts hand one half to the model, some the other.
  std::string fields = text_content(content);
  if (revision.structured_output) fields += ", \"structuredContent\": " + content;
  return fields + ", \"isError\": " + (answer.is_error ? "true" : "false");
}

std::string error_fields(std::string_view text) {
  return text_content(text) + ", \"isError\": true";
}

}  // namespace context_delta::server
