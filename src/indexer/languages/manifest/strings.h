#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace context_delta::indexer::manifest {

/// Calls `found` with each string in a JSON text and the keys that lead to it, joined by `|`.
/// Comments and commas too many are passed over; a text that is not JSON yields what could be read.
/// Nesting beyond 16 levels is passed over.
void for_each_string(std::string_view text,
                     const std::function<void(const std::string& path, std::string_view)>& found);

}  // namespace context_delta::indexer::manifest
