#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "utils/cancellation.h"

/// The `git` program on a repository that is not trusted: how it is found, started and read.
///
/// Paths are relative to the top of the work tree with '/' between parts, and texts: names that are
/// not UTF-8 are written as utf8::path_text() does, everywhere in the system. Commits and objects
/// are full hexadecimal ids (40 digits, 64 in a SHA-256 repository).
namespace context_delta::git_utils {

/// A repository or revisions that git cannot work with. The text is one line for a person: what is
/// wrong, where, and the command that helps.
class GitHistoryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One changed file of a comparison.
struct FileChange {
  std::string path;
  std::string status;  ///< added, modified, deleted, renamed, copied or type_changed
  std::optional<std::string> old_path;  ///< of renames and copies only
  std::int64_t additions = 0;           ///< lines; 0 for binary files
  std::int64_t deletions = 0;           ///< lines; 0 for binary files
};

/// Changed lines `start` to `end` of a file's new version, counted from 1, both included.
struct LineSpan {
  std::int64_t start = 1;
  std::int64_t end = 1;
  friend bool operator==(const LineSpan&, const LineSpan&) = default;
};

/// A file of a commit's tree. Submodules and symbolic links are not listed.
struct TreeFile {
  std::string path;
  std::string object;      ///< id of the blob
  std::int64_t bytes = 0;  ///< size of the blob
};

/// What a git command sees of the repository.
enum class View {
  /// Objects only, through an empty git directory of our own: no refs, and none of the
  /// repository's or the user's settings, attributes, hooks, filters or replacements. Everything
  /// that reads contents runs here, on full ids. Nothing is ever fetched.
  OBJECTS,
  /// The whole repository, for what needs its refs. Settings that run programs are off, and no
  /// transport is allowed.
  REPOSITORY,
};

/// What one git process may cost before it is given up, and whether it is wanted at all.
struct Limits {
  std::chrono::milliseconds time = std::chrono::minutes(5);  ///< that it keeps us waiting
  std::size_t output_bytes = 256 * 1024 * 1024;              ///< that are kept whole
  std::size_t memory_bytes = 0;         ///< for itself; 0: half of the machine's
  std::size_t tree_files = 10'000'000;  ///< of one commit
  /// Once set, the processes are ended and Cancelled is raised; must outlive what uses it.
  CancelFlag cancelled = nullptr;
};

/// A repository, with a work tree or bare, and how git is run on it: without a shell, in a cleaned
/// environment. May be used by several threads at once. Copies share their temporary folder.
class Git {
 public:
  /// Finds the repository that holds `directory` (a subfolder or a link to it will do).
  /// Raises GitHistoryError: no such folder, not a repository, one that git refuses because of its
  /// owner, git missing.
  explicit Git(const std::filesystem::path& directory, const Limits& limits = {});

  /// Top folder of the work tree, absolute, links resolved; the git directory where there is none.
  const std::filesystem::path& root() const;

  /// Whether there are checked-out files: not in a bare repository, nor seen from a git directory.
  bool has_work_tree() const;

  /// The git directory that all linked work trees share, absolute.
  const std::filesystem::path& common_directory() const;

  const Limits& limits() const;

  /// Whether history was cut off when the repository was cloned.
  bool is_shallow() const;

  /// The same repository with the objects in the folder `store` too, or with other limits.
  Git with_objects(const std::filesystem::path& store) const;
  Git with_limits(const Limits& limits) const;

  struct Output {
    int status = 0;      ///< exit status of git
    std::string out;     ///< standard output, whole
    std::string errors;  ///< standard error, its beginning
  };

  /// One command: `git ARGUMENTS` with `input` as its standard input.
  struct Command {
    std::vector<std::string> arguments;
    View view = View::OBJECTS;
    std::string input = {};
    std::vector<std::string> environment = {};  ///< more variables, "NAME=value"; they win
  };

  /// Runs `git ARGUMENTS` on the whole repository to its end; a non-zero exit is no error here.
  /// Raises GitHistoryError: git cannot be started, runs past the time limit, or floods.
  Output run(std::span<const std::string> arguments) const;

  /// Runs commands at the same time, as run() does; the outputs are in the order of the commands.
  std::vector<Output> run(std::span<const Command> commands) const;

  /// Runs `git ARGUMENTS` on the whole repository and hands its output to `sink` as it comes.
  /// Raises as run() does, and when git exits with an error.
  void stream(std::span<const std::string> arguments,
              const std::function<void(std::string_view)>& sink) const;

  /// A command whose output is handed on as it comes.
  struct Streamed {
    Command command;
    std::function<void(std::string_view)> sink;
  };

  /// Runs commands at the same time; `out` is empty in what is returned. Raises as run() does.
  std::vector<Output> stream(std::span<const Streamed> commands) const;

  /// How many git processes this object and its copies have started.
  std::size_t processes_started() const;

 private:
  friend class BlobReader;
  friend class WorkTree;
  Git() = default;
  Git copy() const;
  struct State;
  std::shared_ptr<State> state_;
};

/// The full id of the commit that `revision` names. Raises GitHistoryError when it names none
/// (an unborn HEAD among them).
std::string resolve_commit(const Git& git, std::string_view revision);

/// The command that looks up what commits revisions name (branches, tags, ids, HEAD~2, ...), as
/// many as there are, and the answers in its output: ids, null for what names no commit.
Git::Command commits_command(std::span<const std::string> revisions);
std::vector<std::optional<std::string>> commits_found(const Git::Output& output);

/// The error for a HEAD without commit.
GitHistoryError unborn_head_error(const Git& git);

/// Whether `text` is a full object id.
bool is_object_id(std::string_view text);

/// `name` fit for a line of text: control characters and ill-formed UTF-8 replaced, its end cut
/// off when it is very long.
std::string shown(std::string_view name);

/// The same between single quotation marks.
std::string in_quotes(std::string_view name);

/// `git -C ROOT COMMAND`, to be shown as the command that helps; ROOT quoted when a shell needs it.
std::string advised(const Git& git, std::string_view command);

/// Whether objects were left out when the repository was cloned.
bool is_partial_clone(const Git& git);

/// Whether git wrote to its standard error that objects are missing or damaged.
bool lacks_objects(std::string_view errors);

/// Raises the GitHistoryError for a command that failed on objects: those that a partial clone has
/// left out, or git's own words after `what`.
[[noreturn]] void fail_on_objects(const Git& git, std::string_view what, const Git::Output& output);

/// All regular files of a commit's tree, by path in byte order. `commit` is a full id. Raises
/// GitHistoryError, also for more files than the limit.
std::vector<TreeFile> list_tree(const Git& git, std::string_view commit);

/// Reads blobs one after another through one git process. Not for use by two threads at once;
/// each thread has a reader of its own.
class BlobReader {
 public:
  explicit BlobReader(const Git& git);
  ~BlobReader();
  BlobReader(BlobReader&&) noexcept;
  BlobReader& operator=(BlobReader&&) noexcept;

  /// The bytes of `object`; null when the repository lacks it or it is longer than `most_bytes`.
  std::optional<std::string> read(std::string_view object, std::int64_t most_bytes);

 private:
  struct Process;
  std::unique_ptr<Process> process_;
};

/// Reads many blobs through one git process that runs ahead of the sink. `sink` takes each with
/// its place in `objects`, in their order; null as BlobReader::read() does. The bytes are good
/// during the call only.
void read_blobs(const Git& git, std::span<const std::string> objects, std::int64_t most_bytes,
                const std::function<void(std::size_t, std::optional<std::string_view>)>& sink);

}  // namespace context_delta::git_utils
