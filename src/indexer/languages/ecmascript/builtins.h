#pragma once

#include <string_view>

/// Names that every program has without defining them.
namespace context_delta::indexer::ecmascript {

/// Whether browsers or Node.js bind the name in every module, as a value or a type.
bool is_global(std::string_view name);

/// Whether a method of this name on a receiver of unknown type is likelier one of a built-in class
/// or of the platform.
bool is_common_method(std::string_view name);

}  // namespace context_delta::indexer::ecmascript
