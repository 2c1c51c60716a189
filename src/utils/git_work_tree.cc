#include "utils/git_work_tree.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "utils/git_objects_view.h"
#include "utils/git_state.h"

namespace context_delta::git_utils {
namespace {

namespace fs = std::filesystem;

// Settings that say how files are read; none of them names a program.
constexpr const char* READ_SETTINGS =
    "^core\\.(filemode|symlinks|ignorecase|autocrlf|eol|trustctime|checkstat|excludesfile|"
    "precomposeunicode)$";

// "NAME\nVALUE\0" one after another, as options of git.
std::vector<std::string> as_options(std::string_view text) {
  std::vector<std::string> options;
  while (!text.empty()) {
    const auto end = std::min(text.find('\0'), text.size());
    std::string setting(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    std::replace(setting.begin(), setting.end(), '\n', '=');
    options.insert(options.end(), {"-c", setting});
  }
  return options;
}

std::vector<std::string> between_zeros(std::string_view text) {
  std::vector<std::string> parts;
  for (auto end = text.find('\0'); end != text.npos; end = text.find('\0')) {
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return parts;
}

// Git takes an entry whose file is not older than the index for one that may have changed since, so
// the copy must not be younger.
void copy_index(const fs::path& index, const fs::path& copy) {
  struct stat status {};
  if (stat(index.c_str(), &status) != 0) return;  // nothing was ever staged
  fs::copy_file(index, copy);
  const timespec times[] = {status.st_atim, status.st_mtim};
  if (utimensat(AT_FDCWD, copy.c_str(), times, 0) != 0) {
    throw fs::filesystem_error("cannot set the time of a file", copy, std::error_code());
  }
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(index.parent_path(), ignored)) {
    const fs::path name = entry.path().filename();
    if (!name.native().starts_with("sharedindex.")) continue;
    fs::create_symlink(entry.path(), copy.parent_path() / name, ignored);
  }
}

// A change of the index or the work tree: ":OLDMODE MODE OLDID ID STATUS", then the path.
struct Change {
  std::string old_object, mode, object, path;
  char status = 'M';
  bool is_deleted() const { return status == 'D'; }
};

std::vector<Change> changes_in(const std::vector<std::string>& parts) {
  std::vector<Change> changes;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    std::istringstream fields(parts[i]);
    std::string old_mode;
    Change change;
    fields >> old_mode >> change.mode >> change.old_object >> change.object >> change.status;
    if (old_mode == ":160000") change.old_object.clear();
    change.path = parts[i + 1];
    changes.push_back(std::move(change));
  }
  return changes;
}

bool names_object(std::string_view id) { return id.find_first_not_of('0') != id.npos; }

// A path as a stream of commits has it.
std::string quoted_path(std::string_view path) {
  std::string quoted = "\"";
  for (const char c : path) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (c == '\n') {
      quoted += "\\n";
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

// Deletions come first: a folder may have taken the place of a file.
std::string commit_stream(const std::string& head, const std::vector<Change>& changes) {
  std::string deleted, written;
  for (const Change& change : changes) {
    const std::string path = quoted_path(change.path) + "\n";
    if (change.is_deleted()) {
      deleted += "D " + path;
    } else {
      written += "M " + change.mode + " " + change.object + " " + path;
    }
  }
  return "commit refs/heads/none\nmark :1\ncommitter context-delta <context-delta> 0 +0000\n"
         "data 13\nnot committed\nfrom " +
         head + "\n" + deleted + written + "\nget-mark :1\n";
}

}  // namespace

struct WorkTree::Place {
  static std::string name_of(const std::vector<std::string>& arguments) {
    return arguments[0] == "-c" ? arguments[2] : arguments[0];
  }

  explicit Place(const Git& repository)
      : view(repository.common_directory(), repository.state_->object_format),
        plain(repository),
        overlaid(repository.with_objects(view.directory() / "objects")) {}

  fs::path file(const char* name) const { return view.directory() / name; }

  // Git touches the times of objects that it would write and that are there, in whatever store they
  // are. So what writes blobs sees the new store alone.
  enum class Sees { BOTH_STORES, NEW_STORE };

  Git::Command command(const std::vector<std::string>& arguments, std::string input = {},
                       Sees sees = Sees::BOTH_STORES) const {
    Git::Command made{{"-C", plain.root().string()}, View::OBJECTS, std::move(input), {}};
    made.arguments.insert(made.arguments.end(), settings.begin(), settings.end());
    made.arguments.insert(made.arguments.end(), arguments.begin(), arguments.end());
    made.environment = {"GIT_DIR=" + view.directory().string(),
                        "GIT_WORK_TREE=" + plain.root().string(),
                        "GIT_INDEX_FILE=" + file("index").string(),
                        "GIT_OBJECT_DIRECTORY=" + file("objects").string()};
    if (sees == Sees::NEW_STORE) return made;
    made.environment.push_back("GIT_ALTERNATE_OBJECT_DIRECTORIES=" +
                               in_list_of_stores(plain.common_directory() / "objects"));
    return made;
  }

  std::string run(const std::vector<std::string>& arguments, std::string input = {},
                  Sees sees = Sees::BOTH_STORES) const {
    const Git::Command made = command(arguments, std::move(input), sees);
    return checked(name_of(arguments), std::move(plain.run(std::span(&made, 1)).front()));
  }

  // What git printed; raises when it failed.
  std::string checked(const std::string& name, Git::Output output) const {
    if (output.status == 0) return std::move(output.out);
    throw GitHistoryError("git " + name + " cannot read what is not committed in " +
                          shown(plain.root().string()) + ": " + first_words(output.errors));
  }

  std::vector<std::vector<std::string>> lists(const std::vector<Git::Command>& commands) const {
    std::vector<std::vector<std::string>> paths;
    for (Git::Output& output : plain.run(commands)) {
      paths.push_back(between_zeros(checked("status", std::move(output))));
    }
    return paths;
  }
  // Files that differ from the index.
  Git::Command changed() const {
    return command({"diff-files", "--raw", "--no-abbrev", "-z", "--ignore-submodules=dirty"});
  }
  // New files that are not ignored.
  Git::Command untracked() const {
    return command({"ls-files", "--others", "--exclude-standard", "-z"});
  }

  void take_old_versions(const std::vector<Change>& changes) const;
  void add_all();

  ObjectsView view;
  Git plain, overlaid;
  std::vector<std::string> settings;
  std::size_t left_out = 0;
};

WorkTree::WorkTree(const Git& git) {
  if (!git.has_work_tree()) {
    throw GitHistoryError("there is no work tree in " + shown(git.root().string()) +
                          ", so nothing is uncommitted: name a commit to review");
  }
  place_ = std::make_unique<Place>(git);
  const std::vector<Git::Command> commands = {
      {{"config", "--null", "--get-regexp", READ_SETTINGS}, View::REPOSITORY},
      {{"rev-parse", "--path-format=absolute", "--git-path", "index"}, View::REPOSITORY}};
  const std::vector<Git::Output> outputs = git.run(commands);
  place_->settings = as_options(outputs[0].out);
  try {
    fs::create_directory(place_->file("objects"));
    fs::create_directory(place_->file("info"));
    std::string index = outputs[1].out;
    if (index.ends_with('\n')) index.pop_back();
    copy_index(index, place_->file("index"));
    for (const char* name : {"exclude", "attributes"}) {
      const fs::path source = git.common_directory() / "info" / name;
      if (fs::is_regular_file(source)) fs::copy_file(source, place_->file("info") / name);
    }
  } catch (const fs::filesystem_error& error) {
    throw GitHistoryError("cannot copy the index of " + shown(git.root().string()) + ": " +
                          error.code().message());
  }
}

WorkTree::WorkTree(WorkTree&&) noexcept = default;
WorkTree::~WorkTree() = default;

const Git& WorkTree::git() const { return place_->overlaid; }
std::size_t WorkTree::left_out() const { return place_->left_out; }

std::size_t WorkTree::count_changes(const std::string& head) const {
  std::ofstream(place_->file("HEAD")) << head << "\n";
  // "XY PATH" one after another, as there are no renames.
  const std::string status = place_->run({"status", "--porcelain", "-z", "--no-renames",
                                          "--untracked-files=all", "--ignore-submodules=dirty"});
  return static_cast<std::size_t>(std::count(status.begin(), status.end(), '\0'));
}

// Whether a text keeps its carriage returns may depend on those that the index has of it.
void WorkTree::Place::take_old_versions(const std::vector<Change>& changes) const {
  std::string objects;
  for (const Change& change : changes) {
    if (names_object(change.old_object)) objects += change.old_object + "\n";
  }
  if (objects.empty()) return;
  const std::string pack = run({"pack-objects", "--stdout", "-q"}, objects);
  run({"index-pack", "--stdin"}, pack, Sees::NEW_STORE);
}

void WorkTree::Place::add_all() {
  const auto found = lists({changed(), untracked()});
  const std::vector<Change> changes = changes_in(found[0]);
  take_old_versions(changes);
  std::string input;
  for (const Change& change : changes) input += change.path + '\0';
  for (const std::string& path : found[1]) {
    std::error_code unreadable;
    const fs::path file = plain.root() / path;
    if (path.ends_with('/')) continue;  // a repository of its own
    if (fs::is_regular_file(fs::symlink_status(file, unreadable)) &&
        fs::file_size(file, unreadable) > MOST_NEW_FILE_BYTES) {
      ++left_out;
      continue;
    }
    input += path + '\0';
  }
  run({"update-index", "--add", "--remove", "--replace", "-z", "--stdin"}, input, Sees::NEW_STORE);
}

std::string WorkTree::commit(const std::string& head, bool all) {
  if (all) {
    place_->add_all();
  } else if (!place_->run({"ls-files", "--unmerged", "-z"}).empty()) {
    throw GitHistoryError("files of " + shown(place_->plain.root().string()) +
                          " are in conflict, so nothing can be committed: see " +
                          advised(place_->plain, "status"));
  }
  const std::vector<Change> changes = changes_in(
      between_zeros(place_->run({"diff-index", "--cached", "--raw", "--no-abbrev", "-z",
                                 "--no-renames", "--ita-invisible-in-index", head, "--"})));
  if (changes.empty()) return head;
  const std::string id = place_->run({"-c", "fastimport.unpackLimit=0", "fast-import", "--quiet"},
                                     commit_stream(head, changes));
  return id.substr(0, id.find('\n'));
}

}  // namespace context_delta::git_utils
