#pragma once

#include <string>
#include <string_view>

#include "indexer/world/world.h"

/// Modules of JavaScript and TypeScript: specifiers and the files that they mean.
namespace context_delta::indexer::ecmascript {

struct ModuleAnswer {
  const File* file = nullptr;  ///< null: not in the repository
  bool sure = true;            ///< false: found by custom, not by what a file says
  bool external = false;       ///< a package from elsewhere, or part of the platform
};

/// What `specifier` means in a file: relative paths with the suffixes and index files that may be
/// left out, `paths` and `baseUrl` of the nearest tsconfig.json or jsconfig.json that has them,
/// `imports` of the file's own package, and packages of the repository's workspaces.
ModuleAnswer find_module(const File& importer, std::string_view specifier, World& world);

/// The path of a file without its suffix (`.d.ts` counts as one).
std::string_view without_suffix(std::string_view path);

/// Whether the language is one of the family.
bool is_in_family(std::string_view language);

/// The file at `path`, whose suffix or index file may be left out; null when there is none. With
/// `typed`, TypeScript goes first.
const File* module_at(std::string_view path, bool typed, World& world);

/// Folder and path as one path, with `.` and `..` taken out; `..` when it leads out of the
/// repository.
std::string joined(std::string_view folder, std::string_view path);

}  // namespace context_delta::indexer::ecmascript
