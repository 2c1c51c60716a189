#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "indexer/languages/kit/outline.h"
#include "indexer/world/world.h"

/// The module trees of crates.
namespace context_delta::indexer::rust {

/// A file as a module, or a module written inside one.
struct Module {
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;  ///< NOWHERE: the file
  bool is(const Module& other) const {
    return file != nullptr && other.file != nullptr && file->id == other.file->id &&
           definition == other.definition;
  }
};

bool is_module_declaration(const Import& import);

/// What the declarations of modules whose files have other names are called besides.
inline constexpr std::string_view DECLARED_BY_PATH = "#[path]";

/// What the wildcard imports of a scope bind, by the scope's name; that of a file has none.
std::string wildcard_name(std::string_view scope);

/// The file that `mod x;` in `file` means; null when it is not in the repository.
const File* declared_module(const File& file, const kit::Outline& outline,
                            const Import& declaration, World& world);

/// The module that declares a file; none for the root of a crate. A file that both a library and a
/// program declare belongs to the library.
std::optional<Module> declaring_module(const File& file, World& world);

/// The module around a definition of a file, or the file.
Module module_around(const File& file, const kit::Outline& outline, DefinitionIndex definition);

/// The module that encloses a module; none for the root of a crate.
std::optional<Module> parent_module(const Module& module, const kit::Outline& outline,
                                    World& world);

/// The root file of the crate that a file belongs to.
const File& crate_root(const File& file, World& world);

/// The path of a file as a module: `crate_name::module`.
std::string module_path(const File& file, World& world);

/// Whether a definition is a module and not an impl block.
bool is_module(const Definition& definition);
bool is_impl(const Definition& definition);

}  // namespace context_delta::indexer::rust
