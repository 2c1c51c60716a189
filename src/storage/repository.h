#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "storage/database.h"

/// The index of a repository: one SQLite file that answers for one commit.
namespace context_delta::storage {

/// A caller of a looked-up symbol.
struct Caller {
  std::int64_t of = 0;     ///< id of the symbol called
  std::int64_t total = 0;  ///< callers of this kind the index holds for `of`, before the limit
  std::string fqn;
  std::string name;
  std::string kind;
  std::string path;
  std::int64_t line = 1;       ///< first line of the caller
  std::int64_t call_line = 1;  ///< line of the (first) call
  // Of guessed callers only:
  std::string relation;         ///< how the caller may be tied: "namesake", "dispatch"
  std::string why;              ///< why it is not proven, a clause
  std::int64_t candidates = 1;  ///< definitions the guess was among
};

/// Where the index of a repository is kept: `context-delta/index.sqlite` in the common git
/// directory, in the user's cache directory when that cannot be written.
std::filesystem::path default_index_path(const std::filesystem::path& common_git_directory);

class Repository {
 public:
  /// Opens the index at `path`, creating it (and its folder) when there is none. A damaged file or
  /// one of another format is replaced by an empty index. Raises IndexError when the file cannot
  /// be opened or created. Once `cancelled` is set, whatever is asked of it raises Cancelled.
  explicit Repository(const std::filesystem::path& path, CancelFlag cancelled = nullptr);

  Database db;

  /// The commit that the index answers for; null while it is empty.
  std::optional<std::string> commit() const;

  /// Holds the present state of the index for all queries until the transaction is destroyed.
  /// Another process (on a linked work tree, say) may move the index to another commit at any
  /// time: update, begin reading, and when commit() is not the one wanted, end and repeat.
  Transaction begin_reading() const;

  /// For each of `ids`, at most `limit` callers: those that a call edge proves, or with `guessed`
  /// those guessed between namesakes. A caller that calls several times counts once, at its first
  /// call. Nearest first (same file, same folder, then path and line); guesses by likelihood.
  std::vector<Caller> callers_of(std::span<const std::int64_t> ids, bool guessed,
                                 std::int64_t limit) const;
};

}  // namespace context_delta::storage
