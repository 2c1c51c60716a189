#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_typescript(void);
extern "C" const TSLanguage* tree_sitter_tsx(void);

/// TypeScript, declaration files included, and TypeScript with JSX: two grammars, one set of rules.
namespace context_delta::indexer::typescript {

extern const Language LANGUAGE;
extern const Language LANGUAGE_WITH_JSX;

}  // namespace context_delta::indexer::typescript
