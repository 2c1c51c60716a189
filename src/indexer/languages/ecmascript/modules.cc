#include "indexer/languages/ecmascript/modules.h"

#include <array>
#include <vector>

#include "indexer/languages/ecmascript/packages.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::folder_of;

constexpr std::array<std::string_view, 10> SUFFIXES = {".ts", ".tsx", ".d.ts", ".mts", ".cts",
                                                       ".js", ".jsx", ".mjs",  ".cjs", ".d.mts"};
constexpr std::size_t FIRST_UNTYPED = 5;

bool is_typed(const File& file) { return file.language != "javascript"; }

const File* with_suffix(const std::string& path, bool typed, World& world) {
  for (std::size_t i = 0; i < SUFFIXES.size(); ++i) {
    const std::size_t at = typed ? i : (i + FIRST_UNTYPED) % SUFFIXES.size();
    const File* found = world.file(path + std::string(SUFFIXES[at]));
    if (found != nullptr) return found;
  }
  return nullptr;
}

/// TypeScript writes the suffix of what it will be compiled to.
const File* source_of(std::string_view path, World& world) {
  for (const std::string_view suffix : {".js", ".mjs", ".cjs", ".jsx"}) {
    if (!path.ends_with(suffix)) continue;
    const std::string stem(path.substr(0, path.size() - suffix.size()));
    for (const std::string_view typed : {".ts", ".tsx", ".mts", ".cts", ".d.ts"}) {
      const File* found = world.file(stem + std::string(typed));
      if (found != nullptr) return found;
    }
  }
  return nullptr;
}

const File* exact(const std::string& path, World& world) {
  const File* found = world.file(path);
  return found != nullptr && is_in_family(found->language) ? found : nullptr;
}

bool is_built(std::string_view folder) {
  for (const std::string_view each : {"dist", "lib", "build", "out", "es", "esm", "cjs", "types"}) {
    if (folder == each) return true;
  }
  return false;
}

/// The source that a package's built file is probably made of: `dist/x.js` of `src/x.ts`.
const File* built_from(const Package& package, std::string_view target, World& world) {
  if (target.starts_with("./")) target.remove_prefix(2);
  std::vector<std::string_view> parts = kit::split(without_suffix(target), '/');
  while (!parts.empty() && is_built(parts.front())) parts.erase(parts.begin());
  std::string inner;
  for (const std::string_view part : parts) inner += "/" + std::string(part);
  const std::string source = joined(package.folder, "src");
  const File* found = inner.empty() ? nullptr : module_at(source + inner, true, world);
  return found;
}

ModuleAnswer entry_of(const Package& package, std::string_view subpath, World& world) {
  for (const auto& [pattern, targets] : package.entries) {
    const Match match = match_pattern(pattern, subpath);
    if (!match.matches) continue;
    for (const std::string& target : targets) {
      const File* found =
          module_at(joined(package.folder, with_rest(target, match.rest)), true, world);
      if (found != nullptr) return {found, true};
    }
    for (const std::string& target : targets) {
      const File* found = built_from(package, with_rest(target, match.rest), world);
      if (found != nullptr) return {found, false};
    }
  }
  if (subpath.starts_with('#')) return {};
  if (subpath == ".") {
    const File* source = module_at(joined(package.folder, "src/index"), true, world);
    if (source != nullptr) return {source, false};
    return {module_at(joined(package.folder, "index"), false, world), true};
  }
  const File* direct = module_at(joined(package.folder, subpath), false, world);
  if (direct != nullptr) return {direct, true};
  return {built_from(package, subpath, world), false};
}

ModuleAnswer find_mapped(const File& importer, std::string_view specifier, World& world) {
  const PathMap* known = path_map(folder_of(importer.path), world);
  if (known == nullptr) return {};
  const PathMap& map = *known;
  const std::vector<std::string>* best = nullptr;
  std::string_view rest;
  std::size_t longest = 0;
  for (const auto& [pattern, targets] : map.patterns) {
    const Match match = match_pattern(pattern, specifier);
    const std::size_t fixed = pattern.find('*');
    const std::size_t length = fixed == std::string::npos ? pattern.size() + 1 : fixed;
    if (!match.matches || (best != nullptr && length <= longest)) continue;
    best = &targets;
    rest = match.rest;
    longest = length;
  }
  if (best != nullptr) {
    for (const std::string& target : *best) {
      const File* found =
          module_at(joined(map.folder, with_rest(target, rest)), is_typed(importer), world);
      if (found != nullptr) return {found, true};
    }
  }
  if (!map.has_base) return {};
  return {module_at(joined(map.folder, specifier), is_typed(importer), world), true};
}

