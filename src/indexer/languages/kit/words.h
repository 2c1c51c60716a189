#pragma once

#include <algorithm>
#include <array>
#include <string_view>

/// Looking up what tables of words and records say (tables/tables_to_header.cc makes them, in the
/// order of their keys).
namespace context_delta::indexer::kit {

template <std::size_t COUNT>
bool has_word(const std::array<std::string_view, COUNT>& words, std::string_view word) {
  return std::binary_search(words.begin(), words.end(), word);
}

/// The record with this key; null when there is none.
template <std::size_t FIELDS, std::size_t COUNT>
const std::array<std::string_view, FIELDS>* find_record(
    const std::array<std::array<std::string_view, FIELDS>, COUNT>& records, std::string_view key) {
  const auto place = std::lower_bound(
      records.begin(), records.end(), key,
      [](const auto& record, std::string_view wanted) { return record[0] < wanted; });
  return place == records.end() || (*place)[0] != key ? nullptr : &*place;
}

}  // namespace context_delta::indexer::kit
