#include "indexer/languages/go/go.h"

#include <array>

namespace context_delta::indexer::go {
namespace {

constexpr std::array<std::string_view, 1> SUFFIXES = {".go"};

}  // namespace

const Language LANGUAGE = {.name = "go",
                           .family = "go",
                           .version = 1,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_go,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::go
