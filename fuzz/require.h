#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// What every fuzz target needs. A target is a function over bytes: what it must not do is crash,
/// run away in time or memory (libFuzzer's limits), or break what it requires.
namespace context_delta::fuzz {

/// Ends the run as a finding.
inline void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Cuts the first byte off; 0 when there is none.
inline unsigned take_byte(std::string_view& bytes) {
  if (bytes.empty()) return 0;
  const auto byte = static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  return byte;
}

/// Cuts off what stands before the next `mark`, and the mark.
inline std::string_view take_part(std::string_view& bytes, char mark) {
  const std::string_view part = bytes.substr(0, bytes.find(mark));
  bytes.remove_prefix(part.size() < bytes.size() ? part.size() + 1 : part.size());
  return part;
}

}  // namespace context_delta::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
