#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_rust(void);

/// Rust, and the manifests of Cargo, which say what its crates are called.
namespace context_delta::indexer::rust {

extern const Language LANGUAGE;

/// `Cargo.toml`: no symbols, but the names by which crates of the repository know each other.
extern const Language MANIFEST_LANGUAGE;

/// Functions, methods, types, traits, constants, macros, and every call, path and import. An impl
/// block is a NAMESPACE named like its type, whose `type` is the type and whose base is the trait.
///
/// Values are written as receivers are: `self.store`, `Foo::new()`, `x?`, `v[]`, and besides
/// - `<T>`: a value of type T,
/// - `x@2`: the second local variable called `x` in its function; what has no number is no
/// variable,
/// - `(a, b)`: a tuple,
/// - `e~Some.0`: the field 0 of `e` matched against the pattern `Some`,
/// - `e%`: an element of what iterating over `e` yields,
/// - `e@map`: what the closure given to `e.map()` gets,
/// - `e.map{f}`: a call given the value f, or a closure that returns it.
/// The receiver of a path is the path with its last `::`; of a macro call it is `!`; of a call of a
/// local variable it is `let`.
Facts extract(TSNode root, std::string_view text);

/// Names are paths from the crate: `crate_name::module::Type::method`,
/// `<crate_name::Type as Trait>::method`.
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::rust
