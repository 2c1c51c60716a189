#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "utils/git_utils.h"

/// What a repository holds that is not committed yet.
///
/// Nothing is written to the repository, and nothing of it is run: git works in a temporary git
/// directory of our own with a copy of the index and a store for new objects, and sees none of the
/// repository's settings but a few that say how files are to be read (file modes, symbolic links,
/// line ends, ignored files). So no filter, hook, textconv, monitor or submodule command exists for
/// it; what an attribute says of line ends and encodings holds as it would in a commit.
namespace context_delta::git_utils {

class WorkTree {
 public:
  /// Raises GitHistoryError: no work tree, an index that cannot be read, no temporary folder.
  explicit WorkTree(const Git& git);
  WorkTree(WorkTree&&) noexcept;
  ~WorkTree();

  /// How many files a commit of everything would change, new files that are not ignored among them.
  /// `head` is the full id of the commit that is checked out. Not before commit().
  std::size_t count_changes(const std::string& head) const;

  /// A commit on top of `head` of what is staged, or with `all` of all changes and new files that
  /// are not ignored; `head` itself when that changes nothing. The same content has the same id.
  /// Raises GitHistoryError: files that are in conflict and staged is asked for, or that cannot be
  /// read. To be called once.
  std::string commit(const std::string& head, bool all);

  /// The repository, and the objects that commit() made. Good as long as this object.
  const Git& git() const;

  /// New files that commit() left out because of their size.
  std::size_t left_out() const;

  static constexpr std::size_t MOST_NEW_FILE_BYTES = 64 * 1024 * 1024;

 private:
  struct Place;
  std::unique_ptr<Place> place_;
};

}  // namespace context_delta::git_utils
