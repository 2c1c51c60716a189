#include "cli/completions.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

/// Names of refs are anyone's: they are never expanded, and quoted when inserted.
constexpr std::string_view HEAD = R"bash(# Completion of context-delta for bash.

_context_delta_refs() {
  local ref
  while IFS= read -r ref; do
    [[ $ref == "$1"* ]] && COMPREPLY+=("$(printf %q "$ref")")
  done < <(git for-each-ref --format='%(refname:short)' refs/heads refs/remotes refs/tags 2>/dev/null)
}

_context_delta() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command='' i
  COMPREPLY=()
  if [[ $word == = ]]; then
    word=''
  elif [[ $before == = ]]; then
    before=${COMP_WORDS[COMP_CWORD-2]}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
)bash";

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) text.append(text.empty() ? "" : separator).append(word);
  return text;
}

std::string command_names(std::string_view separator) {
  std::vector<std::string> names;
  for (const CommandRow& row : commands()) names.emplace_back(row.name);
  return joined(names, separator);
}

/// What completes the value of an option.
std::string value_action(const OptionRow& option) {
  switch (option.completion) {
    case Completion::CHOICES:
      return "mapfile -t COMPREPLY < <(compgen -W '" + spaced(option.value) + "' -- \"$word\")";
    case Completion::FILE:
      return "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";
    case Completion::FOLDER:
      return "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- \"$word\")";
    case Completion::REVISION:
      return "_context_delta_refs \"$word\"";
    case Completion::NOTHING:
      return ":";
  }
  return ":";
}

std::string value_cases() {
  std::string text;
  for (const OptionRow& option : options()) {
    if (option.value.empty()) continue;
    text += "    " + joined(all_names(option), "|") + ") " + value_action(option) + "; return ;;\n";
  }
  return text;
}

std::string value_names() {
  std::vector<std::string> names;
  for (const OptionRow& option : options()) {
    if (option.value.empty()) continue;
    for (const std::string& name : all_names(option)) names.push_back(name);
  }
  return joined(names, "|");
}

/// Option names, and the word that follows, of each command.
std::string command_cases() {
  std::string text;
  for (const CommandRow& row : commands()) {
    std::vector<std::string> names;
    for (const OptionRow& option : options()) {
      if (!takes(option, row.command)) continue;
      for (const std::string& name : all_names(option)) names.push_back(name);
    }
    text += "    " + std::string(row.name) + (row.command == Command::DELTA ? "|''" : "") +
            ") options='" + joined(names, " ") + "' words='" + spaced(row.words) + "' ;;\n";
  }
  return text;
}

}  // namespace

std::string bash_completion() {
  return std::string(HEAD) + "    case ${COMP_WORDS[i-1]} in " + value_names() +
         ") continue ;; esac\n    case ${COMP_WORDS[i]} in " + command_names("|") +
         ") command=${COMP_WORDS[i]}; break ;; esac\n  done\n  case $before in\n" + value_cases() +
         "  esac\n  local options words\n  case $command in\n" + command_cases() +
         "  esac\n  [[ -z $command ]] && words='" + command_names(" ") +
         "'\n  [[ $word == -* ]] && words=$options\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n}\n\n"
         "complete -F _context_delta context-delta\n";
}

}  // namespace context_delta::cli
