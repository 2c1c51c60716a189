#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cli/settings.h"

/// Every command and option, in two tables: what the parser, the help and whatever else describes
/// the command line are made from.
namespace context_delta::cli {

/// A command line that cannot be understood. The text is one line: what, and what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CommandRow {
  std::string_view name;
  Command command;
  std::string_view help;
};

struct OptionRow {
  std::string_view flag;      ///< "-o"; empty when it has no short name
  std::string_view name;      ///< "--output"; empty when it has no long name
  std::string_view value;     ///< what its value is called, choices joined by '|'; empty: a switch
  std::string_view commands;  ///< of the commands that take it: 'd'elta, 'i'ndex, 'g'raph
  std::string_view help;      ///< one sentence without a full stop
  /// Puts the value into the settings. Raises UsageError, worded to follow the option's name.
  void (*apply)(Settings& settings, const std::string& value);
};

std::span<const CommandRow> commands();
std::span<const OptionRow> options();

bool takes(const OptionRow& option, Command command);

/// The option that `-o` or `--output` names, of any command; null when there is none.
const OptionRow* find_option(std::string_view name);

}  // namespace context_delta::cli
