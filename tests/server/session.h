#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "utils/subprocess.h"

namespace context_delta::test {

using Json = nlohmann::json;

/// A server on a thread, and its client's ends of the streams.
class Session {
 public:
  explicit Session(std::vector<std::filesystem::path> roots);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Writes these bytes.
  void send_bytes(std::string_view bytes);
  /// Writes a line.
  void send(std::string_view line);
  /// Writes a request to call `context`; `more` is put into its params.
  void call(const Json& id, const Json& arguments, const Json& more = Json::object());

  /// The next line. Throws when it is no JSON object, when the server has ended, or none comes.
  Json receive();
  /// The next line that is no notification.
  Json answer();

  /// Ends the input and returns what still came. Throws when the server does not end.
  std::vector<Json> finish();

  /// Ends the input and reads nothing more. Returns when the server has ended.
  void abandon();

  /// The handshake of a revision.
  Json open(std::string_view revision = "2025-11-25");

 private:
  bool read_line(std::string& line);

  subprocess::FileDescriptor to_server_, from_server_;
  std::string buffer_;
  std::thread thread_;
};

/// The envelope of a stateless request.
Json envelope(std::string_view revision = "2026-07-28");

}  // namespace context_delta::test
