#include "services/uncommitted_count.h"

#include <chrono>
#include <utility>

#include "utils/git_work_tree.h"

namespace context_delta::services {
namespace {

constexpr std::chrono::milliseconds MOST_WAITING{300};

std::optional<std::size_t> counted(const git_utils::Git& git, const std::string& head) {
  try {
    return git_utils::WorkTree(git).count_changes(head);
  } catch (const std::exception&) {
    // What is not known is not said; the answer does not hang on it.
    return std::nullopt;
  }
}

}  // namespace

UncommittedCount::UncommittedCount(const git_utils::Git& git, std::string head) {
  git_utils::Limits limits = git.limits();
  limits.cancelled = &cancelled_;
  count_ = std::async(std::launch::async, [git = git.with_limits(limits), head = std::move(head)] {
    return counted(git, head);
  });
}

UncommittedCount::~UncommittedCount() { cancelled_ = true; }

std::optional<std::size_t> UncommittedCount::finish() {
  if (count_.wait_for(MOST_WAITING) != std::future_status::ready) cancelled_ = true;
  return count_.get();
}

}  // namespace context_delta::services
