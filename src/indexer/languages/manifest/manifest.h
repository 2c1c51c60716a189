#pragma once

#include <string>
#include <string_view>

#include "indexer/language.h"

/// Files that say how a repository's packages are laid out: package.json, tsconfig.json and the
/// like. They define no symbols; rules of other languages read them as facts.
namespace context_delta::indexer::manifest {

/// Each string is a binding of the module: named by the keys that lead to it, joined by `|`, an
/// index in a list counting as a key: `exports|./x|import`, `compilerOptions|paths|@/*|0`. Keys of
/// no use to rules are left out. The text of a list in YAML stands under `workspaces`.
extern const Language LANGUAGE;

/// What parts of a binding's name are joined by.
inline constexpr char SEPARATOR = '|';

}  // namespace context_delta::indexer::manifest
