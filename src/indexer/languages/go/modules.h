#pragma once

#include <string>
#include <string_view>

#include "indexer/world/world.h"

/// Modules of Go: the import paths that the repository's go.mod files give to folders.
namespace context_delta::indexer::go {

/// The folder that an import path means.
struct ImportedFolder {
  std::string path;
  bool found = false;  ///< false: outside the repository
  bool sure = true;    ///< false: no module file says so, several do, or one replaces it
};
ImportedFolder find_import(const File& importer, std::string_view path, World& world);

/// The import path of a file's folder; the folder's own path without a module file.
std::string path_of_folder(const File& file, World& world);

}  // namespace context_delta::indexer::go
