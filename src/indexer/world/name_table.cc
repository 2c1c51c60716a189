#include "indexer/world/name_table.h"

#include <algorithm>
#include <tuple>

namespace context_delta::indexer {

std::vector<Defined> defined(const Interface& facts) {
  std::vector<Defined> all;
  all.reserve(facts.definitions.size());
  for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
    const Definition& definition = facts.definitions[i];
    all.push_back({.name = definition.name,
                   .container = container_name(facts, static_cast<DefinitionIndex>(i)),
                   .kind = definition.kind,
                   .traits = definition.traits,
                   .least_arguments = definition.least_arguments,
                   .most_arguments = definition.most_arguments,
                   .first_line = definition.first_line});
  }
  return all;
}

void NameTable::add(std::uint32_t file, const std::vector<Defined>& definitions) {
  DefinitionIndex index = 0;
  for (const Defined& definition : definitions) {
    entries_.push_back({.name = number_of(definition.name),
                        .container = number_of(definition.container),
                        .file = file,
                        .definition = index++,
                        .first_line = definition.first_line,
                        .least_arguments = definition.least_arguments,
                        .most_arguments = definition.most_arguments,
                        .traits = definition.traits,
                        .kind = definition.kind});
  }
}

void NameTable::sort() {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.name, a.file, a.definition) < std::tie(b.name, b.file, b.definition);
  });
}

std::pair<const NameTable::Entry*, const NameTable::Entry*> NameTable::find(
    std::string_view name) const {
  const auto place = numbers_.find(name);
  if (place == numbers_.end()) return {nullptr, nullptr};
  struct ByName {
    bool operator()(const Entry& entry, std::uint32_t number) const { return entry.name < number; }
    bool operator()(std::uint32_t number, const Entry& entry) const { return number < entry.name; }
  };
  const Entry* begin = entries_.data();
  return std::equal_range(begin, begin + entries_.size(), place->second, ByName{});
}

std::uint32_t NameTable::number_of(const std::string& text) {
  const auto place = numbers_.find(text);
  if (place != numbers_.end()) return place->second;
  const auto number = static_cast<std::uint32_t>(texts_.size());
  numbers_.emplace(texts_.emplace_back(text), number);
  return number;
}

}  // namespace context_delta::indexer
