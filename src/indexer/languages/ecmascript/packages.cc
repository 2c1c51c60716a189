#include "indexer/languages/ecmascript/packages.h"

#include <algorithm>

#include "indexer/languages/ecmascript/modules.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::folder_of;

constexpr int MOST_EXTENDED = 6;

std::string place(std::string_view folder, std::string_view name) {
  return folder.empty() ? std::string(name) : std::string(folder) + "/" + std::string(name);
}

const std::string* value_of(const Interface& facts, std::string_view name) {
  for (const Binding& binding : facts.bindings) {
    if (binding.name == name) return &binding.value;
  }
  return nullptr;
}

/// The first key after `prefix`, and what follows it.
std::pair<std::string_view, std::string_view> key_after(std::string_view name,
                                                        std::string_view prefix) {
  if (!name.starts_with(prefix)) return {};
  name.remove_prefix(prefix.size());
  const std::size_t bar = name.find('|');
  if (bar == std::string_view::npos) return {name, {}};
  return {name.substr(0, bar), name.substr(bar + 1)};
}

template <class List>
std::vector<std::string>& targets_of(List& list, std::string_view key) {
  for (auto& [known, targets] : list) {
    if (known == key) return targets;
  }
  list.emplace_back(std::string(key), std::vector<std::string>());
  return list.back().second;
}

void add_patterns(PathMap& map, const Interface& facts) {
  if (!map.patterns.empty()) return;
  for (const Binding& binding : facts.bindings) {
    const auto [pattern, index] = key_after(binding.name, "compilerOptions|paths|");
    if (!pattern.empty()) targets_of(map.patterns, pattern).push_back(binding.value);
  }
}

PathMap read_map(const File& config, World& world) {
  PathMap map;
  const File* at = &config;
  for (int step = 0; step < MOST_EXTENDED && at != nullptr; ++step) {
    const Interface& facts = world.facts(*at);
    const bool had = !map.patterns.empty();
    add_patterns(map, facts);
    const std::string* base = value_of(facts, "compilerOptions|baseUrl");
    if (base != nullptr && !map.has_base) {
      map.has_base = true;
      map.folder = joined(folder_of(at->path), *base);
    }
    if (!had && !map.patterns.empty() && !map.has_base) map.folder = folder_of(at->path);
    const std::string* extended = value_of(facts, "extends");
    if (extended == nullptr) extended = value_of(facts, "extends|0");
    if (extended == nullptr || !extended->starts_with('.')) break;
    const std::string path = joined(folder_of(at->path), *extended);
    const File* next = world.file(path);
    if (next == nullptr) next = world.file(path + ".json");
    at = next == at ? nullptr : next;
  }
  return map;
}

void add_entry(Package& made, std::string_view name, const std::string& value) {
  for (const std::string_view key : {"exports", "imports"}) {
    if (name == key) targets_of(made.entries, ".").push_back(value);
    const auto [subpath, rest] = key_after(name, std::string(key) + "|");
    if (subpath.empty()) continue;
    const bool is_path = subpath.starts_with('.') || subpath.starts_with('#');
    targets_of(made.entries, is_path ? subpath : ".").push_back(value);
  }
}

bool lists_folder(const std::string& listing_folder, const std::vector<std::string>& patterns,
                  std::string_view folder) {
  return std::any_of(patterns.begin(), patterns.end(), [&](std::string_view pattern) {
    if (pattern.starts_with("./")) pattern.remove_prefix(2);
    while (pattern.ends_with('/')) pattern.remove_suffix(1);
    std::string whole = place(listing_folder, pattern);
    if (whole.ends_with("/**")) whole.pop_back();
    const Match match = match_pattern(whole, folder);
    const bool deep = pattern.ends_with("**");
    return match.matches && (deep || match.rest.find('/') == std::string_view::npos);
  });
}

bool is_workspace(std::string_view folder, World& world) {
  for (std::string_view around = folder; !around.empty();) {
    around = folder_of(around);
    for (const std::string_view name : {"package.json", "pnpm-workspace.yaml", "lerna.json"}) {
      const File* listing = world.file(place(around, name));
      if (listing == nullptr) continue;
      const Package& package = read_package(*listing, world);
      if (lists_folder(package.folder, package.workspaces, folder)) return true;
    }
  }
  return false;
}

}  // namespace

Match match_pattern(std::string_view pattern, std::string_view text) {
  const std::size_t star = pattern.find('*');
  if (star == std::string_view::npos) return {pattern == text, {}};
  const std::string_view before = pattern.substr(0, star);
  const std::string_view after = pattern.substr(star + 1);
  const bool matches = text.size() >= before.size() + after.size() && text.starts_with(before) &&
                       text.ends_with(after);
  if (!matches) return {};
  return {true, text.substr(before.size(), text.size() - before.size() - after.size())};
}

std::string with_rest(std::string_view target, std::string_view rest) {
  const std::size_t star = target.find('*');
  if (star == std::string_view::npos) return std::string(target);
  return std::string(target.substr(0, star)) + std::string(rest) +
         std::string(target.substr(star + 1));
}

const PathMap* path_map(std::string_view folder, World& world) {
  while (true) {
    for (const std::string_view name : {"tsconfig.json", "jsconfig.json"}) {
      const File* config = world.file(place(folder, name));
      if (config == nullptr) continue;
      const PathMap& map = world.remember<PathMap>("ecmascript:paths", *config,
                                                   [&] { return read_map(*config, world); });
      if (!map.empty()) return &map;
    }
    if (folder.empty()) return nullptr;
    folder = folder_of(folder);
  }
}

const Package& read_package(const File& manifest, World& world) {
  return world.remember<Package>("ecmascript:package", manifest, [&] {
    Package made;
    made.folder = folder_of(manifest.path);
    std::vector<std::string> mains;
    for (const Binding& binding : world.facts(manifest).bindings) {
      const std::string& name = binding.name;
      if (name == "name") made.name = binding.value;
      const bool listing = name.starts_with("workspaces|") ||
                           (name.starts_with("packages|") && !name.starts_with("packages||"));
      if (listing) made.workspaces.push_back(binding.value);
      if (name == "source" || name == "types" || name == "typings" || name == "module" ||
          name == "main") {
        mains.push_back(binding.value);
      }
      add_entry(made, name, binding.value);
    }
    std::vector<std::string>& root = targets_of(made.entries, ".");
    root.insert(root.end(), mains.begin(), mains.end());
    if (root.empty()) root.emplace_back("index.js");
    return made;
  });
}

const File* package_around(std::string_view folder, World& world) {
  while (true) {
    const File* manifest = world.file(place(folder, "package.json"));
    if (manifest != nullptr) return manifest;
    if (folder.empty()) return nullptr;
    folder = folder_of(folder);
  }
}

const File* workspace_package(std::string_view name, World& world) {
  const File* found = nullptr;
  for (const File* manifest : world.files_named("package.json")) {
    if (read_package(*manifest, world).name != name) continue;
    if (!is_workspace(folder_of(manifest->path), world)) continue;
    if (found != nullptr) return nullptr;
    found = manifest;
  }
  return found;
}

}  // namespace context_delta::indexer::ecmascript
