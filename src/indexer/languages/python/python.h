#pragma once

#include <tree_sitter/api.h>

#include "indexer/language.h"

extern "C" const TSLanguage* tree_sitter_python(void);

/// Python 3.
namespace context_delta::indexer::python {

extern const Language LANGUAGE;

/// Functions, classes, methods, variables of the module, and every call, import and annotation.
Facts extract(TSNode root, std::string_view text);

/// Names are `package.module.Class.method`: the dotted path from the topmost folder of the chain
/// that has `__init__.py`.
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::python
