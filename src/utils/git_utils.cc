#include "utils/git_utils.h"

#include <algorithm>
#include <array>
#include <atomic>

#include <unistd.h>

#include "utils/git_state.h"
#include "utils/subprocess.h"
#include "utils/utf8.h"

namespace context_delta::git_utils {
namespace {

constexpr std::size_t MOST_SHOWN_BYTES = 200;

bool is_inherited(std::string_view variable) {
  constexpr std::array<std::string_view, 4> DROPPED = {"GIT_", "LC_", "LANG=", "LANGUAGE="};
  return std::none_of(DROPPED.begin(), DROPPED.end(),
                      [&](std::string_view start) { return variable.starts_with(start); });
}

std::vector<std::string> cleaned_environment() {
  std::vector<std::string> result;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (is_inherited(*variable)) result.emplace_back(*variable);
  }
  // An empty list of protocols allows none, whatever the configuration says.
  for (const char* variable :
       {"LC_ALL=C", "GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0", "GIT_NO_LAZY_FETCH=1",
        "GIT_ALLOW_PROTOCOL=", "GIT_NO_REPLACE_OBJECTS=1", "GIT_GRAFT_FILE=/dev/null",
        "GIT_ATTR_NOSYSTEM=1", "GIT_ADVICE=0", "GIT_PAGER=cat"}) {
    result.emplace_back(variable);
  }
  // Git gives the memory of each blob back and takes it anew for the next: by the page, unless the
  // C library is told to keep it. A seventh of a comparison's time.
  for (const char* variable : {"MALLOC_MMAP_THRESHOLD_=33554432", "MALLOC_TRIM_THRESHOLD_=67108864",
                               "MALLOC_TOP_PAD_=4194304"}) {
    result.emplace_back(variable);
  }
  return result;
}

// 0 when it is not known.
std::size_t half_of_memory() {
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
  return pages < 0 || page < 0
             ? 0
             : static_cast<std::size_t>(pages) / 2 * static_cast<std::size_t>(page);
}

std::filesystem::path git_program() {
  const auto program = subprocess::find_program("git");
  if (!program) throw GitHistoryError("git is not installed or not on PATH: install git");
  return *program;
}

std::filesystem::path existing_folder(const std::filesystem::path& directory) {
  std::error_code error;
  std::filesystem::path result = std::filesystem::canonical(directory, error);
  if (error || !std::filesystem::is_directory(result, error)) {
    throw GitHistoryError("no such folder: " + shown(directory.string()));
  }
  return result;
}

struct Layout {
  bool is_shallow = false;
  bool has_work_tree = true;
  std::string object_format;
  std::filesystem::path common_directory, root;
};

// Takes the first line off `text`.
std::string_view next_line(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(text.size(), line.size() + 1));
  return line;
}

// Two paths, a line each. Either may hold line feeds, so the folders themselves decide.
void split_paths(std::string_view text, Layout& layout) {
  std::error_code ignored;
  for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n', end + 1)) {
    layout.common_directory = text.substr(0, end);
    layout.root = text.substr(end + 1, text.size() - end - 2);
    if (std::filesystem::is_directory(layout.common_directory / "objects", ignored) &&
        std::filesystem::is_directory(layout.root, ignored)) {
      return;
    }
  }
  layout.root.clear();
}

// `errors` say whether git stopped for want of a work tree, which it names last. None is needed:
// the git directory takes its place.
Layout parsed_layout(std::string_view text, std::string_view errors) {
  Layout layout;
  layout.is_shallow = next_line(text) == "true";
  layout.object_format = next_line(text);
  if (errors.find("must be run in a work tree") == std::string_view::npos) {
    split_paths(text, layout);
    return layout;
  }
  layout.common_directory = text.substr(0, text.size() - std::min<std::size_t>(1, text.size()));
  std::error_code ignored;
  if (std::filesystem::is_directory(layout.common_directory / "objects", ignored)) {
    layout.root = layout.common_directory;
    layout.has_work_tree = false;
  }
  return layout;
}

