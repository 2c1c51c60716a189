#pragma once

#include <string>
#include <string_view>

namespace context_delta::wiki {

/// What a page wrote as a source, as a path relative to the top of the repository: without `./`,
/// double slashes and slashes at the ends. Empty when it cannot be one: absolute in disguise (`..`
/// in it), over 1,024 bytes, or with control characters.
std::string normal_source(std::string_view written);

/// Whether a source holds `*` or `?` and so stands for all paths that match it.
bool is_glob(std::string_view source);

/// Whether `path` matches `glob`: `?` is one byte and `*` any number of them except '/', `**` any
/// number of any bytes, and `**/` also nothing. Time grows with the product of the lengths at most.
bool glob_matches(std::string_view glob, std::string_view path);

}  // namespace context_delta::wiki
