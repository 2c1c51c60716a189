#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// The keys of what a World was asked, as they are stored with a file and compared with what
/// changed.
namespace context_delta::indexer {

std::string pack_keys(std::span<const std::uint32_t> keys);

/// Keys of answers that changed.
class StaleKeys {
 public:
  void add(std::uint32_t key);
  bool empty() const { return keys_.empty(); }
  /// Whether any of a file's packed dependencies is among these.
  bool meet(std::string_view packed_keys) const;

 private:
  // Nearly all keys asked for are not stale: a small bit set turns them away.
  std::vector<bool> hints_ = std::vector<bool>(1 << 16);
  std::unordered_set<std::uint32_t> keys_;
};

}  // namespace context_delta::indexer
