#pragma once

#include <string>
#include <string_view>

/// Completions made from the tables of commands and options, a shell in a file each.
namespace context_delta::cli {

std::string bash_completion();
std::string zsh_completion();
std::string fish_completion();

/// The choices of "a|b|c" as "a b c", which all these shells read as words.
std::string spaced(std::string_view choices);

/// The completion of a shell by its name. Raises UsageError for an empty or unknown one.
std::string completion_of(std::string_view shell);

}  // namespace context_delta::cli
