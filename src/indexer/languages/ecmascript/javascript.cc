#include "indexer/languages/ecmascript/javascript.h"

#include <array>

#include "indexer/languages/ecmascript/extract.h"
#include "indexer/languages/ecmascript/resolve.h"

namespace context_delta::indexer::javascript {
namespace {

constexpr std::array<std::string_view, 4> SUFFIXES = {".js", ".jsx", ".mjs", ".cjs"};

Facts extract(TSNode root, std::string_view text) {
  static const ecmascript::Syntax syntax = ecmascript::make_syntax(tree_sitter_javascript(), false);
  return ecmascript::extract(syntax, root, text);
}

}  // namespace

const Language LANGUAGE = {.name = "javascript",
                           .family = "ecmascript",
                           .version = 2,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_javascript,
                           .extract = extract,
                           .resolve = ecmascript::resolve};

}  // namespace context_delta::indexer::javascript
