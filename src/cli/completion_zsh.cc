#include "cli/completions.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

constexpr std::string_view HEAD = R"zsh(#compdef context-delta
# Completion of context-delta for zsh.

_context-delta-refs() {
  local -a refs
  refs=(${(f)"$(git for-each-ref --format='%(refname:short)' refs/heads refs/remotes refs/tags 2>/dev/null)"})
  compadd -a refs
}

_context-delta() {
  local command=delta word
  local -a specs
  for word in ${words[2,CURRENT-1]}; do
)zsh";

constexpr std::string_view TAIL = R"zsh(  _arguments -s -S : $specs
}

if [[ $funcstack[1] == _context-delta ]]; then
  _context-delta "$@"
else
  compdef _context-delta context-delta
fi
)zsh";

/// Text inside a specification between single quotation marks.
std::string quoted(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\'') {
      result += "'\\''";
      continue;
    }
    if (letter == ':' || letter == '[' || letter == ']' || letter == '\\') result += '\\';
    result += letter;
  }
  return result;
}

std::string value_action(const OptionRow& option) {
  switch (option.completion) {
    case Completion::CHOICES: {
      std::string text = "(";
      for (const std::string_view choice : choices(option.value)) {
        text.append(text.size() == 1 ? "" : " ").append(choice);
      }
      return text + ")";
    }
    case Completion::FILE:
      return "_files";
    case Completion::FOLDER:
      return "_files -/";
    case Completion::REVISION:
      return "_context-delta-refs";
    case Completion::NOTHING:
      return " ";
  }
  return " ";
}

std::string spec(const OptionRow& option, const std::string& name) {
  std::string text = "      '" + name;
  if (!option.value.empty()) text += name.starts_with("--") ? "=" : "+";
  text += "[" + quoted(option.help) + "]";
  if (!option.value.empty()) {
    text += ":" + quoted(option.completion == Completion::CHOICES ? "choice" : option.value) + ":" +
            value_action(option);
  }
  return text + "'\n";
}

std::string command_spec() {
  std::string text = "'1:command:((";
  for (const CommandRow& row : commands()) {
    std::string help;
    for (const char letter : row.help) {
      if (letter == '\'') {
        help += "\\'\\''";
        continue;
      }
      if (letter == ' ' || letter == '(' || letter == ')' || letter == ':') help += '\\';
      help += letter;
    }
    text += std::string(row.name) + "\\:" + help + " ";
  }
  text.back() = ')';
  return text + ")'";
}

std::string word_spec(const CommandRow& row) {
  if (row.words.empty()) return "";
  std::string text = "      '2:word:(";
  for (const std::string_view choice : choices(row.words)) text.append(choice).append(" ");
  text.back() = ')';
  return text + "'\n";
}

std::string command_cases() {
  std::string text;
  for (const CommandRow& row : commands()) {
    text += "    (" + std::string(row.name) + ") specs=(\n";
    for (const OptionRow& option : options()) {
      if (!takes(option, row.command)) continue;
      for (const std::string& name : all_names(option)) text += spec(option, name);
    }
    text += word_spec(row) + "    ) ;;\n";
  }
  return text;
}

}  // namespace

std::string zsh_completion() {
  std::string names;
  for (const CommandRow& row : commands()) names.append(names.empty() ? "" : "|").append(row.name);
  return std::string(HEAD) + "    case $word in (" + names +
         ") command=$word; break ;; esac\n  done\n  case $command in\n" + command_cases() +
         "  esac\n  specs+=(" + command_spec() + ")\n" + std::string(TAIL);
}

}  // namespace context_delta::cli
