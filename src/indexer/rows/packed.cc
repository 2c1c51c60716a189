#include "indexer/rows/packed.h"

#include <limits>

#include "indexer/model/varint.h"
#include "indexer/rows/compression.h"

namespace context_delta::indexer {
namespace {

/// A line as far from `line` as `bytes` say.
std::int64_t take_line(std::string_view& bytes, std::int64_t line) {
  constexpr std::int64_t MOST = std::numeric_limits<std::int32_t>::max();
  const std::int64_t distance = unfolded(take_number(bytes));
  if (distance < -line || distance > MOST - line) throw DamagedData();
  return line + distance;
}

}  // namespace

std::string pack_calls(std::span<const PackedCall> calls) {
  std::string bytes;
  std::int64_t line = 0;
  for (const PackedCall& call : calls) {
    append_number(bytes, static_cast<std::uint64_t>(call.caller));
    append_number(bytes, folded(call.line - line));
    append_number(bytes, folded(call.callee));
    append_number(bytes, static_cast<std::uint64_t>(call.evidence));
    line = call.line;
  }
  return bytes.empty() ? bytes : compressed(bytes);
}

std::vector<PackedCall> unpack_calls(std::string_view packed) {
  std::vector<PackedCall> calls;
  const std::string whole = packed.empty() ? std::string() : decompressed(packed);
  std::string_view bytes = whole;
  std::int64_t line = 0;
  while (!bytes.empty()) {
    PackedCall& call = calls.emplace_back();
    call.caller = static_cast<std::int64_t>(take_number(bytes));
    call.line = take_line(bytes, line);
    call.callee = unfolded(take_number(bytes));
    call.evidence = static_cast<std::int64_t>(take_number(bytes));
    line = call.line;
  }
  return calls;
}

std::string pack_uses(std::span<const Use> uses) {
  std::string bytes;
  for (const Use& use : uses) {
    append_number(bytes, static_cast<std::uint64_t>(use.file));
    append_number(bytes, static_cast<std::uint64_t>(use.count));
  }
  return bytes;
}

std::vector<Use> unpack_uses(std::string_view bytes) {
  std::vector<Use> uses;
  while (!bytes.empty()) {
    Use& use = uses.emplace_back();
    use.file = static_cast<std::int64_t>(take_number(bytes));
    use.count = static_cast<std::int64_t>(take_number(bytes));
  }
  return uses;
}

}  // namespace context_delta::indexer
