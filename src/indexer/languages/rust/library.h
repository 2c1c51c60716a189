#pragma once

#include <string_view>

#include "indexer/languages/rust/types.h"

/// What every Rust program has without defining it.
namespace context_delta::indexer::rust {

/// std, core, alloc and their like.
bool is_standard_crate(std::string_view name);

/// Names of the prelude, of types, traits, functions and macros.
bool is_in_prelude(std::string_view name);

bool is_primitive(std::string_view name);

/// Whether a method of this name on a receiver of unknown type is likelier one of the library.
bool is_common_method(std::string_view name);

/// Whether a type lets its argument's members through: Box, Arc, a lock's guard.
bool is_pointer(std::string_view type);

/// Whether a pointer answers a method of this name itself.
bool is_method_of_pointers(std::string_view name);

/// The type of the elements that iterating yields; UNKNOWN when the type is none that is known.
Type element_of(const Type& type);

/// What a call of a method of the library returns. `given` is the type that the call's only
/// argument, when it is a function, returns.
Type result_of(const Type& type, std::string_view method, const Type& given);

/// What a closure given to a method of the library gets.
Type closure_argument(const Type& type, std::string_view method);

/// What `?`, or a match against Some, Ok or Err, takes out of a type.
Type unwrapped(const Type& type, std::string_view variant);

}  // namespace context_delta::indexer::rust
