#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/settings.h"

/// Every command and option, in two tables: what the parser, the configuration files, the help,
/// the manual page and the completions are made from.
namespace context_delta::cli {

/// A command line or a preset that cannot be understood. The text is one line: what, and what would
/// be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CommandRow {
  std::string_view name;
  Command command;
  char letter;             ///< stands for it in OptionRow::commands
  std::string_view words;  ///< choices of the one word it takes, joined by '|'; empty: none
  std::string_view help;
};

/// What a shell offers where a value is awaited.
enum class Completion : unsigned char { NOTHING, CHOICES, FILE, FOLDER, REVISION };

/// Who may preset an option, beside the command line; each includes those before it. The project's
/// file belongs to whoever wrote the branch under review, and must not choose what is compared or
/// reach outside the work tree.
enum class Preset : unsigned char { NOBODY, ENVIRONMENT, USER, PROJECT };

struct OptionRow {
  std::string_view flag;      ///< "-o"; empty when it has no short name
  std::string_view name;      ///< "--output"; empty when it has no long name
  std::string_view value;     ///< what its value is called, choices joined by '|'; empty: a switch
  std::string_view commands;  ///< the letters of the commands that take it
  std::string_view help;      ///< one sentence without a full stop
  Completion completion;
  Preset preset;
  /// Puts the value into the settings; a switch has "true", or "false" when it can be turned off.
  /// Raises UsageError, worded to follow the option's name.
  void (*apply)(Settings& settings, const std::string& value);
};

std::span<const CommandRow> commands();
std::span<const OptionRow> options();

const CommandRow& row_of(Command command);

bool takes(const OptionRow& option, Command command);

/// Whether every command takes it.
bool is_general(const OptionRow& option);

/// Whether `--no-NAME` turns it off again: switches that may be preset, so that a command line can
/// undo what a file says.
bool can_be_negated(const OptionRow& option);

/// The long name as help shows it, "--[no-]snippets"; the short one when there is no other.
std::string shown_name(const OptionRow& option);

/// All names under which it may be given: "-o", "--output"; "--snippets", "--no-snippets".
std::vector<std::string> all_names(const OptionRow& option);

/// The option that `-o` or `--output` names, of any command; null when there is none. "--no-NAME"
/// names none.
const OptionRow* find_option(std::string_view name);

/// What presets it in a configuration file, "token-scale", and in the environment,
/// "CONTEXT_DELTA_TOKEN_SCALE".
std::string_view preset_key(const OptionRow& option);
std::string preset_variable(const OptionRow& option);

/// The choices of "a|b|c".
std::vector<std::string_view> choices(std::string_view joined);

}  // namespace context_delta::cli
