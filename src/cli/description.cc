#include "cli/description.h"

#include "cli/exit_codes.h"

namespace context_delta::cli {

std::string_view purpose() { return "what did this branch change, for review?"; }

std::span<const Described> examples() {
  static const Described EXAMPLES[] = {
      {"context-delta", "the checked-out branch since it left the default branch"},
      {"context-delta --base release/2", "since it left another one"},
      {"context-delta main..feature", "another branch, which need not be checked out"},
      {"context-delta --uncommitted HEAD", "what is not committed yet"},
      {"context-delta --budget 16000", "more of it"},
      {"context-delta --snippets --wiki docs",
       "with changed lines, and the pages that may be out of date"},
      {"context-delta --format json | jq .", "for a program"},
      {"context-delta --fail-if changed", "for a job: exit code 1 when source changed"},
      {"context-delta --explain-files", "why which file is left out"},
      {"context-delta index", "prepare the index only"},
  };
  return EXAMPLES;
}

std::vector<Described> exit_codes() {
  return {{std::to_string(EXIT_DONE), "done, also when nothing changed"},
          {std::to_string(EXIT_GATE), "the answer has what --fail-if names"},
          {std::to_string(EXIT_USAGE), "the command line or a preset cannot be understood"},
          {std::to_string(EXIT_GIT), "git cannot compare; the error result is written"},
          {std::to_string(EXIT_FAILED), "failed: index, wiki or output file"},
          {std::to_string(EXIT_SIGNAL_BASE + 2) + ", " + std::to_string(EXIT_SIGNAL_BASE + 15),
           "interrupted, terminated; the index is as before"}};
}

std::span<const Described> environment_variables() {
  static const Described VARIABLES[] = {
      {"CONTEXT_DELTA_NAME",
       "presets the option --NAME, '-' written '_': CONTEXT_DELTA_BUDGET=8000; a switch takes "
       "true or false"},
      {"CONTEXT_DELTA_CONFIG", "the user's configuration file"},
      {"NO_COLOR", "when not empty: no colours unless --color=always"},
      {"CLICOLOR_FORCE", "when not 0: colours although no terminal reads them"},
      {"PAGER", "shows what is longer than the screen, where no --pager is named; else less does"},
      {"COLUMNS", "width of the text, where the terminal does not tell"},
  };
  return VARIABLES;
}

std::span<const Described> files() {
  static const Described FILES[] = {
      {"~/.config/context-delta/config.toml",
       "the user's presets: budget = 8000, snippets = true; below XDG_CONFIG_HOME where that is "
       "set"},
      {".context-delta.toml",
       "the project's presets, at the top of its work tree: those that neither choose what "
       "is compared nor reach outside"},
      {".git/context-delta/index.sqlite", "the index; may be deleted at any time"},
  };
  return FILES;
}

}  // namespace context_delta::cli
