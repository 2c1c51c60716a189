#pragma once

#include <string>
#include <string_view>

#include "server/json_rpc.h"
#include "server/protocol.h"
#include "server/tools.h"

/// Tools in messages: the list of them, what a call asks for, its result.
namespace context_delta::server {

/// The field of the result that lists the tools.
std::string tool_list(const Revision& revision);

/// What a request to call a tool asks for.
struct ToolRequest {
  const Tool* tool;
  Json arguments;              ///< an object, not checked
  std::string progress_token;  ///< JSON text; empty when nobody wants to know of progress
};

/// Raises ProtocolError: no such tool, or the request is not well-formed.
ToolRequest read_tool_request(const Json& params);

/// The fields of a call's result.
std::string answer_fields(const Answer& answer, const Revision& revision);
/// The fields of a result that tells the model what it can mend.
std::string error_fields(std::string_view text);

}  // namespace context_delta::server
