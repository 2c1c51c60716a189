#pragma once

#include <string>
#include <string_view>

#include <tree_sitter/api.h>

#include "indexer/model/resolution.h"
#include "indexer/world/world.h"

/// Cargo manifests: the packages of the repository and what they call each other.
///
/// Facts of a manifest: the bindings `package`, `lib` and `lib.path` with their values, and each
/// dependency as an import called `alias`, whose module is `path FOLDER`, `workspace` or
/// `registry`; those that a workspace declares for its members have the trait DECLARATION.
namespace context_delta::indexer::rust {

/// As many lines and bytes, all blank: no grammar is needed to read a manifest.
std::string blank_manifest(std::string_view text);
Facts extract_manifest(TSNode root, std::string_view text);
Resolution resolve_manifest(const File& file, const Facts& facts, World& world);

/// The manifest of the package that a path belongs to; null when there is none.
const File* manifest_of(std::string_view path, World& world);

/// The name of a package's library, as a crate name; empty when the manifest names no package.
std::string library_name(const File& manifest, World& world);

/// The root file of a package's library; null when it has none.
const File* library_root(const File& manifest, World& world);

/// What a package means by the name of a crate.
struct Dependency {
  bool known = false;          ///< the manifest declares it, or it is the package's own library
  const File* root = nullptr;  ///< of the library; null when it is not in the repository
};
Dependency dependency(const File& manifest, std::string_view crate, World& world);

}  // namespace context_delta::indexer::rust
