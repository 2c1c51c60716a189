#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

/// JSON-RPC 2.0: lines to messages, answers to lines.
namespace context_delta::server {

using Json = nlohmann::json;

enum class ErrorCode : int {
  PARSE_ERROR = -32700,
  INVALID_REQUEST = -32600,
  METHOD_NOT_FOUND = -32601,
  INVALID_PARAMS = -32602,
  INTERNAL_ERROR = -32603,
  UNSUPPORTED_PROTOCOL_VERSION = -32022,
};

/// Why a message gets an error instead of a result. The text is one line: what, and what to do.
class ProtocolError : public std::runtime_error {
 public:
  ProtocolError(ErrorCode error_code, const std::string& text, std::string json_data = "")
      : std::runtime_error(text), code(error_code), data(std::move(json_data)) {}
  ErrorCode code;
  std::string data;  ///< JSON text; empty for none
};

/// One message of a client.
struct Message {
  enum class Kind { REQUEST, NOTIFICATION, RESPONSE, INVALID };
  Kind kind = Kind::INVALID;
  std::string id = "null";  ///< JSON text: a string or an integer; null when it cannot be told
  std::string method;
  Json params = Json::object();                 ///< an object
  ErrorCode code = ErrorCode::INVALID_REQUEST;  ///< of INVALID ones, with `problem`
  std::string problem;
};

/// The messages of a line.
struct Received {
  std::vector<Message> messages;  ///< one, if it is no batch
  bool is_batch = false;
};

/// Reads a line. What cannot be understood is an INVALID message; nothing is raised. Texts that
/// are not UTF-8 or hold lone surrogates are not understood, nor is anything nested too deeply.
Received read_messages(std::string_view line);

/// The lines (without line feed) that answer a request or tell something. `id` and `result` and
/// `params` are JSON text.
std::string result_line(std::string_view id, std::string_view result);
std::string error_line(std::string_view id, const ProtocolError& error);
std::string notification_line(std::string_view method, std::string_view params);

/// The JSON text of a string or an integer; empty for any other value, numbers with a fraction
/// among them.
std::string id_text(const Json& value);

}  // namespace context_delta::server
