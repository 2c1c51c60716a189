#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_cpp(void);

/// C++.
namespace context_delta::indexer::cpp {

extern const Language LANGUAGE;

Facts extract(TSNode root, std::string_view text);
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::cpp
