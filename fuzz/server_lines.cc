#include <array>

#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/require.h"
#include "server/server.h"
#include "utils/subprocess.h"

// All that a client sends: every line that comes back is a message, and a last request is answered.
// The only root is no folder, so that no call gets as far as git.
using namespace context_delta;
using Json = nlohmann::json;

namespace {

constexpr std::string_view PROBE = "\n{\"jsonrpc\":\"2.0\",\"id\":\"probe\",\"method\":\"ping\"}\n";

/// A file in memory with these bytes, to be read from its start.
subprocess::FileDescriptor file_with(const std::string& bytes) {
  subprocess::FileDescriptor file(memfd_create("lines", MFD_CLOEXEC));
  const auto size = static_cast<ssize_t>(bytes.size());
  fuzz::require(write(file.get(), bytes.data(), bytes.size()) == size, "a file takes bytes");
  lseek(file.get(), 0, SEEK_SET);
  return file;
}

std::string content(int file) {
  std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  const auto size = static_cast<ssize_t>(text.size());
  fuzz::require(pread(file, text.data(), text.size(), 0) == size, "a file gives bytes");
  return text;
}

/// Whether it answers the probe.
bool check_line(std::string_view line) {
  const Json message = Json::parse(line, nullptr, false);
  fuzz::require(message.is_object() && message.value("jsonrpc", "") == "2.0",
                "a line is a message");
  if (message.contains("method")) {
    fuzz::require(!message.contains("id"), "nothing is asked of the client");
    return false;
  }
  fuzz::require(message.contains("id"), "an answer says to what");
  fuzz::require(message.contains("result") != message.contains("error"), "one of two");
  if (message.contains("error")) {
    const Json& error = message["error"];
    fuzz::require(error["code"].is_number_integer() && error["message"].is_string(), "an error");
  }
  return message["id"] == "probe" && message.contains("result");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto in = file_with(std::string(fuzz::text_of(data, size)) + std::string(PROBE));
  const auto out = file_with("");
  const server::Options options{.roots = {"/dev/null/none"}, .jobs = 1, .version = "1", .log = {}};
  server::serve(options, {in.get(), out.get(), -1});
  const std::string text = content(out.get());
  fuzz::require(text.ends_with('\n'), "the last line is whole");
  std::string_view rest = text;
  bool is_answered = false;
  while (!rest.empty()) is_answered |= check_line(fuzz::take_part(rest, '\n'));
  fuzz::require(is_answered, "the server goes on");
  return 0;
}
