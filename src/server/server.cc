#include "server/server.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <utility>

#include <poll.h>

#include "server/calls.h"
#include "server/json_rpc.h"
#include "server/line_reader.h"
#include "server/line_writer.h"
#include "server/progress.h"
#include "server/protocol.h"
#include "server/tool_messages.h"
#include "utils/git_utils.h"

namespace context_delta::server {
namespace {

/// The longest line that is read: far more than any call needs, so that what a host sends by
/// mistake still gets an answer of its own.
constexpr std::size_t MOST_LINE_BYTES = 16 << 20;

std::string instructions(const Roots& roots) {
  return "Tells what a branch changed, for review: call the tool context with action delta before "
         "reading a diff. It may look into " +
         roots.listed() + ".";
}

class Server {
 public:
  Server(const Options& options, const Streams& streams)
      : options_(options),
        streams_(streams),
        surroundings_{Roots(options.roots), options.jobs, options.token_scale},
        introduction_{options.version, instructions(surroundings_.roots)},
        reader_(streams.in, MOST_LINE_BYTES),
        writer_(streams.out, streams.stop, streams.in),
        calls_(writer_) {}

  void run() {
    while (wait_for_input()) {
      const bool goes_on = reader_.read();
      while (const auto line = reader_.next()) handle_line(*line);
      if (!goes_on) return;
    }
  }

 private:
  struct Method {
    std::string_view name;
    bool in_stateless;  ///< stateless revisions have it
    void (Server::*answer)(const Message& request, const Revision& revision);
  };
  static constexpr std::string_view DISCOVER = "server/discover";
  static constexpr std::string_view PING = "ping";
  static const std::array<Method, 4> METHODS;

  /// False when it is time to end.
  bool wait_for_input() const {
    while (true) {
      std::array<pollfd, 4> waiting = {{{streams_.in, POLLIN, 0},
                                        {streams_.out, 0, 0},  // errors only: nobody reads it
                                        {streams_.stop, POLLIN, 0},
                                        {writer_.broken(), POLLIN, 0}}};
      if (poll(waiting.data(), waiting.size(), -1) < 0) {
        if (errno == EINTR) continue;
        return false;
      }
      const auto has_come = [](const pollfd& each) { return each.revents != 0; };
      if (std::any_of(waiting.begin() + 1, waiting.end(), has_come)) return false;
      if (has_come(waiting[0])) return true;
    }
  }

  void log(const std::string& line) const {
    if (options_.log) options_.log(line);
  }

  void handle_line(const LineReader::Line& line) {
    if (line.too_long) {
      refuse("null", {ErrorCode::INVALID_REQUEST, "a message must not be longer than " +
                                                      std::to_string(MOST_LINE_BYTES) + " bytes"});
      return;
    }
    if (line.text.find_first_not_of(" \t\r") == line.text.npos) return;
    const Received received = read_messages(line.text);
    if (received.is_batch && (revision_ == nullptr || !revision_->batches)) {
      refuse("null", {ErrorCode::INVALID_REQUEST,
                      "batches belong to the revision 2025-03-26: send each message on a line of "
                      "its own"});
      return;
    }
    for (const Message& message : received.messages) handle(message);
  }

  void handle(const Message& message) {
    try {
      switch (message.kind) {
        case Message::Kind::REQUEST:
          return answer(message);
        case Message::Kind::NOTIFICATION:
          return take_note(message);
        case Message::Kind::RESPONSE:  // nothing was asked
          return;
        case Message::Kind::INVALID:
          throw ProtocolError(message.code, message.problem);
      }
    } catch (const ProtocolError& error) {
      refuse(message.id, error);
    } catch (const std::exception& error) {
      refuse(message.id, {ErrorCode::INTERNAL_ERROR, error.what()});
    }
  }

  void refuse(const std::string& id, const ProtocolError& error) {
    log(std::string("refused: ") + error.what());
    writer_.write(error_line(id, error));
  }

  void take_note(const Message& message) {
    if (message.method != "notifications/cancelled") return;
    const auto id = message.params.find("requestId");
    if (id != message.params.end()) calls_.cancel(id_text(*id));
  }

