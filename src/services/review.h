#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "services/delta.h"
#include "services/uncommitted_count.h"
#include "utils/git_utils.h"
#include "utils/git_work_tree.h"
#include "workers/git_history.h"

namespace context_delta::services {

/// What a request compares: its names resolved to ids, once and first, and the comparison of these.
/// Everything that the answer reads afterwards hangs on the ids.
class Review {
 public:
  /// Raises GitHistoryError when the two cannot be compared.
  Review(const git_utils::Git& git, const DeltaRequest& request);
  Review(const Review&) = delete;
  Review& operator=(const Review&) = delete;

  /// Sees the objects of both commits, whether or not the reviewed one is in the repository.
  const git_utils::Git& git() const { return git_; }
  const git_history::Sides& sides() const { return sides_; }
  const git_history::BranchChanges& changes() const { return changes_; }
  git_history::History& history() { return history_; }
  /// What else a person should know of the comparison, a clause each.
  std::vector<std::string> remarks();

 private:
  git_history::Sides sides_;
  std::optional<git_utils::WorkTree> work_tree_;
  git_utils::Git git_;
  std::unique_ptr<UncommittedCount> count_;  // runs beside the comparison; null: not asked for
  git_history::History history_;
  git_history::BranchChanges changes_;
};

}  // namespace context_delta::services
