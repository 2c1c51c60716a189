#include "indexer/languages/python/builtins.h"

#include <algorithm>
#include <array>

#include "indexer/languages/kit/words.h"
#include "indexer/languages/python/tables.h"

namespace context_delta::indexer::python {
bool is_builtin(std::string_view name) { return kit::has_word(BUILTINS, name); }

bool is_standard_module(std::string_view name) { return kit::has_word(STANDARD_MODULES, name); }

bool is_common_method(std::string_view name) { return kit::has_word(COMMON_METHODS, name); }

}  // namespace context_delta::indexer::python
