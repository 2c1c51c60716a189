#include "indexer/languages/go/builtins.h"

#include <algorithm>
#include <array>

#include "indexer/languages/go/tables.h"
#include "indexer/languages/kit/words.h"

namespace context_delta::indexer::go {
bool is_predeclared(std::string_view name) { return kit::has_word(PREDECLARED, name); }

bool is_common_method(std::string_view name) { return kit::has_word(COMMON_METHODS, name); }

}  // namespace context_delta::indexer::go
