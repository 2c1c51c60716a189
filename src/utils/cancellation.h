#pragma once

#include <atomic>
#include <stdexcept>

/// Work that is given up half-way because nobody wants its result any more.
namespace context_delta {

/// The work was given up as asked for; what it was changing is as it was before.
class Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("cancelled") {}
};

/// Set by any thread or signal handler once the work is not wanted; null: it always is.
using CancelFlag = const std::atomic<bool>*;

inline bool is_cancelled(CancelFlag flag) {
  return flag != nullptr && flag->load(std::memory_order_relaxed);
}

/// Raises Cancelled once the flag is set.
inline void check_cancelled(CancelFlag flag) {
  if (is_cancelled(flag)) throw Cancelled();
}

}  // namespace context_delta
