#include "indexer/world/stale_keys.h"

#include <algorithm>
#include <map>

#include "indexer/world/name_table.h"
#include "indexer/world/world.h"

namespace context_delta::indexer {
namespace {

using IndexesByName = std::map<std::string_view, std::vector<DefinitionIndex>>;

IndexesByName by_name(const std::vector<Defined>& definitions) {
  IndexesByName names;
  DefinitionIndex index = 0;
  for (const Defined& definition : definitions) names[definition.name].push_back(index++);
  return names;
}

/// Whether no rule can tell them apart. Lines are not for rules to see.
bool is_same(const Defined& a, const Defined& b) {
  return a.kind == b.kind && a.traits == b.traits && a.least_arguments == b.least_arguments &&
         a.most_arguments == b.most_arguments && a.container == b.container;
}

std::string_view folder_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? "" : path.substr(0, slash);
}

void add_said(std::string_view path, std::string_view name, StaleKeys& stale) {
  stale.add(World::said_key(path, name));
  stale.add(World::said_in_key(folder_of(path), name));
}

/// Adds the keys of the names that the file says something else of.
void compare_names(std::string_view path, const Interface& before, const Interface& after,
                   StaleKeys& stale) {
  const auto old_names = name_hashes(before);
  const auto new_names = name_hashes(after);
  for (const auto& [name, hash] : old_names) {
    const auto counterpart = new_names.find(name);
    if (counterpart == new_names.end() || counterpart->second != hash) {
      add_said(path, name, stale);
    }
  }
  for (const auto& [name, hash] : new_names) {
    if (!old_names.contains(name)) add_said(path, name, stale);
  }
}

}  // namespace

std::vector<DefinitionIndex> compare_facts(const File& file, const Interface& before,
                                           const Interface& after, StaleKeys& stale) {
  const std::string_view path = file.path;
  if (interface_hash(before) != interface_hash(after)) {
    stale.add(World::interface_key(path));
    if (imports_hash(before) != imports_hash(after)) stale.add(World::imports_key(path));
    compare_names(path, before, after, stale);
  }
  const std::vector<Defined> old_definitions = defined(before);
  const std::vector<Defined> new_definitions = defined(after);
  const IndexesByName old_names = by_name(old_definitions);
  const IndexesByName new_names = by_name(new_definitions);
  const auto same = [&](DefinitionIndex a, DefinitionIndex b) {
    return is_same(old_definitions[static_cast<std::size_t>(a)],
                   new_definitions[static_cast<std::size_t>(b)]);
  };

  std::vector<DefinitionIndex> numbers(old_definitions.size(), NOWHERE);
  for (const auto& [name, indexes] : old_names) {
    const auto counterpart = new_names.find(name);
    if (counterpart == new_names.end() ||
        !std::equal(indexes.begin(), indexes.end(), counterpart->second.begin(),
                    counterpart->second.end(), same)) {
      stale.add(World::name_key(file.family, name));
      continue;
    }
    for (std::size_t i = 0; i < indexes.size(); ++i) {
      numbers[static_cast<std::size_t>(indexes[i])] = counterpart->second[i];
    }
  }
  for (const auto& [name, indexes] : new_names) {
    if (!old_names.contains(name)) stale.add(World::name_key(file.family, name));
  }
  return numbers;
}

void add_whole_file(const File& file, const Interface& facts, StaleKeys& stale) {
  const std::string_view path = file.path;
  stale.add(World::path_key(path));
  stale.add(World::interface_key(path));
  stale.add(World::imports_key(path));
  for (const auto& [said, hash] : name_hashes(facts)) add_said(path, said, stale);
  stale.add(World::folder_key(folder_of(path)));
  stale.add(World::basename_key(path.substr(path.rfind('/') + 1)));
  for (const Definition& definition : facts.definitions) {
    stale.add(World::name_key(file.family, definition.name));
  }
}

}  // namespace context_delta::indexer
