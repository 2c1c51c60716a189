#pragma once

#include <string_view>

/// Names that the standard libraries have: a call that proves nothing of its own means them.
namespace context_delta::indexer::c_family {

bool is_library_function(std::string_view name);

/// Whether a method of this name on a receiver of unknown type is likelier one of the library.
bool is_common_method(std::string_view name);

}  // namespace context_delta::indexer::c_family
