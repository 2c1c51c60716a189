#pragma once

#include <string>
#include <string_view>

#include "indexer/world/world.h"

/// Modules of Python: dotted names and the files that they mean.
namespace context_delta::indexer::python {

/// The folder that the dotted name of a file starts from: above the topmost folder of the chain
/// that has `__init__.py`.
std::string package_root(const File& file, World& world);

/// The dotted name of a file, `package.module`; a package is named by its `__init__.py`.
std::string module_name(const File& file, World& world);

/// The same, from the top of the repository when another file has that name too: what tells the
/// definitions of `x/util.py` and `y/util.py` apart where neither folder is a package.
std::string distinct_module_name(const File& file, World& world);

/// What an import path means for the file that imports it.
struct ModuleAnswer {
  const File* file = nullptr;  ///< null: not in the repository
  bool sure = true;            ///< false: several files answer to the name
};

/// `dotted` is as written, leading dots included. The importer's own root goes first, then the
/// usual source roots, then the only package of that name anywhere.
ModuleAnswer find_module(const File& importer, std::string_view dotted, World& world);

/// The module `name` inside the package whose `__init__.py` is `package`; null when there is none.
const File* submodule(const File& package, std::string_view name, World& world);

}  // namespace context_delta::indexer::python
