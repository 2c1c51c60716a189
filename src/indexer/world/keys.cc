#include "indexer/world/keys.h"

#include <cstring>

namespace context_delta::indexer {

std::string pack_keys(std::span<const std::uint32_t> keys) {
  return {reinterpret_cast<const char*>(keys.data()), keys.size_bytes()};
}

void StaleKeys::add(std::uint32_t key) {
  hints_[key & 0xFFFF] = true;
  keys_.insert(key);
}

bool StaleKeys::meet(std::string_view packed_keys) const {
  for (std::size_t i = 0; i + sizeof(std::uint32_t) <= packed_keys.size(); i += 4) {
    std::uint32_t key = 0;
    std::memcpy(&key, packed_keys.data() + i, sizeof key);
    if (hints_[key & 0xFFFF] && keys_.contains(key)) return true;
  }
  return false;
}

}  // namespace context_delta::indexer
