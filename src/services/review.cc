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

std::unique_ptr<UncommittedCount> count_of(const git_utils::Git& git, const DeltaRequest& request,
                                           const std::string& head) {
  const bool is_checked_out = !request.target_branch && !request.pull_request;
  if (!request.tell_uncommitted || !is_checked_out || !git.has_work_tree() ||
      request.uncommitted != Uncommitted::NOTHING) {
    return nullptr;
  }
  return std::make_unique<UncommittedCount>(git, head);
}

}  // namespace

Review::Review(const git_utils::Git& git, const DeltaRequest& request)
    : sides_(git_history::find_sides(
          git, {request.base_branch, request.target_branch, request.base_parameter,
                request.target_parameter, request.pull_request})),
      work_tree_(add_uncommitted(git, request, sides_.head)),
      git_(work_tree_ ? work_tree_->git() : git),
      count_(count_of(git, request, sides_.head.commit)),
      history_(git_),
      changes_(history_.branch_changes(sides_)) {
  // The commit that stands for what is not committed is none of the branch's.
  if (work_tree_) --changes_.commit_count;
}

std::vector<std::string> Review::remarks() {
  std::vector<std::string> remarks;
  if (changes_.has_several_bases && !changes_.files.empty()) {
    remarks.push_back(sides_.base.name + " and " + sides_.head.name +
                      " have several merge bases: compared with the first that git names");
  }
  if (changes_.without_texts > 0) {
    remarks.push_back(counted(changes_.without_texts, "file") +
                      " listed without lines and symbols, as the partial clone has not fetched the "
                      "texts: run " +
                      git_utils::advised(git_, "fetch --refetch --no-filter"));
  }
  const std::size_t others = count_ == nullptr ? 0 : count_->finish().value_or(0);
  if (others > 0) {
    remarks.push_back(counted(others, "file") + " with uncommitted changes " +
                      (others == 1 ? "is" : "are") + " not in this; --uncommitted reviews " +
                      (others == 1 ? "it" : "them"));
  }
  if (work_tree_ && work_tree_->left_out() > 0) {
    remarks.push_back(counted(work_tree_->left_out(), "new file") +
                      " of more than 64 MiB left out");
  }
  return remarks;
}

}  // namespace context_delta::services
