#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "indexer/world/world.h"

/// What package.json and tsconfig.json say about modules.
namespace context_delta::indexer::ecmascript {

/// `paths` and `baseUrl` of a configuration, those it extends included.
struct PathMap {
  std::string folder;     ///< that targets start from
  bool has_base = false;  ///< bare specifiers are looked for in the folder too
  std::vector<std::pair<std::string, std::vector<std::string>>> patterns;
  bool empty() const { return patterns.empty() && !has_base; }
};

/// The map that holds for files in a folder: of the nearest configuration that has one; null when
/// none has.
const PathMap* path_map(std::string_view folder, World& world);

struct Package {
  std::string folder;
  std::string name;
  std::vector<std::string> workspaces;  ///< patterns of folders
  /// Subpath (`.`, `./x`, `./x/*`, `#x`) and the files it may stand for, in their order.
  std::vector<std::pair<std::string, std::vector<std::string>>> entries;
};

/// What a package.json says.
const Package& read_package(const File& manifest, World& world);

/// The package.json of the innermost package around a folder; null when there is none.
const File* package_around(std::string_view folder, World& world);

/// The manifest of the workspace package with that name; null when no manifest lists its folder.
const File* workspace_package(std::string_view name, World& world);

/// What `*` stands for when `pattern` matches; the pattern has at most one.
struct Match {
  bool matches = false;
  std::string_view rest;
};
Match match_pattern(std::string_view pattern, std::string_view text);

/// The target with `*` replaced.
std::string with_rest(std::string_view target, std::string_view rest);

}  // namespace context_delta::indexer::ecmascript
