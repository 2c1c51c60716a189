#pragma once

#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the index stores of a resolved file as bytes: read back when the file is resolved again.
namespace context_delta::indexer {

/// A call out of a file. `callee` is a symbol's id, or the negative id of a dispatch; `caller` is a
/// symbol's number within the file.
struct PackedCall {
  std::int64_t caller = 0;
  std::int64_t line = 1;
  std::int64_t callee = 0;
  std::int64_t evidence = 0;
  friend auto operator<=>(const PackedCall&, const PackedCall&) = default;
};

/// Proven references of a file into another one.
struct Use {
  std::int64_t file = 0;
  std::int64_t count = 0;
  friend bool operator==(const Use&, const Use&) = default;
};

/// All unpack functions raise DamagedData on bytes that pack functions did not make.
std::string pack_calls(std::span<const PackedCall> calls);
std::vector<PackedCall> unpack_calls(std::string_view packed);
std::string pack_uses(std::span<const Use> uses);
std::vector<Use> unpack_uses(std::string_view bytes);

}  // namespace context_delta::indexer
