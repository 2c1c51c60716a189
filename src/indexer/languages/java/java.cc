#include "indexer/languages/java/java.h"

#include <array>

namespace context_delta::indexer::java {
namespace {

constexpr std::array<std::string_view, 1> SUFFIXES = {".java"};

}  // namespace

const Language LANGUAGE = {.name = "java",
                           .family = "java",
                           .version = 1,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_java,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::java
