#include "cli/interruption.h"

#include <csignal>

#include <unistd.h>

#include "cli/exit_codes.h"

namespace context_delta::cli {
namespace {

std::atomic<bool> deferring = false;
std::atomic<bool> arrived_flag = false;
std::atomic<int> arrived_signal = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void on_signal(int signal) {
  if (!deferring || arrived_signal != 0) _exit(EXIT_SIGNAL_BASE + signal);
  arrived_signal = signal;
  arrived_flag = true;
}

}  // namespace

void handle_signals() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int signal : {SIGINT, SIGTERM}) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = on_signal;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
  }
}

DeferredSignals::DeferredSignals() { deferring = true; }

DeferredSignals::~DeferredSignals() { deferring = false; }

const std::atomic<bool>* DeferredSignals::arrived() const { return &arrived_flag; }

int deferred_signal() { return arrived_signal; }

}  // namespace context_delta::cli
