#include "cli/options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>

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
    throw UsageError("takes one of " + std::string(render::format_names()) + ", not '" + value +
                     "'");
  }
}

void add_gate(Settings& settings, const std::string& value) {
  const Gate* gate = find_gate(value);
  if (gate == nullptr) {
    throw UsageError("takes one of " + std::string(gate_names()) + ", not '" + value + "'");
  }
  settings.gates.push_back(gate);
}

constexpr std::pair<std::string_view, Stats> STATS[] = {{"text", Stats::TEXT},
                                                        {"json", Stats::JSON}};

void set_colour(Settings& settings, const std::string& value) {
  constexpr std::pair<std::string_view, Colour> COLOURS[] = {
      {"auto", Colour::AUTO}, {"always", Colour::ALWAYS}, {"never", Colour::NEVER}};
  settings.colour = one_of(COLOURS, value);
}

bool is_on(const std::string& value) { return value == "true"; }

constexpr CommandRow COMMANDS[] = {
    {"delta", Command::DELTA, 'd', "",
     "what the branch changed since it left its base (the default)"},
    {"index", Command::INDEX, 'i', "", "bring the index up to date with the checked-out commit"},
    {"graph", Command::GRAPH, 'g', "", "every symbol and call edge of the index as lines of JSON"},
    {"serve", Command::SERVE, 's', "",
     "answer a language model's host over standard input and output"},
    {"completion", Command::COMPLETION, 'c', "bash|zsh|fish",
     "the completions of a shell, to be read by it at its start"},
    {"manual", Command::MANUAL, 'm', "", "this manual as a page for man"},
    {"help", Command::HELP, 'h', "delta|index|graph|serve|completion|manual",
     "the help of a command"},
};

using Text = const std::string&;

const OptionRow OPTIONS[] = {
    {"", "--base", "REF", "d", "compare with this branch (default: the repository's own)",
     Completion::REVISION, Preset::USER,
     [](Settings& settings, Text value) { settings.request.base_branch = not_empty(value); }},
    {"", "--target", "REF", "d",
     "the commit to review, checked out or not (default: what is checked out)",
     Completion::REVISION, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.request.target_branch = not_empty(value); }},
    {"", "--pr", "NUMBER", "d", "review a pull or merge request that was fetched",
     Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text value) {
       settings.request.pull_request = number_between(value, 1, 1'000'000'000, "a number");
     }},
    {"", "--uncommitted", "", "d", "review the changes and new files that are not committed too",
     Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) { settings.request.uncommitted = services::Uncommitted::ALL; }},
    {"", "--staged", "", "d", "review what is staged too: what a commit would hold now",
     Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) {
       settings.request.uncommitted = services::Uncommitted::STAGED;
     }},
    {"", "--at", "REF", "ig", "the commit to index (default: what is checked out)",
     Completion::REVISION, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.at = not_empty(value); }},
    {"", "--stats", "text|json", "i",
     "also what the update did: blobs parsed, files resolved, edges that came or went",
     Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.stats = one_of(STATS, value); }},
    {"", "--budget", "TOKENS", "d", "the most tokens the pack may take (default: 4000)",
     Completion::NOTHING, Preset::PROJECT,
     [](Settings& settings, Text value) {
       settings.request.token_budget = number_between(value, 0, MOST_TOKENS, "a number of tokens");
     }},
    {"", "--token-scale", "PERCENT", "ds",
     "what your model counts for 100 tokens counted here; divides the budget (default: 100)",
     Completion::NOTHING, Preset::USER,
     [](Settings& settings, Text value) {
       settings.token_scale = number_between(value, 1, 10'000, "a percentage");
     }},
    {"", "--call-graph", "", "d", "list who calls the changed symbols (default: on)",
     Completion::NOTHING, Preset::PROJECT,
     [](Settings& settings, Text value) { settings.request.include_call_graph = is_on(value); }},
    {"", "--snippets", "", "d", "show the first changed lines of the first files (default: off)",
     Completion::NOTHING, Preset::PROJECT,
     [](Settings& settings, Text value) { settings.request.include_snippets = is_on(value); }},
    {"", "--all-files", "", "d", "also tests, documents and generated files (default: off)",
     Completion::NOTHING, Preset::PROJECT,
     [](Settings& settings, Text value) { settings.request.source_only = !is_on(value); }},
    {"", "--explain-files", "", "d", "instead of the pack: which rule keeps which changed file out",
     Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) { settings.explain_files = true; }},
    {"", "--wiki", "DIR", "d", "Markdown pages that name their sources: list those concerned",
     Completion::FOLDER, Preset::PROJECT,
     [](Settings& settings, Text value) { settings.request.wiki = not_empty(value); }},
    {"", "--fail-if", gate_names(), "d", "exit with 1 when the answer has this; may be repeated",
     Completion::CHOICES, Preset::NOBODY, add_gate},
    {"", "--format", render::format_names(), "d", "how the answer is written (default: text)",
     Completion::CHOICES, Preset::USER, set_format},
    {"-o", "--output", "FILE", "dg", "write the answer to FILE, whole or not at all; - is stdout",
     Completion::FILE, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.output = not_empty(value); }},
    {"", "--root", "DIR", "s",
     "a folder that tools may look into; may be repeated (default: this repository)",
     Completion::FOLDER, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.roots.push_back(not_empty(value)); }},
    {"-C", "", "DIR", "digs", "look at the repository in DIR (default: the current folder)",
     Completion::FOLDER, Preset::NOBODY,
     [](Settings& settings, Text value) { settings.directory = not_empty(value); }},
    {"", "--index", "FILE", "dig", "keep the index in FILE (default: in the git directory)",
     Completion::FILE, Preset::ENVIRONMENT,
     [](Settings& settings, Text value) { settings.index = not_empty(value); }},
    {"-j", "--jobs", "N", "digs", "parse with N threads (default: 0, one per processor)",
     Completion::NOTHING, Preset::USER,
     [](Settings& settings, Text value) {
       settings.jobs = static_cast<unsigned>(number_between(value, 0, 1024, "a number"));
     }},
    {"", "--color", "auto|always|never", "digs", "colours: on a terminal, always or never",
     Completion::CHOICES, Preset::USER, set_colour},
    {"", "--pager", "COMMAND", "d", "show what is longer than the screen with it (default: $PAGER)",
     Completion::NOTHING, Preset::USER,
     [](Settings& settings, Text value) { settings.pager = value; }},
    {"", "--no-pager", "", "d", "never start a pager", Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) { settings.no_pager = true; }},
    {"-q", "--quiet", "", "digs", "no progress and no remarks on standard error",
     Completion::NOTHING, Preset::NOBODY, [](Settings& settings, Text) { settings.quiet = true; }},
    {"-v", "--verbose", "", "digs", "say on standard error what was done", Completion::NOTHING,
     Preset::NOBODY, [](Settings& settings, Text) { settings.verbose = true; }},
    {"", "--no-config", "", "digs",
     "read no configuration file and no variable that presets options", Completion::NOTHING,
     Preset::NOBODY, [](Settings& settings, Text) { settings.configuration = false; }},
    {"-h", "", "", "digscmh", "a short help", Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) {
       if (settings.question == Question::NONE) settings.question = Question::SHORT_HELP;
     }},
    {"", "--help", "", "digscmh", "the whole help", Completion::NOTHING, Preset::NOBODY,
     [](Settings& settings, Text) { settings.question = Question::HELP; }},
    {"", "--version", "", "digscmh", "the version, on one line", Completion::NOTHING,
     Preset::NOBODY, [](Settings& settings, Text) { settings.question = Question::VERSION; }},
};

}  // namespace

