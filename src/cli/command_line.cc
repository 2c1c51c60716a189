#include "cli/command_line.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/suggestion.h"

namespace context_delta::cli {
namespace {

bool is_option(std::string_view argument) { return argument.size() > 1 && argument[0] == '-'; }

[[noreturn]] void fail_on_unknown(const std::string& name) {
  std::vector<std::string_view> names;
  for (const OptionRow& option : options()) {
    if (!option.name.empty()) names.push_back(option.name);
  }
  throw UsageError("unknown option " + name + did_you_mean(name, names));
}

/// The option of a name. Raises UsageError when there is none.
const OptionRow& option_named(const std::string& name) {
  const OptionRow* option = find_option(name);
  if (option == nullptr) fail_on_unknown(name);
  return *option;
}

/// Whether `argument`, an option, takes the next argument as its value. Raises UsageError for an
/// option that does not exist or takes no value and has one.
bool awaits_value(const std::string& argument) {
  if (argument.starts_with("--")) {
    const std::size_t equals = argument.find('=');
    const OptionRow& option = option_named(argument.substr(0, equals));
    if (option.value.empty() && equals != argument.npos) {
      throw UsageError(std::string(option.name) + " takes no value");
    }
    return !option.value.empty() && equals == argument.npos;
  }
  for (std::size_t i = 1; i < argument.size(); ++i) {
    if (option_named(std::string("-") + argument[i]).value.empty()) continue;
    return i + 1 == argument.size();
  }
  return false;
}

const CommandRow& command_named(const std::string& word) {
  std::vector<std::string_view> names;
  for (const CommandRow& row : commands()) {
    if (row.name == word) return row;
    names.push_back(row.name);
  }
  throw UsageError("unknown command '" + word + "'" + did_you_mean(word, names));
}

/// Takes the command out of the arguments, all of which are looked at: whether a word is a command
/// or a value depends on the option before it.
Command take_command(std::vector<std::string>& arguments) {
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (is_option(arguments[i])) {
      if (awaits_value(arguments[i])) ++i;
    } else if (!found) {
      found = i;
    }
  }
  if (!found) return Command::DELTA;
  const Command command = command_named(arguments[*found]).command;
  arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(*found));
  return command;
}

std::string_view shown_name(const OptionRow& option) {
  return option.name.empty() ? option.flag : option.name;
}

void declare(CLI::App& app, const OptionRow& option, Settings& settings) {
  std::string names(option.flag);
  if (!names.empty() && !option.name.empty()) names += ',';
  names += option.name;
  const auto apply = [&option, &settings](const std::string& value) {
    try {
      option.apply(settings, value);
    } catch (const UsageError& error) {
      throw UsageError(std::string(shown_name(option)) + " " + error.what());
    }
  };
  if (option.value.empty()) {
    app.add_flag_callback(names, [apply] { apply(""); });
  } else {
    app.add_option_function<std::string>(names, apply)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }
}

[[noreturn]] void fail_on_surplus(const std::string& argument, Command command) {
  if (!is_option(argument)) throw UsageError("unexpected argument '" + argument + "'");
  const auto row = std::find_if(commands().begin(), commands().end(),
                                [&](const CommandRow& each) { return each.command == command; });
  throw UsageError("option " + argument.substr(0, argument.find('=')) + " does not belong to '" +
                   std::string(row->name) + "'");
}

/// The option that the parser complains about stands at the start of its text.
std::string reworded(const CLI::ParseError& error) {
  const std::string text = error.what();
  const std::string name = text.substr(0, text.find_first_of(": "));
  const OptionRow* option = find_option(name.substr(0, name.find(',')));
  if (option == nullptr) return text;
  return std::string(shown_name(*option)) + " needs a value: " + std::string(option->value);
}

}  // namespace

Settings parse_command_line(std::span<const std::string> arguments) {
  std::vector<std::string> left(arguments.begin(), arguments.end());
  Settings settings;
  settings.command = take_command(left);
  settings.request.base_parameter = "--base";
  settings.request.target_parameter = "--target";
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  for (const OptionRow& option : options()) {
    if (takes(option, settings.command)) declare(app, option, settings);
  }
  std::reverse(left.begin(), left.end());
  try {
    app.parse(left);
  } catch (const CLI::ParseError& error) {
    throw UsageError(reworded(error));
  }
  const std::vector<std::string> surplus = app.remaining();
  for (const std::string& argument : surplus) {
    if (argument != "--") fail_on_surplus(argument, settings.command);
  }
  return settings;
}

}  // namespace context_delta::cli
