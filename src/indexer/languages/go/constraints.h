#pragma once

#include <string>
#include <string_view>

#include "indexer/model/facts.h"

/// When files are built.
namespace context_delta::indexer::go {

/// The condition under which a file is built, of its name and its text, in the notation of
/// `//go:build`: `(linux) && (!cgo)`; empty: always. Tests are no condition.
std::string constraint_of(std::string_view path, const Interface& facts);

/// A line behind `// +build` in the notation of `//go:build`: `a,!b c` is `(a && !b) || (c)`.
std::string modern_constraint(std::string_view line);

/// Whether the condition holds on Linux, on a 64-bit PC, without further tags.
bool is_built_by_default(std::string_view constraint);

bool is_test_file(std::string_view path);

}  // namespace context_delta::indexer::go
