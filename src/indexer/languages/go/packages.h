#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/world/world.h"

/// Packages of Go: files of a folder that name the same package, and the import paths that lead
/// to them.
namespace context_delta::indexer::go {

/// A file of a package.
struct PackageFile {
  const File* file = nullptr;
  const Interface* facts = nullptr;
  std::string constraint;  ///< when it is built, of its name and its text; empty: always
  bool is_test = false;
};

/// A definition of a package.
struct Place {
  const PackageFile* in = nullptr;
  DefinitionIndex definition = NOWHERE;
};

/// The names of one package. Points into facts, as World keeps them. What it holds of a name is
/// looked up by members_named and methods_named, which record that.
struct Package {
  std::string name;
  std::string folder;
  std::vector<PackageFile> files;                                    ///< by path
  std::unordered_map<std::string_view, std::vector<Place>> members;  ///< at the top level
  std::unordered_map<std::string, std::vector<Place>> methods;       ///< by `Type.Method`
};

/// What a package defines under a name at its top level; null when it defines nothing.
const std::vector<Place>* members_named(const Package& package, std::string_view name,
                                        World& world);
/// The methods of a name that a package declares for one of its types; null when there are none.
const std::vector<Place>* methods_named(const Package& package, std::string_view type,
                                        std::string_view name, World& world);

/// The facts of a file, of which only the package clause and what stands above it may be read.
const Interface& clause_of(const File& file, World& world);

/// The package that a file belongs to; null for files without a package clause.
const Package* package_of(const File& file, const Interface& facts, World& world);

/// What stands in front of the names of a file's definitions: its import path, as far as a module
/// file gives it, else its folder.
std::string import_path(const File& file, const Interface& facts, World& world);

/// An import of a file.
struct Imported {
  std::string name;                  ///< by which the file refers to it; `*`: no name is needed
  const Package* package = nullptr;  ///< null: outside the repository
  bool sure = true;                  ///< false: no module file says that it is this package
  std::string path;                  ///< as written, when the name was only guessed from it
};
const std::vector<Imported>& imports_of(const File& file, World& world);

/// The definitions among namesakes that a file may mean, the likeliest first.
struct Choice {
  std::vector<Place> places;
  bool sure = false;  ///< there is one, whatever is built together with the file
};
/// `from` is the file that asks, built under `constraint`; `own_package` says whether the places
/// are in its own folder, so that its tests see theirs.
Choice choose(const std::vector<Place>& places, const File& from, std::string_view constraint,
              bool own_package);

}  // namespace context_delta::indexer::go
