#include "cli/manual.h"

#include <cctype>
#include <string_view>

#include "cli/description.h"
#include "cli/options.h"

namespace context_delta::cli {
namespace {

/// Text as roff shows it: backslashes and hyphens as themselves, and no line taken for a request.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\\') {
      result += "\\e";
    } else if (letter == '-') {
      result += "\\-";
    } else {
      if (result.empty() && (letter == '.' || letter == '\'')) result += "\\&";
      result += letter;
    }
  }
  return result;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }

std::string section(std::string_view title) { return ".SH " + std::string(title) + "\n"; }

/// As a sentence.
std::string sentence(std::string text) {
  if (!text.empty()) text[0] = static_cast<char>(std::toupper(text[0]));
  return escaped(text) + ".\n";
}

std::string item(const std::string& tag, std::string_view text) {
  return ".TP\n" + tag + "\n" + sentence(std::string(text));
}

template <class Rows>
std::string items(const Rows& rows) {
  std::string text;
  for (const Described& row : rows) text += item(bold(row.name), row.meaning);
  return text;
}

std::string option_tag(const OptionRow& option) {
  std::string tag;
  if (!option.flag.empty()) tag = bold(option.flag);
  if (!option.name.empty()) tag += (tag.empty() ? "" : ", ") + bold(shown_name(option));
  if (!option.value.empty()) tag += " \\fI" + escaped(option.value) + "\\fR";
  return tag;
}

/// "delta, graph": the commands that take it.
std::string takers(const OptionRow& option) {
  std::string names;
  for (const CommandRow& row : commands()) {
    if (!takes(option, row.command)) continue;
    names.append(names.empty() ? "" : ", ").append(row.name);
  }
  return names;
}

std::string presets(const OptionRow& option) {
  if (option.preset == Preset::NOBODY) return "";
  std::string text = "Preset by " + preset_variable(option);
  if (option.preset >= Preset::USER) text += ", the user's file";
  if (option.preset == Preset::PROJECT) text += " and the project's";
  return escaped(text) + ".\n";
}

std::string option_items(bool general) {
  std::string text;
  for (const OptionRow& option : options()) {
    if (is_general(option) != general) continue;
    text += item(option_tag(option), option.help);
    if (!general && option.commands != "d") text += escaped("Of " + takers(option)) + ".\n";
    text += presets(option);
  }
  return text;
}

std::string command_items() {
  std::string text;
  for (const CommandRow& row : commands()) {
    std::string tag = bold(row.name);
    if (!row.words.empty()) tag += " \\fI" + escaped(row.words) + "\\fR";
    text += item(tag, row.help);
  }
  return text;
}

}  // namespace

std::string manual_page() {
  return ".TH CONTEXT\\-DELTA 1 \"\" \"context\\-delta " CONTEXT_DELTA_VERSION
         "\" \"User commands\"\n" +
         section("NAME") + "context\\-delta \\- " + escaped(purpose()) + "\n" +
         section("SYNOPSIS") + bold("context-delta") +
         " [\\fICOMMAND\\fR] [\\fIOPTIONS\\fR] [\\fIBASE\\fR..\\fITARGET\\fR | "
         "\\fIBASE\\fR]\n.br\n" +
         bold("git context-delta") + " ...\n" + section("DESCRIPTION") +
         escaped(
             "Shows what a branch changed since it left its base, cut to a budget of tokens: "
             "the changed files by impact, the symbols on the changed lines, the callers that "
             "a call edge proves and those that are only guessed, snippets, stale wiki pages, "
             "and counts of all that was left out. The repository is indexed on the first "
             "run and kept up to date by later ones. Nothing in it is executed, fetched or "
             "written, but for the index in its git directory.") +
         "\n.PP\n" +
         escaped(
             "BASE..TARGET and BASE...TARGET mean the same: what TARGET changed since it left "
             "BASE. "
             "Either is any commit: a branch, a tag, an id, HEAD~3; a TARGET left out is what is "
             "checked out, and so is a BASE left out before the dots. Nothing is checked out for "
             "it, and a bare repository will do.") +
         "\n" + section("EXAMPLES") + items(examples()) + section("COMMANDS") + command_items() +
         section("OPTIONS") + option_items(false) + ".SS Of every command\n" + option_items(true) +
         section("PRECEDENCE") +
         escaped(
             "Options come before the environment, the environment before the project's file, "
             "and that before the user's file. The project's file is not trusted: it cannot "
             "choose what is compared, and names no path outside the work tree.") +
         "\n" + section("EXIT STATUS") + items(exit_codes()) + section("ENVIRONMENT") +
         items(environment_variables()) + section("FILES") + items(files());
}

}  // namespace context_delta::cli
