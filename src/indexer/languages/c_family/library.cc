#include "indexer/languages/c_family/library.h"

#include <algorithm>
#include <array>

#include "indexer/languages/c_family/tables.h"
#include "indexer/languages/kit/words.h"

namespace context_delta::indexer::c_family {
bool is_library_function(std::string_view name) { return kit::has_word(FUNCTIONS, name); }

bool is_common_method(std::string_view name) { return kit::has_word(METHODS, name); }

}  // namespace context_delta::indexer::c_family
