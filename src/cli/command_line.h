#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/options.h"

namespace context_delta::cli {

/// An option that was given, with its value; a switch has "true", or "false" for `--no-NAME`.
struct Given {
  const OptionRow* option;
  std::string value;
};

struct CommandLine {
  Command command = Command::DELTA;
  std::string word;          ///< the word after the command; empty when there is none
  std::string range;         ///< "BASE..TARGET", "BASE"; empty when there is none
  std::vector<Given> given;  ///< of an option given twice, in the order given
};

/// Reads the arguments (without the program's name). The command may stand anywhere among the
/// options; without one it is `delta`. Raises UsageError.
CommandLine parse_command_line(std::span<const std::string> arguments);

/// Puts what was given into the settings; of an option given twice the last counts. Raises
/// UsageError.
void apply(const CommandLine& line, Settings& settings);

/// Whether errors are to be told to a program, as far as arguments tell that may make no sense.
bool asks_for_programs_format(std::span<const std::string> arguments);

}  // namespace context_delta::cli