std::span<const CommandRow> commands() { return COMMANDS; }

std::span<const OptionRow> options() { return OPTIONS; }

const CommandRow& row_of(Command command) {
  return *std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                       [&](const CommandRow& row) { return row.command == command; });
}

bool takes(const OptionRow& option, Command command) {
  return option.commands.find(row_of(command).letter) != std::string_view::npos;
}

bool is_general(const OptionRow& option) {
  return takes(option, Command::DELTA) && takes(option, Command::INDEX) &&
         takes(option, Command::GRAPH);
}

bool can_be_negated(const OptionRow& option) {
  return option.value.empty() && option.preset != Preset::NOBODY;
}

std::string shown_name(const OptionRow& option) {
  if (option.name.empty()) return std::string(option.flag);
  if (!can_be_negated(option)) return std::string(option.name);
  return "--[no-]" + std::string(option.name.substr(2));
}

std::vector<std::string> all_names(const OptionRow& option) {
  std::vector<std::string> names;
  if (!option.flag.empty()) names.emplace_back(option.flag);
  if (!option.name.empty()) names.emplace_back(option.name);
  if (can_be_negated(option)) names.push_back("--no-" + std::string(preset_key(option)));
  return names;
}

const OptionRow* find_option(std::string_view name) {
  for (const OptionRow& option : OPTIONS) {
    if (!name.empty() && (name == option.flag || name == option.name)) return &option;
  }
  return nullptr;
}

std::string_view preset_key(const OptionRow& option) {
  return option.name.substr(std::min<std::size_t>(2, option.name.size()));
}

std::string preset_variable(const OptionRow& option) {
  std::string variable = "CONTEXT_DELTA_";
  for (const char letter : preset_key(option)) {
    variable += letter == '-' ? '_' : static_cast<char>(std::toupper(letter));
  }
  return variable;
}

std::vector<std::string_view> choices(std::string_view joined) {
  std::vector<std::string_view> all;
  while (!joined.empty()) {
    const std::size_t end = std::min(joined.find('|'), joined.size());
    all.push_back(joined.substr(0, end));
    joined.remove_prefix(std::min(end + 1, joined.size()));
  }
  return all;
}

}  // namespace context_delta::cli
