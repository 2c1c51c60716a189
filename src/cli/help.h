#pragma once

#include <string>

namespace context_delta::cli {

/// Examples and the options of `delta`.
std::string short_help();

/// Everything: examples, commands, all options, exit codes, environment.
std::string full_help();

/// "context-delta VERSION" and a line feed.
std::string version_line();

}  // namespace context_delta::cli
