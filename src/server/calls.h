#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "server/line_writer.h"
#include "utils/cancellation.h"

namespace context_delta::server {

/// The calls under way: a few at a time on threads of their own, a bounded number waiting.
class Calls {
 public:
  static constexpr std::size_t MOST_RUNNING = 4;
  static constexpr std::size_t MOST_UNDER_WAY = 64;  ///< the waiting ones among them

  /// The line that answers the call. Raises Cancelled when the flag is set, and nothing else.
  using Work = std::function<std::string(CancelFlag cancelled)>;

  explicit Calls(LineWriter& writer) : writer_(writer) {}
  /// Cancels all calls and waits for their threads.
  ~Calls();
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;

  /// Runs the work as soon as there is a thread for it and writes its line. Raises ProtocolError:
  /// a call of this id is under way, or too many are.
  void start(const std::string& id, Work work);

  /// Nothing of this call is written any more, and its work ends soon. An id that is not under way
  /// is passed over.
  void cancel(const std::string& id);

 private:
  struct Running {
    std::string id;
    Work work;
    std::atomic<bool> cancelled = false;
  };
  void run_calls();
  void run(const std::shared_ptr<Running>& call);
  bool finish(const Running& call);

  LineWriter& writer_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, std::shared_ptr<Running>> calls_;  // by id; waiting ones too
  std::deque<std::shared_ptr<Running>> waiting_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool ending_ = false;
};

}  // namespace context_delta::server
