#include "indexer/languages/ecmascript/typescript.h"

#include <array>

#include "indexer/languages/ecmascript/extract.h"
#include "indexer/languages/ecmascript/resolve.h"

namespace context_delta::indexer::typescript {
namespace {

constexpr std::array<std::string_view, 3> SUFFIXES = {".ts", ".mts", ".cts"};
constexpr std::array<std::string_view, 1> SUFFIXES_WITH_JSX = {".tsx"};

Facts extract(TSNode root, std::string_view text) {
  static const ecmascript::Syntax syntax = ecmascript::make_syntax(tree_sitter_typescript(), true);
  return ecmascript::extract(syntax, root, text);
}

Facts extract_with_jsx(TSNode root, std::string_view text) {
  static const ecmascript::Syntax syntax = ecmascript::make_syntax(tree_sitter_tsx(), true);
  return ecmascript::extract(syntax, root, text);
}

}  // namespace

const Language LANGUAGE = {.name = "typescript",
                           .family = "ecmascript",
                           .version = 2,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_typescript,
                           .extract = extract,
                           .resolve = ecmascript::resolve};

const Language LANGUAGE_WITH_JSX = {.name = "tsx",
                                    .family = "ecmascript",
                                    .version = 2,
                                    .suffixes = SUFFIXES_WITH_JSX,
                                    .accepts = nullptr,
                                    .grammar = tree_sitter_tsx,
                                    .extract = extract_with_jsx,
                                    .resolve = ecmascript::resolve};

}  // namespace context_delta::indexer::typescript
