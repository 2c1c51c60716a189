#include "indexer/languages/python/python.h"

#include <array>

namespace context_delta::indexer::python {
namespace {

constexpr std::array<std::string_view, 2> SUFFIXES = {".py", ".pyi"};

}  // namespace

const Language LANGUAGE = {.name = "python",
                           .family = "python",
                           .version = 2,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_python,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::python
