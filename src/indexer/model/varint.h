#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "indexer/model/facts.h"

/// Whole numbers in as few bytes as they need, seven bits a byte, the lowest first.
namespace context_delta::indexer {

inline void append_number(std::string& bytes, std::uint64_t number) {
  for (; number >= 128; number >>= 7) bytes += static_cast<char>(number | 128);
  bytes += static_cast<char>(number);
}

/// Small numbers of either sign as small numbers without one.
constexpr std::uint64_t folded(std::int64_t number) {
  return (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
}
constexpr std::int64_t unfolded(std::uint64_t number) {
  return static_cast<std::int64_t>((number >> 1) ^ (~(number & 1) + 1));
}

/// Takes a number off the front of `bytes`. Raises DamagedData when there is none.
inline std::uint64_t take_number(std::string_view& bytes) {
  std::uint64_t number = 0;
  for (int shift = 0; shift < 64 && !bytes.empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    number |= std::uint64_t{byte & 127u} << shift;
    if (byte < 128) return number;
  }
  throw DamagedData();
}

}  // namespace context_delta::indexer
