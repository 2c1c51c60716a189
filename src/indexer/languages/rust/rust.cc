#include "indexer/languages/rust/rust.h"

#include <array>

#include "indexer/languages/rust/manifest.h"
#include "indexer/languages/rust/prepare.h"

namespace context_delta::indexer::rust {
namespace {

constexpr std::array<std::string_view, 1> SUFFIXES = {".rs"};
constexpr std::array<std::string_view, 1> MANIFESTS = {"Cargo.toml"};

}  // namespace

const Language LANGUAGE = {.name = "rust",
                           .family = "rust",
                           .version = 2,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_rust,
                           .prepare = prepare,
                           .extract = extract,
                           .resolve = resolve};

const Language MANIFEST_LANGUAGE = {.name = "cargo",
                                    .family = "cargo",
                                    .version = 1,
                                    .suffixes = MANIFESTS,
                                    .accepts = nullptr,
                                    .grammar = tree_sitter_rust,
                                    .prepare = blank_manifest,
                                    .extract = extract_manifest,
                                    .resolve = resolve_manifest};

}  // namespace context_delta::indexer::rust
