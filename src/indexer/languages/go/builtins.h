#pragma once

#include <string_view>

/// Names that every Go program has without defining them.
namespace context_delta::indexer::go {

/// Whether a name at the root of a call or type means what the language declares. Functions that
/// programs often define themselves ("min", "copy", "print") are left out.
bool is_predeclared(std::string_view name);

/// Whether a method of this name on a receiver of unknown type is likelier one of the standard
/// library's.
bool is_common_method(std::string_view name);

}  // namespace context_delta::indexer::go
