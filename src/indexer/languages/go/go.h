#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_go(void);

/// Go, and the module files that say where its import paths lead.
namespace context_delta::indexer::go {

extern const Language LANGUAGE;
/// go.mod: no symbols, only the module's path and what it replaces.
extern const Language MODULE_LANGUAGE;

/// The names of bindings at the top level that stand for clauses of a file. All are keywords or no
/// identifiers, so no name of a program equals them.
inline constexpr std::string_view PACKAGE_NAME = "package";       ///< value: the package's name
inline constexpr std::string_view BUILD_CONSTRAINT = "go:build";  ///< value: the expression
inline constexpr std::string_view MODULE_PATH = "module";         ///< value: of a go.mod file

/// Functions, methods (whose written scope is the receiver's type), types, package variables and
/// constants, named closures, and every call, construction and type.
///
/// Local names are told apart by number, since blocks shadow: `err'2` is the second local `err` of
/// its function. A call of a local has the receiver `'2`. Type parameters stand in types as `$0`,
/// `$1` (of a type, in order) and `$T` (of a function). Expressions add to the common form: `{T}` a
/// value of a type, `#1` the second result, `<-` received, `~0` and `~1` what a range yields.
Facts extract(TSNode root, std::string_view text);

/// Names are as the runtime prints them, with the import path in front:
/// `example.org/module/folder.Function`, `example.org/module/folder.(*Type).Method`.
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::go
