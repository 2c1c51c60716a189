#include "server/json_rpc.h"

#include <algorithm>
#include <utility>

#include "utils/json.h"

namespace context_delta::server {
namespace {

constexpr int MOST_NESTING = 64;
constexpr std::size_t MOST_BATCHED = 100;

/// How deep lists and objects of a JSON text are nested; anything for other texts.
int nesting(std::string_view text) {
  int depth = 0;
  int deepest = 0;
  bool in_string = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_string) {
      if (c == '\\') ++i;
      if (c == '"') in_string = false;
    } else if (c == '"') {
      in_string = true;
    } else if (c == '[' || c == '{') {
      deepest = std::max(deepest, ++depth);
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return deepest;
}

Message invalid(ErrorCode code, std::string problem) {
  Message message;
  message.code = code;
  message.problem = std::move(problem);
  return message;
}

Message invalid(std::string problem) {
  return invalid(ErrorCode::INVALID_REQUEST, std::move(problem));
}

/// A message that is understood so far as to have an id.
Message with_method(Json& value, std::string id) {
  Message message;
  message.id = std::move(id);
  if (!value["method"].is_string()) {
    message.problem = "the method must be a string";
    return message;
  }
  message.method = value["method"].get<std::string>();
  if (value.contains("params")) message.params = std::move(value["params"]);
  if (!message.params.is_object()) {
    message.code = ErrorCode::INVALID_PARAMS;
    message.problem = "params must be an object";
    return message;
  }
  message.kind = value.contains("id") ? Message::Kind::REQUEST : Message::Kind::NOTIFICATION;
  return message;
}

Message read_message(Json& value) {
  if (!value.is_object()) return invalid("a message must be an object");
  std::string id = "null";
  if (value.contains("id")) {
    id = id_text(value["id"]);
    if (id.empty()) return invalid("the id must be a string or an integer");
  }
  const auto version = value.find("jsonrpc");
  if (version == value.end() || *version != "2.0") {
    Message message = invalid("a message must have \"jsonrpc\": \"2.0\"");
    message.id = std::move(id);
    return message;
  }
  if (value.contains("method")) return with_method(value, std::move(id));
  if (value.contains("result") || value.contains("error")) {
    Message message;
    message.kind = Message::Kind::RESPONSE;
    return message;
  }
  Message message = invalid("a message must have a method");
  message.id = std::move(id);
  return message;
}

Received read_batch(Json& list) {
  Received received;
  received.is_batch = true;
  if (list.empty() || list.size() > MOST_BATCHED) {
    received.messages.push_back(invalid("a batch must hold 1 to " + std::to_string(MOST_BATCHED) +
                                        " messages, not " + std::to_string(list.size())));
    return received;
  }
  for (Json& value : list) received.messages.push_back(read_message(value));
  return received;
}

}  // namespace

std::string id_text(const Json& value) {
  std::string text;
  if (value.is_string()) {
    json::append_quoted(text, value.get_ref<const std::string&>());
  } else if (value.is_number_unsigned()) {
    text = std::to_string(value.get<std::uint64_t>());
  } else if (value.is_number_integer()) {
    text = std::to_string(value.get<std::int64_t>());
  }
  return text;
}

Received read_messages(std::string_view line) {
  Received received;
  if (nesting(line) > MOST_NESTING) {
    received.messages.push_back(invalid("a message must not be nested more than " +
                                        std::to_string(MOST_NESTING) + " deep"));
    return received;
  }
  try {
    Json value = Json::parse(line);
    if (value.is_array()) return read_batch(value);
    received.messages.push_back(read_message(value));
  } catch (const Json::parse_error& error) {
    received.messages.push_back(invalid(
        ErrorCode::PARSE_ERROR, "the line is no JSON text, from its byte " +
                                    std::to_string(error.byte) + " on: send one message a line"));
  } catch (const Json::exception&) {
    received.messages.push_back(
        invalid(ErrorCode::PARSE_ERROR, "the line holds a number beyond all bounds"));
  }
  return received;
}

std::string result_line(std::string_view id, std::string_view result) {
  std::string line = "{\"jsonrpc\": \"2.0\", \"id\": ";
  return line.append(id).append(", \"result\": ").append(result).append("}");
}

std::string error_line(std::string_view id, const ProtocolError& error) {
  std::string line = "{\"jsonrpc\": \"2.0\", \"id\": ";
  line.append(id).append(", \"error\": {\"code\": ");
  line += std::to_string(static_cast<int>(error.code)) + ", \"message\": ";
  json::append_quoted(line, error.what());
  if (!error.data.empty()) line += ", \"data\": " + error.data;
  return line + "}}";
}

std::string notification_line(std::string_view method, std::string_view params) {
  std::string line = "{\"jsonrpc\": \"2.0\", \"method\": ";
  json::append_quoted(line, method);
  return line.append(", \"params\": ").append(params).append("}");
}

}  // namespace context_delta::server
