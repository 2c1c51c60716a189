#include "cli/completions.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

constexpr std::string_view HEAD = R"fish(# Completion of context-delta for fish.

function __context_delta_refs
    git for-each-ref --format='%(refname:short)' refs/heads refs/remotes refs/tags 2>/dev/null
end

function __context_delta_command
    for word in (commandline -opc)[2..-1]
)fish";

/// Text between single quotation marks.
std::string in_quotes(std::string_view text) {
  std::string result = "'";
  for (const char letter : text) {
    if (letter == '\'' || letter == '\\') result += '\\';
    result += letter;
  }
  return result + "'";
}

std::string value_action(const OptionRow& option) {
  if (option.value.empty()) return "";
  switch (option.completion) {
    case Completion::CHOICES:
      return " -x -a " + in_quotes(spaced(option.value));
    case Completion::FILE:
      return " -r -F";
    case Completion::FOLDER:
      return " -x -a '(__fish_complete_directories)'";
    case Completion::REVISION:
      return " -x -a '(__context_delta_refs)'";
    case Completion::NOTHING:
      return " -x";
  }
  return "";
}

std::string takers(const OptionRow& option) {
  std::string names;
  for (const CommandRow& row : commands()) {
    if (takes(option, row.command)) names.append(" ").append(row.name);
  }
  return names;
}

std::string option_line(const OptionRow& option, const std::string& name) {
  const bool is_long = name.starts_with("--");
  return "complete -c context-delta -n 'contains -- (__context_delta_command)" + takers(option) +
         "' " + (is_long ? "-l " + name.substr(2) : "-s " + name.substr(1)) + value_action(option) +
         " -d " + in_quotes(option.help) + "\n";
}

std::string command_lines() {
  std::string text;
  for (const CommandRow& row : commands()) {
    text += "complete -c context-delta -n 'not __context_delta_command >/dev/null' -a " +
            std::string(row.name) + " -d " + in_quotes(row.help) + "\n";
    if (row.words.empty()) continue;
    text +=
        "complete -c context-delta -n 'test (__context_delta_command) = " + std::string(row.name) +
        "' -a " + in_quotes(spaced(row.words)) + "\n";
  }
  return text;
}

}  // namespace

std::string fish_completion() {
  std::string names;
  for (const CommandRow& row : commands()) names.append(" ").append(row.name);
  std::string text = std::string(HEAD) + "        if contains -- $word" + names +
                     "\n            echo $word\n            return 0\n        end\n    end\n"
                     "    echo delta\n    return 1\nend\n\ncomplete -c context-delta -f\n" +
                     command_lines();
  for (const OptionRow& option : options()) {
    for (const std::string& name : all_names(option)) text += option_line(option, name);
  }
  return text;
}

}  // namespace context_delta::cli
