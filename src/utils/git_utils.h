#pragma once

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
  std::int64_t additions = 0;           ///< lines; 0 for binary files and submodules
  std::int64_t deletions = 0;           ///< lines; 0 for binary files and submodules
};

/// Changed lines `start` to `end` of a file's new version, counted from 1, both included.
struct LineSpan {
  std::int64_t start = 1;
  std::int64_t end = 1;
};

/// A file of a commit's tree. Submodules and symbolic links are not listed.
struct TreeFile {
  std::string path;
  std::string object;      ///< id of the blob
  std::int64_t bytes = 0;  ///< size of the blob
};

/// A repository with a work tree, and how git is run on it: without a shell, in a cleaned
/// environment, with every setting that could run a program or change the output pinned.
class Git {
 public:
  /// Finds the repository that holds `directory` (a subfolder or a link to it will do).
  /// Raises GitHistoryError: no such folder, not a repository, a bare one, git missing.
  explicit Git(const std::filesystem::path& directory);

  /// Top folder of the work tree, absolute, links resolved.
  const std::filesystem::path& root() const { return root_; }

  /// The git directory that all linked work trees share, absolute.
  const std::filesystem::path& common_directory() const { return common_directory_; }

  struct Output {
    int status = 0;      ///< exit status of git
    std::string out;     ///< standard output, whole
    std::string errors;  ///< standard error, its beginning
  };

  /// Runs `git ARGUMENTS` to its end; a non-zero exit is no error here.
  /// Raises GitHistoryError: git cannot be started, runs past the time limit, or floods.
  Output run(std::span<const std::string> arguments) const;

  /// Runs `git ARGUMENTS` and hands its output to `sink` as it comes.
  /// Raises as run() does, and when git exits with an error.
  void stream(std::span<const std::string> arguments,
              const std::function<void(std::string_view)>& sink) const;

  /// How many git processes this object has started.
  std::size_t processes_started() const;

 private:
  std::filesystem::path root_;
  std::filesystem::path common_directory_;
};

/// The full id of the commit that `revision` names. Raises GitHistoryError when it names none
/// (an unborn HEAD among them).
std::string resolve_commit(const Git& git, std::string_view revision);

/// All regular files of a commit's tree, by path in byte order.
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

}  // namespace context_delta::git_utils
