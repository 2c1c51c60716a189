#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_javascript(void);

/// JavaScript with JSX, in CommonJS and ES modules.
namespace context_delta::indexer::javascript {

extern const Language LANGUAGE;

}  // namespace context_delta::indexer::javascript