/// The package's name in a bare specifier, `@scope/name` counting as one.
std::string_view package_name(std::string_view specifier) {
  std::size_t end = specifier.find('/');
  if (specifier.starts_with('@') && end != std::string_view::npos) {
    end = specifier.find('/', end + 1);
  }
  return specifier.substr(0, end);
}

ModuleAnswer find_package(const File& importer, std::string_view specifier, World& world) {
  const File* own = package_around(folder_of(importer.path), world);
  if (specifier.starts_with('#')) {
    return own == nullptr ? ModuleAnswer{} : entry_of(read_package(*own, world), specifier, world);
  }
  const std::string_view name = package_name(specifier);
  const File* manifest = own != nullptr && read_package(*own, world).name == name
                             ? own
                             : workspace_package(name, world);
  if (manifest == nullptr) return {.external = true};
  const std::string subpath = "." + std::string(specifier.substr(name.size()));
  return entry_of(read_package(*manifest, world), subpath, world);
}

}  // namespace

std::string joined(std::string_view folder, std::string_view path) {
  std::vector<std::string_view> parts = kit::split(folder, '/');
  for (const std::string_view part : kit::split(path, '/')) {
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(part);
    } else if (parts.empty()) {
      return "..";
    } else {
      parts.pop_back();
    }
  }
  std::string made;
  for (const std::string_view part : parts) {
    if (!made.empty()) made += '/';
    made += part;
  }
  return made;
}

const File* module_at(std::string_view path, bool typed, World& world) {
  const std::string whole(path);
  if (typed) {
    if (const File* source = source_of(path, world)) return source;
  }
  if (const File* found = exact(whole, world)) return found;
  if (const File* found = whole.empty() ? nullptr : with_suffix(whole, typed, world)) return found;
  if (!typed) {
    if (const File* source = source_of(path, world)) return source;
  }
  const File* manifest = world.file(joined(whole, "package.json"));
  if (manifest != nullptr && !whole.empty()) {
    const Package& package = read_package(*manifest, world);
    for (const auto& [subpath, targets] : package.entries) {
      if (subpath != ".") continue;
      for (const std::string& target : targets) {
        const std::string entry = joined(package.folder, target);
        if (const File* found = exact(entry, world)) return found;
        if (const File* found = with_suffix(entry, typed, world)) return found;
      }
    }
  }
  return with_suffix(joined(whole, "index"), typed, world);
}

std::string_view without_suffix(std::string_view path) {
  for (const std::string_view suffix : {".d.ts", ".d.mts", ".d.cts"}) {
    if (path.ends_with(suffix)) return path.substr(0, path.size() - suffix.size());
  }
  const std::size_t dot = path.rfind('.');
  const std::size_t slash = path.rfind('/');
  const bool in_name = dot != std::string_view::npos &&
                       (slash == std::string_view::npos || dot > slash + 1) && dot > 0;
  return in_name ? path.substr(0, dot) : path;
}

bool is_in_family(std::string_view language) {
  return language == "javascript" || language == "typescript" || language == "tsx";
}

ModuleAnswer find_module(const File& importer, std::string_view specifier, World& world) {
  const std::size_t query = specifier.find('?');
  if (query != std::string_view::npos && query > 0) specifier = specifier.substr(0, query);
  if (specifier.empty() || specifier.starts_with("node:")) return {.external = true};
  const bool relative = specifier == "." || specifier == ".." || specifier.starts_with("./") ||
                        specifier.starts_with("../");
  if (relative) {
    const std::string path = joined(folder_of(importer.path), specifier);
    return {module_at(path, is_typed(importer), world), true};
  }
  if (specifier.starts_with('/')) return {};
  const ModuleAnswer mapped = find_mapped(importer, specifier, world);
  return mapped.file != nullptr ? mapped : find_package(importer, specifier, world);
}

}  // namespace context_delta::indexer::ecmascript