[[noreturn]] void fail_on_layout(const std::filesystem::path& directory, std::string_view errors) {
  const std::string where = shown(directory.string());
  if (errors.find("dubious ownership") != std::string_view::npos) {
    throw GitHistoryError("git refuses " + where +
                          " because it belongs to another user: if you trust it, run git config "
                          "--global --add safe.directory " +
                          quoted_for_shell(directory.string()));
  }
  if (errors.find("not a git repository") != std::string_view::npos) {
    throw GitHistoryError("not a git repository: " + where +
                          " (nor any folder above it): run git init, or name a folder of one");
  }
  throw GitHistoryError("git cannot read the repository at " + where + ": " + first_words(errors));
}

bool holds(const std::filesystem::path& folder, const std::filesystem::path& file) {
  const auto [rest, ignored] =
      std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  return rest == folder.end();
}

// core.worktree of a repository under review could name any folder of this machine.
void check_root(const std::filesystem::path& root, const std::filesystem::path& directory) {
  if (holds(root, directory)) return;
  throw GitHistoryError("the work tree of " + shown(directory.string()) + " is elsewhere, at " +
                        shown(root.string()) +
                        ": run it there, or git config --unset core.worktree");
}

}  // namespace

std::string quoted_for_shell(std::string_view text) {
  const bool is_plain = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/._-+@%,:=").find(c) != std::string_view::npos;
  });
  if (is_plain) return std::string(text);
  std::string result = "'";
  for (const char c : shown(text)) {
    if (c == '\'') result += "'\\'";
    result += c;
  }
  return result += '\'';
}

std::string first_words(std::string_view errors) {
  const std::string_view first = errors.substr(0, errors.find('\n'));
  while (!errors.empty()) {
    std::string_view line = next_line(errors);
    for (const std::string_view start : {"fatal: ", "error: "}) {
      if (!line.starts_with(start)) continue;
      line.remove_prefix(start.size());
      return shown(line);
    }
  }
  return first.empty() ? "git gave no reason" : shown(first);
}

std::string shown(std::string_view name) {
  std::string result = utf8::replaced(name.substr(0, MOST_SHOWN_BYTES));
  for (char& c : result) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  return name.size() > MOST_SHOWN_BYTES ? result + "..." : result;
}

std::string in_quotes(std::string_view name) {
  std::string result = "'";
  result += shown(name);
  return result += '\'';
}

std::string advised(const Git& git, std::string_view command) {
  return "git -C " + quoted_for_shell(git.root().string()) + " " + std::string(command);
}

