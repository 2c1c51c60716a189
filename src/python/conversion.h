#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "python/object.h"
#include "utils/json.h"

/// Between Python's values and ours. Raises like object.h, TypeError for an argument of another
/// type; `parameter` is the name that the error gives it.
namespace context_delta::python {

/// A JSON value as dicts, lists, strings, numbers, booleans and None.
Object object_of(const json::Value& value);
Object object_of(const json::Mapping& mapping);

/// A path: a string, bytes or anything with `__fspath__`.
std::filesystem::path path_of(const Object& value);

/// A string or None.
std::optional<std::string> optional_text(const Object& value, const char* parameter);

/// An integer; one that 64 bits do not hold becomes the nearest that they do.
std::int64_t integer_of(const Object& value);

}  // namespace context_delta::python
