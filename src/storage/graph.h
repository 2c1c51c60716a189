#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace context_delta::storage {

class Database;

/// How much the index holds of its commit.
struct GraphSize {
  std::int64_t files = 0;  ///< without those that are skipped
  std::int64_t symbols = 0;
  std::int64_t proven_calls = 0;  ///< lines of export_calls()
  std::int64_t guessed_calls = 0;
};

/// Raises IndexError.
GraphSize graph_size(const Database& db);

/// Takes one line of JSON, without a line feed. The view ends with the call.
using LineSink = std::function<void(std::string_view line)>;

/// Every symbol of the index, by path and first line:
/// {"file","name","fqn","kind","start_line","end_line"}. Raises IndexError.
void export_symbols(const Database& db, const LineSink& sink);

/// Every call edge, by the caller's path and the line of the call:
/// {"caller_file","caller_name","caller_start_line","call_line","callee_file","callee_name",
/// "callee_start_line","proven","rule"}; `rule` of a guess is its relation. Calls at the top level
/// of a file have the caller "<module>" at line 1. Calls of one definition on the same line by the
/// same caller are one edge. Raises IndexError.
void export_calls(const Database& db, const LineSink& sink);

}  // namespace context_delta::storage
