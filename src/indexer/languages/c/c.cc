#include "indexer/languages/c/c.h"

#include <array>

#include "indexer/languages/c_family/extract.h"
#include "indexer/languages/c_family/prepare.h"

namespace context_delta::indexer::c {
namespace {

constexpr std::array<std::string_view, 2> SUFFIXES = {".c", ".h"};

const c_family::Syntax& syntax() {
  static const c_family::Syntax made = c_family::make_syntax(tree_sitter_c(), false);
  return made;
}

}  // namespace

Facts extract(TSNode root, std::string_view text) {
  return c_family::extract(syntax(), root, text);
}

const Language LANGUAGE = {.name = "c",
                           .family = "c",
                           .version = 1,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = tree_sitter_c,
                           .prepare = c_family::prepare,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::c
