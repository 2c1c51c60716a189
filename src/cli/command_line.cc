#include "cli/command_line.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>

#include "utils/suggestion.h"

namespace context_delta::cli {
namespace {

bool is_option(std::string_view argument) { return argument.size() > 1 && argument[0] == '-'; }

/// An option as an argument names it.
struct Named {
  const OptionRow* option;
  bool negated;  ///< as `--no-NAME`
};

constexpr std::string_view NEGATION = "--no-";

[[noreturn]] void fail_on_unknown(const std::string& name) {
  std::vector<std::string> names;
  for (const OptionRow& option : options()) {
    for (const std::string& known : all_names(option)) {
      if (known.starts_with("--")) names.push_back(known);
    }
  }
  const std::vector<std::string_view> views(names.begin(), names.end());
  throw UsageError("unknown option " + name + did_you_mean(name, views));
}

/// Raises UsageError when there is no such option.
Named option_named(const std::string& name) {
  if (const OptionRow* option = find_option(name)) return {option, false};
  if (name.starts_with(NEGATION)) {
    const OptionRow* option = find_option("--" + name.substr(NEGATION.size()));
    if (option != nullptr && can_be_negated(*option)) return {option, true};
  }
  fail_on_unknown(name);
}

/// Whether `argument`, an option, takes the next argument as its value. Raises UsageError for an
/// option that does not exist or takes no value and has one.
bool awaits_value(const std::string& argument) {
  if (argument.starts_with("--")) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const bool takes_value = !option_named(name).option->value.empty();
    if (!takes_value && equals != argument.npos) throw UsageError(name + " takes no value");
    return takes_value && equals == argument.npos;
  }
  for (std::size_t i = 1; i < argument.size(); ++i) {
    if (option_named(std::string("-") + argument[i]).option->value.empty()) continue;
    return i + 1 == argument.size();
  }
  return false;
}

/// The command of a name; null for a word that is none and may be a revision. Raises UsageError for
/// what looks like a mistyped command.
const CommandRow* command_named(const std::string& word) {
  std::vector<std::string_view> names;
  for (const CommandRow& row : commands()) {
    if (row.name == word) return &row;
    names.push_back(row.name);
  }
  const std::string suggestion = did_you_mean(word, names);
  if (suggestion.empty() || word.find_first_of("~^@/:") != word.npos ||
      word.find("..") != word.npos) {
    return nullptr;
  }
  throw UsageError("unknown command '" + word + "'" + suggestion);
}

[[noreturn]] void fail_without_value(const OptionRow& option) {
  throw UsageError(shown_name(option) + " needs a value: " + std::string(option.value));
}

/// Where a variable of a script is not set the value is empty, and the parser would take the next
/// argument for it.
void check_value(const std::string& option, std::string_view value) {
  if (!value.empty()) return;
  const bool is_long = option.starts_with("--");
  fail_without_value(*option_named(is_long ? option : std::string("-") + option.back()).option);
}

/// Takes the words that are neither options nor their values out of the arguments; what follows
/// `--` is such a word.
std::vector<std::string> take_words(std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  std::vector<std::string> left;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--") {
      words.insert(words.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                   arguments.end());
      break;
    }
    if (!is_option(arguments[i])) {
      words.push_back(arguments[i]);
      continue;
    }
    left.push_back(arguments[i]);
    const bool awaits = awaits_value(arguments[i]);
    const std::size_t equals = arguments[i].find('=');
    if (arguments[i].starts_with("--") && equals != std::string::npos) {
      check_value(arguments[i].substr(0, equals),
                  std::string_view(arguments[i]).substr(equals + 1));
    }
    if (!awaits || i + 1 == arguments.size()) continue;
    check_value(arguments[i], arguments[i + 1]);
    // One argument of both: the value may look like an option.
    if (arguments[i].starts_with("--")) left.back() += "=";
    left.back() += arguments[++i];
  }
  arguments = std::move(left);
  return words;
}

void read_words(const std::vector<std::string>& words, CommandLine& line) {
  if (words.empty()) return;
  const CommandRow* row = command_named(words[0]);
  const std::size_t first = row == nullptr ? 0 : 1;
  if (row != nullptr) line.command = row->command;
  const bool takes_word = line.command == Command::DELTA || !row->words.empty();
  const std::size_t most = first + (takes_word ? 1 : 0);
  if (words.size() > most) throw UsageError("unexpected argument '" + words[most] + "'");
  if (words.size() == first) return;
  if (line.command == Command::DELTA) {
    line.range = words[first];
    if (line.range.empty()) throw UsageError("a revision is empty: name a branch, tag or commit");
    return;
  }
  const std::vector<std::string_view> known = choices(row->words);
  if (std::find(known.begin(), known.end(), words[1]) == known.end()) {
    throw UsageError(std::string(row->name) + " takes one of " + std::string(row->words) +
                     ", not '" + words[1] + "'" + did_you_mean(words[1], known));
  }
  line.word = words[1];
}

