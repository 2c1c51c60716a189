#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "utils/git_utils.h"

namespace context_delta::wiki {

/// What is asked of one page: which of its sources changed after the commit it was written at.
struct PageQuestion {
  std::vector<std::string> sources;  ///< paths, folders and globs of the repository
  std::string commit;                ///< id, maybe abbreviated; empty: that of the last change of
  std::string path;                  ///< this file of the repository, unless it is empty too
};

struct PageAnswer {
  enum class Known : unsigned char {
    YES,
    NO_COMMIT,      ///< none was given
    NOT_COMMITTED,  ///< the page's file has no last change
    NO_SUCH_COMMIT,
    NOT_REACHED,  ///< history is longer than was read
  };
  Known known = Known::YES;
  std::string commit;                ///< full id of the one that the page was written at
  std::vector<std::size_t> changed;  ///< places of sources that changed since, newest first
  std::string changed_in;            ///< the commit of the newest change
  bool deleted = false;              ///< that change deleted the file that the source names
};

/// How far history is read, at most: the newest commits, the bytes of their log, what is looked
/// for in it, and the steps of matching globs.
struct HistoryLimits {
  std::size_t commits = 20'000;
  std::size_t bytes = 64 * 1024 * 1024;
  std::size_t sources = 10'000;
  std::size_t glob_steps = 200'000'000;
};

/// Answers all questions with one git process, none when there is no question. The newest change of
/// a source is the one that `git log -1 HEAD -- SOURCE` names, HEAD being `head`: where a merge
/// took a source from one side as it was, that side's history counts. It came after the page's
/// commit when it is not among that commit's ancestors. Reading ends where all is known; commits
/// whose dates go far backwards (over 256 commits out of order) may then be missed. Raises
/// GitHistoryError, Cancelled.
std::vector<PageAnswer> ask_history(const git_utils::Git& git,
                                    const std::vector<PageQuestion>& questions,
                                    const std::string& head = "HEAD",
                                    const HistoryLimits& limits = {});

}  // namespace context_delta::wiki
