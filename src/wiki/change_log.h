#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "utils/git_utils.h"

namespace context_delta::wiki {

/// A commit of the log, compared with one of its parents.
struct LoggedCommit {
  std::string id;
  std::vector<std::string> parents;
  std::string compared;  ///< the parent; of a commit with less than two parents maybe empty
  bool by_head = false;  ///< reached from the head; the first such commit is the head itself
};

/// Takes a log apart.
class LogReader {
 public:
  /// `head` as log_command() was given it.
  explicit LogReader(std::string head) : head_(std::move(head)) {}
  virtual ~LogReader() = default;
  /// A commit. One with several parents comes once for each parent that it differs from, and once
  /// when it differs from none; these follow each other.
  virtual void commit(const LoggedCommit& commit) = 0;
  /// A path (bytes) in which the commit differs from that parent.
  virtual void change(std::string_view path, bool deleted) = 0;

  /// The next bytes that the command wrote; bytes that make no sense are passed over.
  void feed(std::string_view bytes);
  /// The log has ended: its last commit, when that has no changes, ends without a mark.
  void finish_log();
  /// Bytes taken apart so far: as many for the same log, however it was cut.
  std::size_t bytes_read() const { return bytes_read_; }

 private:
  void take(std::string_view token);

  std::string head_;
  std::string pending_;  // the beginning of a token
  std::size_t bytes_read_ = 0;
  bool path_next_ = false;
  bool deleted_ = false;
};

/// All commits that `head` and these commits (as ids, maybe abbreviated; those that the repository
/// lacks are passed over) are made of, newest first, and in which paths each differs from its
/// parents. Renames are a deletion and an addition.
git_utils::Git::Command log_command(const std::string& head,
                                    const std::vector<std::string>& commits);

}  // namespace context_delta::wiki
