#pragma once

#include <span>
#include <string>

#include "cli/options.h"

namespace context_delta::cli {

/// Reads the arguments (without the program's name). The command may stand anywhere among the
/// options; without one it is `delta`. Of an option given twice the last counts. Raises UsageError.
Settings parse_command_line(std::span<const std::string> arguments);

}  // namespace context_delta::cli
