#include "services/review.h"

namespace context_delta::services {
namespace {

std::string counted(std::size_t number, std::string_view what) {
  return std::to_string(number) + " " + std::string(what) + (number == 1 ? "" : "s");
}

/// What is not committed on top of the head, as its head.
std::optional<git_utils::WorkTree> add_uncommitted(const git_utils::Git& git,
                                                   const DeltaRequest& request,
                                                   git_history::Side& head) {
  if (request.uncommitted == Uncommitted::NOTHING) return std::nullopt;
  const bool all = request.uncommitted == Uncommitted::ALL;
  git_utils::WorkTree work_tree(git);
  const std::string commit = work_tree.commit(head.commit, all);
  if (commit == head.commit) return std::nullopt;
  head.commit = commit;
  head.name += all ? " with uncommitted changes" : " with staged changes";
  return work_tree;
}

}  // namespace

Review::Review(const git_utils::Git& git, const DeltaRequest& request)
    : sides_(git_history::find_sides(
          git, {request.base_branch, request.target_branch, request.base_parameter,
                request.target_parameter, request.pull_request})),
      work_tree_(add_uncommitted(git, request, sides_.head)),
      git_(work_tree_ ? work_tree_->git() : git),
      history_(git_),
      changes_(history_.branch_changes(sides_)) {
  // The commit that stands for what is not committed is none of the branch's.
  if (work_tree_) --changes_.commit_count;
}

std::vector<std::string> Review::remarks() const {
  std::vector<std::string> remarks;
  if (work_tree_ && work_tree_->left_out() > 0) {
    remarks.push_back(counted(work_tree_->left_out(), "new file") +
                      " of more than 64 MiB left out");
  }
  return remarks;
}

}  // namespace context_delta::services
