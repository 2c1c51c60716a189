#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/model/facts.h"

namespace context_delta::indexer {

/// What Candidate says of a definition, without its file.
struct Defined {
  std::string name;
  std::string container;  ///< container_name of it; empty at the top level
  Kind kind = Kind::FUNCTION;
  std::uint16_t traits = 0;
  std::int16_t least_arguments = 0;
  std::int16_t most_arguments = ANY_NUMBER;
  std::int32_t first_line = 1;
};

/// The definitions of some facts, in their order.
std::vector<Defined> defined(const Interface& facts);

/// The definitions of many files by name, in little memory: filled first, then asked.
class NameTable {
 public:
  struct Entry {
    std::uint32_t name = 0;
    std::uint32_t container = 0;
    std::uint32_t file = 0;  ///< as given to add()
    DefinitionIndex definition = NOWHERE;
    std::int32_t first_line = 1;
    std::int16_t least_arguments = 0;
    std::int16_t most_arguments = ANY_NUMBER;
    std::uint16_t traits = 0;
    Kind kind = Kind::FUNCTION;
  };

  void add(std::uint32_t file, const std::vector<Defined>& definitions);
  /// Ends the filling.
  void sort();
  /// All definitions of a name, by file, then by definition.
  std::pair<const Entry*, const Entry*> find(std::string_view name) const;
  std::string_view container(const Entry& entry) const { return texts_[entry.container]; }

 private:
  std::uint32_t number_of(const std::string& text);

  std::deque<std::string> texts_;
  std::unordered_map<std::string_view, std::uint32_t> numbers_;
  std::vector<Entry> entries_;
};

}  // namespace context_delta::indexer
