#pragma once

#include <string_view>

namespace context_delta::git_history {

enum class LetterCase { EXACT, ANY };

/// Whether a path with '/' between its parts matches a pattern:
///   *          any characters of one name, none too
///   [a-z_]     one character of a set, [!a-z] one that is not in it
///   {one,two}  one of several plain texts
///   name/      at the end: whatever is in that folder
///   /name      at the start: at the top only; elsewhere a pattern starts at any name
/// Sets are of exact letters whatever the case.
bool matches_path(std::string_view pattern, std::string_view path,
                  LetterCase letter_case = LetterCase::EXACT);

}  // namespace context_delta::git_history
