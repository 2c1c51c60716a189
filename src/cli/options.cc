#include "cli/options.h"

#include <array>
#include <charconv>

namespace context_delta::cli {
namespace {

constexpr std::int64_t MOST_TOKENS = 1'000'000'000;

std::int64_t number_between(const std::string& value, std::int64_t least, std::int64_t most,
                            const std::string& what) {
  std::int64_t number = 0;
  const char* end = value.data() + value.size();
  const auto [read, error] = std::from_chars(value.data(), end, number);
  if (error != std::errc() || read != end || number < least || number > most) {
    throw UsageError("takes " + what + " from " + std::to_string(least) + " to " +
                     std::to_string(most) + ", not '" + value + "'");
  }
  return number;
}

template <class Choice, std::size_t SIZE>
Choice one_of(const std::pair<std::string_view, Choice> (&choices)[SIZE],
              const std::string& value) {
  std::string names;
  for (const auto& [name, choice] : choices) {
    if (name == value) return choice;
    names += (names.empty() ? "" : ", ") + std::string(name);
  }
  throw UsageError("takes one of " + names + ", not '" + value + "'");
}

const std::string& not_empty(const std::string& value) {
  if (value.empty()) throw UsageError("takes a value that is not empty");
  return value;
}

void set_format(Settings& settings, const std::string& value) {
  settings.format = render::find_format(value);
  if (settings.format == nullptr) {
    std::string names;
    for (const render::Format& format : render::formats()) {
      names.append(names.empty() ? "" : ", ").append(format.name);
    }
    throw UsageError("takes one of " + names + ", not '" + value + "'");
  }
}

void set_colour(Settings& settings, const std::string& value) {
  constexpr std::pair<std::string_view, Colour> COLOURS[] = {
      {"auto", Colour::AUTO}, {"always", Colour::ALWAYS}, {"never", Colour::NEVER}};
  settings.colour = one_of(COLOURS, value);
}

constexpr std::array<CommandRow, 3> COMMANDS = {{
    {"delta", Command::DELTA, "what the branch changed since it left its base (the default)"},
    {"index", Command::INDEX, "bring the index up to date with the checked-out commit"},
    {"graph", Command::GRAPH, "every symbol and call edge of the index as lines of JSON"},
}};

using Text = const std::string&;

const std::array<OptionRow, 20> OPTIONS = {{
    {"", "--base", "REF", "d", "compare with this branch (default: the repository's own)",
     [](Settings& settings, Text value) { settings.request.base_branch = not_empty(value); }},
    {"", "--target", "REF", "d", "the branch to review (default: what is checked out)",
     [](Settings& settings, Text value) { settings.request.target_branch = not_empty(value); }},
    {"", "--budget", "TOKENS", "d", "the most tokens the pack may take (default: 4000)",
     [](Settings& settings, Text value) {
       settings.request.token_budget = number_between(value, 0, MOST_TOKENS, "a number of tokens");
     }},
    {"", "--token-scale", "PERCENT", "d",
     "what your model counts for 100 tokens counted here; divides the budget (default: 100)",
     [](Settings& settings, Text value) {
       settings.token_scale = number_between(value, 1, 10'000, "a percentage");
     }},
    {"", "--no-call-graph", "", "d", "leave out who calls the changed symbols",
     [](Settings& settings, Text) { settings.request.include_call_graph = false; }},
    {"", "--snippets", "", "d", "show the first changed lines of the first files",
     [](Settings& settings, Text) { settings.request.include_snippets = true; }},
    {"", "--all-files", "", "d", "also tests, documents and generated files",
     [](Settings& settings, Text) { settings.request.source_only = false; }},
    {"", "--explain-files", "", "d", "instead of the pack: which rule keeps which changed file out",
     [](Settings& settings, Text) { settings.explain_files = true; }},
    {"", "--wiki", "DIR", "d", "Markdown pages that name their sources: list those concerned",
     [](Settings& settings, Text value) { settings.request.wiki = not_empty(value); }},
    {"", "--format", render::format_names(), "d", "how the answer is written (default: text)",
     set_format},
    {"-o", "--output", "FILE", "dg", "write the answer to FILE, whole or not at all; - is stdout",
     [](Settings& settings, Text value) { settings.output = not_empty(value); }},
    {"-C", "", "DIR", "dig", "look at the repository in DIR (default: the current folder)",
     [](Settings& settings, Text value) { settings.directory = not_empty(value); }},
    {"", "--index", "FILE", "dig", "keep the index in FILE (default: in the git directory)",
     [](Settings& settings, Text value) { settings.index = not_empty(value); }},
    {"-j", "--jobs", "N", "dig", "parse with N threads (default: 0, one per processor)",
     [](Settings& settings, Text value) {
       settings.jobs = static_cast<unsigned>(number_between(value, 0, 1024, "a number"));
     }},
    {"", "--color", "auto|always|never", "dig", "colours: on a terminal, always or never",
     set_colour},
    {"-q", "--quiet", "", "dig", "no progress and no remarks on standard error",
     [](Settings& settings, Text) { settings.quiet = true; }},
    {"-v", "--verbose", "", "dig", "say on standard error what was done",
     [](Settings& settings, Text) { settings.verbose = true; }},
    {"-h", "", "", "dig", "a short help",
     [](Settings& settings, Text) {
       if (settings.question == Question::NONE) settings.question = Question::SHORT_HELP;
     }},
    {"", "--help", "", "dig", "the whole help",
     [](Settings& settings, Text) { settings.question = Question::HELP; }},
    {"", "--version", "", "dig", "the version, on one line",
     [](Settings& settings, Text) { settings.question = Question::VERSION; }},
}};

constexpr char letter(Command command) {
  switch (command) {
    case Command::DELTA:
      return 'd';
    case Command::INDEX:
      return 'i';
    case Command::GRAPH:
      return 'g';
  }
  return '\0';
}

}  // namespace

std::span<const CommandRow> commands() { return COMMANDS; }

std::span<const OptionRow> options() { return OPTIONS; }

bool takes(const OptionRow& option, Command command) {
  return option.commands.find(letter(command)) != std::string_view::npos;
}

const OptionRow* find_option(std::string_view name) {
  for (const OptionRow& option : OPTIONS) {
    if (!name.empty() && (name == option.flag || name == option.name)) return &option;
  }
  return nullptr;
}

}  // namespace context_delta::cli
