#pragma once

#include "indexer/languages/c_family/syntax.h"
#include "indexer/model/facts.h"

/// Facts of C and C++ texts: one extractor, as the grammars agree where they overlap.
namespace context_delta::indexer::c_family {

/// Functions, methods, types, variables and macros with what they use. `root` is the tree of the
/// text as prepare() made it.
Facts extract(const Syntax& syntax, TSNode root, std::string_view text);

}  // namespace context_delta::indexer::c_family
