#include "indexer/languages/ecmascript/builtins.h"

#include <algorithm>
#include <array>

#include "indexer/languages/ecmascript/tables.h"
#include "indexer/languages/kit/words.h"

namespace context_delta::indexer::ecmascript {
bool is_global(std::string_view name) { return kit::has_word(GLOBALS, name); }

bool is_common_method(std::string_view name) { return kit::has_word(COMMON_METHODS, name); }

}  // namespace context_delta::indexer::ecmascript