bool is_object_id(std::string_view text) {
  return (text.size() == 40 || text.size() == 64) &&
         text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

subprocess::Command Git::State::prepared(const Command& wanted) {
  subprocess::Command command{program, {}, environment, limits.memory_bytes};
  std::vector<std::string>& variables = command.environment;
  variables.insert(variables.end(), wanted.environment.begin(), wanted.environment.end());
  command.arguments = {"--no-pager", "--no-replace-objects",
                       "-c",         "core.fsmonitor=false",
                       "-c",         "core.hooksPath=/dev/null",
                       "-c",         "core.warnAmbiguousRefs=false",
                       "-c",         "advice.graftFileDeprecated=false"};
  if (wanted.view == View::OBJECTS) {
    const std::vector<std::string>& more = objects().environment();
    variables.insert(variables.end(), more.begin(), more.end());
  }
  const auto& folder = wanted.view == View::OBJECTS ? objects().directory() : root;
  command.arguments.insert(command.arguments.end(), {"-C", folder.string()});
  command.arguments.insert(command.arguments.end(), wanted.arguments.begin(),
                           wanted.arguments.end());
  started += 1;
  return command;
}

const ObjectsView& Git::State::objects() {
  const std::lock_guard lock(objects_mutex);
  if (!objects_view) {
    try {
      objects_view = std::make_unique<ObjectsView>(common_directory, object_format, more_objects);
    } catch (const std::runtime_error& error) {
      throw GitHistoryError(error.what());
    }
  }
  return *objects_view;
}

Git::Git(const std::filesystem::path& directory, const Limits& limits)
    : state_(std::make_shared<State>()) {
  state_->limits = limits;
  if (limits.memory_bytes == 0) state_->limits.memory_bytes = half_of_memory();
  const std::filesystem::path folder = existing_folder(directory);
  state_->program = git_program();
  state_->environment = cleaned_environment();
  state_->root = folder;
  const Output output = run(
      std::array<std::string, 6>{"rev-parse", "--path-format=absolute", "--is-shallow-repository",
                                 "--show-object-format", "--git-common-dir", "--show-toplevel"});
  const Layout layout = parsed_layout(output.out, output.errors);
  if (layout.root.empty()) fail_on_layout(folder, output.errors);
  if (layout.has_work_tree) check_root(layout.root, folder);
  state_->has_work_tree = layout.has_work_tree;
  state_->root = layout.root;
  state_->common_directory = layout.common_directory;
  state_->object_format = layout.object_format;
  state_->is_shallow = layout.is_shallow;
}

Git Git::copy() const {
  Git other;
  other.state_ = std::make_shared<State>();
  State& state = *other.state_;
  state.program = state_->program;
  state.environment = state_->environment;
  state.root = state_->root;
  state.common_directory = state_->common_directory;
  state.object_format = state_->object_format;
  state.more_objects = state_->more_objects;
  state.is_shallow = state_->is_shallow;
  state.has_work_tree = state_->has_work_tree;
  state.limits = state_->limits;
  return other;
}

Git Git::with_objects(const std::filesystem::path& store) const {
  Git other = copy();
  other.state_->more_objects = store;
  return other;
}

Git Git::with_limits(const Limits& limits) const {
  Git other = copy();
  other.state_->limits = limits;
  if (limits.memory_bytes == 0) other.state_->limits.memory_bytes = half_of_memory();
  return other;
}

const std::filesystem::path& Git::root() const { return state_->root; }
const std::filesystem::path& Git::common_directory() const { return state_->common_directory; }
const Limits& Git::limits() const { return state_->limits; }
bool Git::has_work_tree() const { return state_->has_work_tree; }
bool Git::is_shallow() const { return state_->is_shallow; }
std::size_t Git::processes_started() const { return state_->started; }

std::vector<Git::Output> Git::stream(std::span<const Streamed> commands) const {
  std::vector<subprocess::Task> tasks;
  for (const auto& [command, sink] : commands) {
    tasks.push_back({state_->prepared(command), command.input, sink});
  }
  try {
    std::vector<Output> outputs;
    for (auto& [status, errors] : subprocess::run(tasks, {limits().time, limits().cancelled})) {
      outputs.push_back({status, {}, std::move(errors)});
    }
    return outputs;
  } catch (const subprocess::SubprocessError& error) {
    throw GitHistoryError(std::string(error.what()) + " (in " + shown(root().string()) + ")");
  }
}

std::vector<Git::Output> Git::run(std::span<const Command> commands) const {
  std::vector<std::string> texts(commands.size());
  std::vector<Streamed> streamed;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    streamed.push_back({commands[i], [this, &text = texts[i]](std::string_view part) {
                          text += part;
                          if (text.size() <= limits().output_bytes) return;
                          throw GitHistoryError("git prints more than " +
                                                std::to_string(limits().output_bytes) +
                                                " bytes in " + shown(root().string()));
                        }});
  }
  std::vector<Output> outputs = stream(streamed);
  for (std::size_t i = 0; i < outputs.size(); ++i) outputs[i].out = std::move(texts[i]);
  return outputs;
}

Git::Output Git::run(std::span<const std::string> arguments) const {
  const Command command{{arguments.begin(), arguments.end()}, View::REPOSITORY};
  return std::move(run(std::span(&command, 1)).front());
}

void Git::stream(std::span<const std::string> arguments,
                 const std::function<void(std::string_view)>& sink) const {
  const Streamed streamed{{{arguments.begin(), arguments.end()}, View::REPOSITORY}, sink};
  const Output output = std::move(stream(std::span(&streamed, 1)).front());
  if (output.status == 0) return;
  throw GitHistoryError("git " + (arguments.empty() ? "" : shown(arguments[0])) + " failed in " +
                        shown(root().string()) + ": " + first_words(output.errors));
}

}  // namespace context_delta::git_utils
