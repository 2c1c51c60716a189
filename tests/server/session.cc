#include "server/session.h"

#include <array>
#include <csignal>
#include <stdexcept>

#include <poll.h>
#include <unistd.h>

#include "server/server.h"

namespace context_delta::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 120'000;

std::array<subprocess::FileDescriptor, 2> make_pipe() {
  std::array<int, 2> ends;
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  return {subprocess::FileDescriptor(ends[0]), subprocess::FileDescriptor(ends[1])};
}

}  // namespace

Session::Session(std::vector<std::filesystem::path> roots) {
  std::signal(SIGPIPE, SIG_IGN);
  auto in = make_pipe();
  auto out = make_pipe();
  to_server_ = std::move(in[1]);
  from_server_ = std::move(out[0]);
  thread_ =
      std::thread([roots = std::move(roots), in = std::move(in[0]), out = std::move(out[1])]() {
        server::Options options;
        options.roots = roots;
        options.jobs = 2;
        options.version = "1.2.3";
        server::serve(options, {in.get(), out.get(), -1});
      });
}

Session::~Session() {
  to_server_.close();
  from_server_.close();
  if (thread_.joinable()) thread_.join();
}

void Session::send_bytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(to_server_.get(), bytes.data(), bytes.size());
    if (count <= 0) throw std::runtime_error("the server does not read");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Session::send(std::string_view line) { send_bytes(std::string(line) + "\n"); }

void Session::call(const Json& id, const Json& arguments, const Json& more) {
  Json params = {{"name", "context"}, {"arguments", arguments}};
  params.update(more);
  send(Json{{"jsonrpc", "2.0"}, {"id", id}, {"method", "tools/call"}, {"params", params}}.dump());
}

bool Session::read_line(std::string& line) {
  while (true) {
    const std::size_t end = buffer_.find('\n');
    if (end != buffer_.npos) {
      line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return true;
    }
    pollfd waiting{from_server_.get(), POLLIN, 0};
    if (poll(&waiting, 1, PATIENCE_MILLISECONDS) <= 0) throw std::runtime_error("no line came");
    std::array<char, 65536> part;
    const ssize_t count = read(from_server_.get(), part.data(), part.size());
    if (count <= 0) return false;
    buffer_.append(part.data(), static_cast<std::size_t>(count));
  }
}

Json Session::receive() {
  std::string line;
  if (!read_line(line)) throw std::runtime_error("the server has ended");
  Json value = Json::parse(line);
  if (!value.is_object() || value["jsonrpc"] != "2.0") {
    throw std::runtime_error("no message: " + line);
  }
  return value;
}

Json Session::answer() {
  while (true) {
    Json value = receive();
    if (!value.contains("method")) return value;
  }
}

std::vector<Json> Session::finish() {
  to_server_.close();
  std::vector<Json> rest;
  std::string line;
  while (read_line(line)) rest.push_back(Json::parse(line));
  if (!buffer_.empty()) throw std::runtime_error("half a line: " + buffer_);
  thread_.join();
  return rest;
}

void Session::abandon() {
  to_server_.close();
  thread_.join();
}

Json Session::open(std::string_view revision) {
  send(R"({"jsonrpc":"2.0","id":"open","method":"initialize","params":{"protocolVersion":")" +
       std::string(revision) +
       R"(","capabilities":{},"clientInfo":{"name":"test","version":"1"}}})");
  send(R"({"jsonrpc":"2.0","method":"notifications/initialized"})");
  return answer();
}

Json envelope(std::string_view revision) {
  return {{"_meta",
           {{"io.modelcontextprotocol/protocolVersion", revision},
            {"io.modelcontextprotocol/clientCapabilities", Json::object()}}}};
}

}  // namespace context_delta::test
