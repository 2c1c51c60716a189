#pragma once

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace context_delta::indexer {

/// Computes results 0 to `count` - 1 on `threads` threads and hands them, in this order, to
/// `take(index, result)` on the calling thread. `make_worker()` is called on each thread and
/// returns its function from an index to a result. No thread runs more than `window` results ahead,
/// so memory stays bounded. The first exception of a worker, or of `take`, ends all and is
/// rethrown.
template <class Result, class MakeWorker, class Take>
void run_pipeline(std::size_t count, unsigned threads, std::size_t window, MakeWorker make_worker,
                  Take take) {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::optional<Result>> slots(window);
  std::size_t next = 0;   // to be computed
  std::size_t taken = 0;  // handed over
  std::exception_ptr failure;

  const auto fail = [&] {
    const std::lock_guard lock(mutex);
    if (!failure) failure = std::current_exception();
    changed.notify_all();
  };
  const auto work = [&] {
    try {
      auto compute = make_worker();
      while (true) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return failure || next >= count || next < taken + window; });
        if (failure || next >= count) return;
        const std::size_t index = next++;
        lock.unlock();
        Result result = compute(index);
        lock.lock();
        slots[index % window] = std::move(result);
        if (index == taken) changed.notify_all();
      }
    } catch (...) {
      fail();
    }
  };
  const auto take_all = [&] {
    for (std::size_t index = 0; index < count; ++index) {
      std::unique_lock lock(mutex);
      changed.wait(lock, [&] { return failure || slots[index % window].has_value(); });
      if (failure) return;
      Result result = std::move(*slots[index % window]);
      slots[index % window].reset();
      ++taken;
      changed.notify_all();
      lock.unlock();
      take(index, std::move(result));
    }
  };

  std::vector<std::thread> workers;
  try {
    const std::size_t most = std::min<std::size_t>(std::max(threads, 1u), count);
    for (std::size_t i = 0; i < most; ++i) workers.emplace_back(work);
    take_all();
  } catch (...) {
    fail();
  }
  for (std::thread& worker : workers) worker.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace context_delta::indexer
