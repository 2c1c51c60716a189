#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// The tool server: the Model Context Protocol over two streams, one JSON object a line.
namespace context_delta::server {

struct Options {
  /// The folders that calls may look into: absolute, links resolved, at least one.
  std::vector<std::filesystem::path> roots;
  unsigned jobs = 0;  ///< threads of one call that indexes; 0: as many as the machine runs at once
  std::int64_t token_scale = 100;  ///< percent: what a token of the host's model counts here
  std::string version;             ///< of this program
  /// Takes one line about what happened; called by several threads. Null: nobody wants to know.
  std::function<void(std::string_view line)> log;
};

struct Streams {
  int in = 0;
  int out = 1;
  int stop = -1;  ///< once this can be read from, the server ends; negative: never
};

/// Serves until `in` ends, the reader of `out` is gone or `stop` says so. What is under way then is
/// given up and every index is whole. Nothing but messages is written to `out`. Raises nothing for
/// anything that a client sends.
void serve(const Options& options, const Streams& streams);

}  // namespace context_delta::server
