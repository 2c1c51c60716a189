#include "cli/help.h"

#include <string_view>

#include "cli/description.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

constexpr std::size_t HELP_COLUMN = 30;
constexpr std::size_t WIDTH = 100;

/// The text in lines that start at HELP_COLUMN, but for the first.
std::string wrapped(std::string_view text) {
  std::string lines;
  while (HELP_COLUMN + text.size() > WIDTH) {
    const std::size_t end = text.rfind(' ', WIDTH - HELP_COLUMN);
    if (end == text.npos) break;
    lines.append(text.substr(0, end)).append("\n").append(HELP_COLUMN, ' ');
    text.remove_prefix(end + 1);
  }
  return lines.append(text) + "\n";
}

std::string aligned(std::string text, std::string_view help) {
  text = "  " + text;
  if (text.size() + 2 > HELP_COLUMN) {
    text += "\n" + std::string(HELP_COLUMN, ' ');
  } else {
    text.resize(HELP_COLUMN, ' ');
  }
  return text + wrapped(help);
}

std::string option_line(const OptionRow& option) {
  std::string names = option.flag.empty() ? "    " : std::string(option.flag);
  if (!option.name.empty()) {
    if (!option.flag.empty()) names += ", ";
    names += shown_name(option);
  }
  if (!option.value.empty()) names += " " + std::string(option.value);
  return aligned(names, option.help);
}

/// The options that a command takes and not every other does, or those that all take.
std::string option_lines(Command command, bool general) {
  std::string text;
  for (const OptionRow& option : options()) {
    if (takes(option, command) && is_general(option) == general) text += option_line(option);
  }
  return text;
}

std::string titled(std::string_view title, const std::string& lines) {
  return lines.empty() ? "" : "\n" + std::string(title) + ":\n" + lines;
}

template <class Rows>
std::string described_lines(const Rows& rows) {
  std::string text;
  for (const Described& row : rows) text += aligned(row.name, row.meaning);
  return text;
}

std::string example_lines() {
  std::size_t longest = 0;
  for (const Described& example : examples()) longest = std::max(longest, example.name.size());
  std::string text;
  for (const Described& example : examples()) {
    std::string line = "  " + example.name;
    line.resize(longest + 4, ' ');
    text += line + example.meaning + "\n";
  }
  return text;
}

std::string command_lines() {
  std::string text;
  for (const CommandRow& row : commands()) text += aligned(std::string(row.name), row.help);
  return text;
}

std::string heading(const CommandRow& row) {
  if (row.command == Command::DELTA) {
    return "context-delta: " + std::string(purpose()) + "\n\n" + example_lines();
  }
  std::string usage = "context-delta " + std::string(row.name);
  if (!row.words.empty()) usage += " " + std::string(row.words);
  return usage + ": " + std::string(row.help) + "\n";
}

}  // namespace

std::string help_text(Command command, bool whole) {
  const CommandRow& row = row_of(command);
  std::string text = heading(row);
  if (!whole) {
    return text + titled("Options", option_lines(command, false)) + "\nMore: context-delta " +
           (command == Command::DELTA ? "" : std::string(row.name) + " ") + "--help\n";
  }
  if (command == Command::DELTA) {
    text += "\nUsage: context-delta [COMMAND] [OPTIONS] [BASE..TARGET | BASE]\n" +
            titled("Commands", command_lines());
  }
  text += titled("Options of " + std::string(row.name), option_lines(command, false)) +
          titled("Options of every command", option_lines(command, true));
  if (command == Command::DELTA) {
    text += titled("Exit codes", described_lines(exit_codes())) +
            titled("Environment", described_lines(environment_variables())) +
            titled("Files", described_lines(files()));
  }
  return text;
}

std::string version_line() { return "context-delta " CONTEXT_DELTA_VERSION "\n"; }

}  // namespace context_delta::cli