/// Both `BASE..TARGET` and `BASE...TARGET` mean what the target changed since it left the base;
/// what is left out is what is checked out.
void apply_range(const std::string& range, services::DeltaRequest& request) {
  if (range.empty()) return;
  if (request.base_branch || request.target_branch || request.pull_request) {
    throw UsageError("'" + range +
                     "' does not go with --base, --target and --pr: name both sides "
                     "once");
  }
  const std::size_t dots = range.find("..");
  const std::size_t length = range.find("...") == dots ? 3 : 2;
  const std::string target = dots == range.npos ? "" : range.substr(dots + length);
  const std::string base = range.substr(0, dots);
  if (base.empty() && target.empty()) throw UsageError("'" + range + "' names no revision");
  request.base_branch = base.empty() ? "HEAD" : base;
  request.base_parameter = "revision";
  if (target.empty()) return;
  request.target_branch = target;
  request.target_parameter = "revision";
}

/// Each names what is reviewed.
void check_target(const services::DeltaRequest& request) {
  const char* uncommitted = request.uncommitted == services::Uncommitted::ALL      ? "--uncommitted"
                            : request.uncommitted == services::Uncommitted::STAGED ? "--staged"
                                                                                   : nullptr;
  const char* other = request.pull_request ? "--pr" : request.target_branch ? "a target" : nullptr;
  if (request.pull_request && request.target_branch) {
    throw UsageError("--pr does not go with --target: each names what is reviewed");
  }
  if (uncommitted == nullptr || other == nullptr) return;
  throw UsageError(std::string(uncommitted) + " reviews what is checked out and does not go with " +
                   other);
}

CLI::Option* declare(CLI::App& app, const OptionRow& option) {
  std::string names;
  for (const std::string& name : all_names(option)) {
    if (!names.empty()) names += ',';
    if (name.starts_with(NEGATION) && can_be_negated(option)) names += '!';
    names += name;
  }
  CLI::Option* declared = option.value.empty() ? app.add_flag(names) : app.add_option(names);
  return declared->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

[[noreturn]] void fail_on_surplus(const std::string& argument, Command command) {
  throw UsageError("option " + argument.substr(0, argument.find('=')) + " does not belong to '" +
                   std::string(row_of(command).name) + "'");
}

/// The option that the parser complains about stands at the start of its text.
std::string reworded(const CLI::ParseError& error) {
  const std::string text = error.what();
  const std::string name = text.substr(0, text.find_first_of(": "));
  const OptionRow* option = find_option(name.substr(0, name.find(',')));
  if (option == nullptr) return text;
  fail_without_value(*option);
}

/// Parses options alone.
std::vector<Given> parse_options(std::vector<std::string> arguments, Command command) {
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  std::vector<std::pair<const OptionRow*, CLI::Option*>> declared;
  for (const OptionRow& option : options()) {
    if (takes(option, command)) declared.emplace_back(&option, declare(app, option));
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    throw UsageError(reworded(error));
  }
  const std::vector<std::string> surplus = app.remaining();
  if (!surplus.empty()) fail_on_surplus(surplus.front(), command);
  std::vector<Given> given;
  for (const auto& [option, values] : declared) {
    for (const std::string& value : values->results()) given.push_back({option, value});
  }
  return given;
}

}  // namespace

CommandLine parse_command_line(std::span<const std::string> arguments) {
  std::vector<std::string> left(arguments.begin(), arguments.end());
  CommandLine line;
  read_words(take_words(left), line);
  line.given = parse_options(std::move(left), line.command);
  return line;
}

void apply(const CommandLine& line, Settings& settings) {
  settings.command = line.command;
  settings.word = line.word;
  settings.request.base_parameter = "--base";
  settings.request.target_parameter = "--target";
  // A range overrides presets, but not what is said beside it.
  if (!line.range.empty()) settings.request.base_branch.reset();
  for (const auto& [option, value] : line.given) {
    try {
      option->apply(settings, value);
    } catch (const UsageError& error) {
      throw UsageError(shown_name(*option) + " " + error.what());
    }
  }
  apply_range(line.range, settings.request);
  check_target(settings.request);
}

bool asks_for_programs_format(std::span<const std::string> arguments) {
  constexpr std::string_view OPTION = "--format";
  bool asked = false;
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    std::string_view value;
    if (arguments[i] == OPTION && i + 1 < arguments.size()) {
      value = arguments[i + 1];
    } else if (arguments[i].starts_with(std::string(OPTION) + "=")) {
      value = std::string_view(arguments[i]).substr(OPTION.size() + 1);
    } else {
      continue;
    }
    const render::Format* format = render::find_format(value);
    asked = format != nullptr && format->for_programs;
  }
  return asked;
}

}  // namespace context_delta::cli
