#include "cli/help.h"

#include <algorithm>
#include <string_view>

#include "cli/exit_codes.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

constexpr std::string_view EXAMPLES =
    R"(context-delta: what did this branch change, for review?

  context-delta                         the checked-out branch since it left the default branch
  context-delta --base release/2        since it left another one
  context-delta --budget 16000          more of it
  context-delta --snippets --wiki docs  with changed lines, and the pages that may be out of date
  context-delta --format json | jq .    for a program
  context-delta index                   prepare the index only

)";

constexpr std::size_t HELP_COLUMN = 28;

std::string aligned(std::string text, std::string_view help) {
  text = "  " + text;
  if (text.size() + 2 > HELP_COLUMN) {
    text += "\n" + std::string(HELP_COLUMN, ' ');
  } else {
    text.resize(HELP_COLUMN, ' ');
  }
  return text.append(help) + "\n";
}

std::string option_line(const OptionRow& option) {
  std::string names = option.flag.empty() ? "    " : std::string(option.flag);
  if (!option.flag.empty() && !option.name.empty()) names += ", ";
  names += option.name;
  if (!option.value.empty()) names += " " + std::string(option.value);
  return aligned(names, option.help);
}

bool is_general(const OptionRow& option) {
  return std::all_of(commands().begin(), commands().end(),
                     [&](const CommandRow& row) { return takes(option, row.command); });
}

std::string option_lines(bool general) {
  std::string text;
  for (const OptionRow& option : options()) {
    if (is_general(option) == general) text += option_line(option);
  }
  return text;
}

std::string command_lines() {
  std::string text;
  for (const CommandRow& row : commands()) text += aligned(std::string(row.name), row.help);
  return text;
}

std::string exit_code_lines() {
  return aligned(std::to_string(EXIT_DONE), "done, also when nothing changed") +
         aligned(std::to_string(EXIT_FAILED), "failed: index, wiki or output file") +
         aligned(std::to_string(EXIT_USAGE), "the command line cannot be understood") +
         aligned(std::to_string(EXIT_GIT), "git cannot compare; the error result is written") +
         aligned(
             std::to_string(EXIT_SIGNAL_BASE + 2) + ", " + std::to_string(EXIT_SIGNAL_BASE + 15),
             "interrupted, terminated; the index is as before");
}

}  // namespace

std::string short_help() {
  return std::string(EXAMPLES) + "Options:\n" + option_lines(false) +
         "\nMore: context-delta --help\n";
}

std::string full_help() {
  return std::string(EXAMPLES) + "Usage: context-delta [COMMAND] [OPTIONS]\n\nCommands:\n" +
         command_lines() + "\nOptions of delta (-o also of graph):\n" + option_lines(false) +
         "\nOptions of every command:\n" + option_lines(true) + "\nExit codes:\n" +
         exit_code_lines() + "\nEnvironment:\n" +
         aligned("NO_COLOR", "when not empty: no colours unless --color=always") +
         aligned("CLICOLOR_FORCE", "when not 0: colours although no terminal reads them") +
         aligned("COLUMNS", "width of the text, where the terminal does not tell");
}

std::string version_line() { return "context-delta " CONTEXT_DELTA_VERSION "\n"; }

}  // namespace context_delta::cli
