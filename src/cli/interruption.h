#pragma once

#include <atomic>

/// What becomes of SIGINT and SIGTERM. As a rule they end the program at once, with exit code 130
/// or 143; signals that were ignored when the program started stay ignored.
namespace context_delta::cli {

/// Takes over both signals; a closed pipe is reported by the write that meets it from then on.
void handle_signals();

/// For its lifetime, the first signal only sets a flag, so that the work at hand can be undone; a
/// second one ends the program at once. One object at a time.
class DeferredSignals {
 public:
  DeferredSignals();
  ~DeferredSignals();
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;

  /// Set when a signal came.
  const std::atomic<bool>* arrived() const;
};

/// The signal that came while signals were deferred; 0 when none did.
int deferred_signal();

}  // namespace context_delta::cli
