#pragma once

#include <string_view>

/// Names that every Python program has without defining them.
namespace context_delta::indexer::python {

bool is_builtin(std::string_view name);

/// Whether the standard library has a top-level module of this name.
bool is_standard_module(std::string_view name);

/// Whether a method of this name on a receiver of unknown type is likelier one of a built-in type.
bool is_common_method(std::string_view name);

}  // namespace context_delta::indexer::python