  void answer(const Message& request) {
    if (request.method == "initialize") return answer_initialize(request);
    const auto method = std::find_if(METHODS.begin(), METHODS.end(), [&](const Method& each) {
      return each.name == request.method;
    });
    if (method == METHODS.end()) fail_on_method(request.method);
    const Revision& revision = revision_of(request);
    if (revision.stateless && !method->in_stateless) fail_on_method(request.method);
    (this->*method->answer)(request, revision);
  }

  [[noreturn]] static void fail_on_method(const std::string& name) {
    throw ProtocolError(ErrorCode::METHOD_NOT_FOUND,
                        "there is no method " + git_utils::in_quotes(name));
  }

  /// What a request is answered by: its own envelope, else the handshake. Raises ProtocolError when
  /// there was neither.
  const Revision& revision_of(const Message& request) const {
    if (!has_envelope(request.params) && request.method != DISCOVER) {
      if (revision_ != nullptr) return *revision_;
      if (request.method == PING) return newest_with_handshake();
    }
    return revision_of_envelope(request.params);
  }

  void complete(const Message& request, const Revision& revision, const std::string& fields) {
    writer_.write(result_line(request.id, completed(introduction_, revision, fields)));
  }

  void answer_initialize(const Message& request) {
    revision_ = &negotiated(request.params);
    writer_.write(result_line(request.id, initialize_result(introduction_, *revision_)));
  }

  void answer_ping(const Message& request, const Revision& revision) {
    complete(request, revision, "");
  }

  void answer_discover(const Message& request, const Revision& revision) {
    writer_.write(result_line(request.id, discover_result(introduction_, revision)));
  }

  void answer_list(const Message& request, const Revision& revision) {
    if (request.params.contains("cursor") && !request.params["cursor"].is_null()) {
      throw ProtocolError(ErrorCode::INVALID_PARAMS, "unknown cursor: there is one page of tools");
    }
    complete(request, revision, cache_fields(revision) + tool_list(revision));
  }

  void answer_call(const Message& request, const Revision& revision) {
    auto asked = std::make_shared<const ToolRequest>(read_tool_request(request.params));
    calls_.start(request.id, [this, asked, &revision, id = request.id](CancelFlag cancelled) {
      return call_line(id, *asked, revision, cancelled);
    });
  }

  /// The line that answers a call. Raises Cancelled.
  std::string call_line(const std::string& id, const ToolRequest& asked, const Revision& revision,
                        CancelFlag cancelled) {
    try {
      return result_line(
          id, completed(introduction_, revision, call_fields(asked, revision, cancelled)));
    } catch (const Cancelled&) {
      log("call " + id + " was cancelled");
      throw;
    } catch (const std::exception& error) {
      log("call " + id + " failed: " + error.what());
      return error_line(id, {ErrorCode::INTERNAL_ERROR, error.what()});
    }
  }

  std::string call_fields(const ToolRequest& asked, const Revision& revision,
                          CancelFlag cancelled) {
    try {
      const json::Mapping arguments = checked_arguments(asked.tool->parameters, asked.arguments);
      Progress progress(writer_, asked.progress_token, cancelled);
      Call call{arguments, cancelled, {}};
      if (!asked.progress_token.empty()) {
        call.progress = [&](std::string_view phase, std::int64_t done, std::int64_t total) {
          progress.update(phase, done, total);
        };
      }
      return answer_fields(asked.tool->call(surroundings_, call), revision);
    } catch (const ToolError& error) {
      return error_fields(error.what());
    }
  }

  const Options& options_;
  Streams streams_;
  Surroundings surroundings_;
  Introduction introduction_;
  LineReader reader_;
  LineWriter writer_;
  const Revision* revision_ = nullptr;  // of the handshake; null before it
  Calls calls_;                         // last: its threads use the others
};

const std::array<Server::Method, 4> Server::METHODS = {{
    {PING, false, &Server::answer_ping},
    {DISCOVER, true, &Server::answer_discover},
    {"tools/call", true, &Server::answer_call},
    {"tools/list", true, &Server::answer_list},
}};

}  // namespace

void serve(const Options& options, const Streams& streams) { Server(options, streams).run(); }

}  // namespace context_delta::server
