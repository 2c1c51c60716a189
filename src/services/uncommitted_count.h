#pragma once

#include <atomic>
#include <cstddef>
#include <future>
#include <optional>
#include <string>

#include "utils/git_utils.h"

namespace context_delta::services {

/// Counts the files with uncommitted changes while other work is done. It is a remark only: where
/// the work tree is so large that it would keep the answer waiting, it is given up.
class UncommittedCount {
 public:
  /// `head` is the full id of what is checked out.
  UncommittedCount(const git_utils::Git& git, std::string head);
  ~UncommittedCount();
  UncommittedCount(const UncommittedCount&) = delete;
  UncommittedCount& operator=(const UncommittedCount&) = delete;

  /// Null when it is not known. To be called once, when the answer is ready.
  std::optional<std::size_t> finish();

 private:
  std::atomic<bool> cancelled_ = false;
  std::future<std::optional<std::size_t>> count_;
};

}  // namespace context_delta::services
