#include "server/calls.h"

#include <algorithm>

#include "server/json_rpc.h"

namespace context_delta::server {

Calls::~Calls() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    waiting_.clear();
    for (const auto& [id, call] : calls_) call->cancelled = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void Calls::start(const std::string& id, Work work) {
  const std::lock_guard lock(mutex_);
  if (calls_.contains(id)) {
    throw ProtocolError(ErrorCode::INVALID_REQUEST, "a request with this id is under way");
  }
  if (calls_.size() >= MOST_UNDER_WAY) {
    throw ProtocolError(ErrorCode::INTERNAL_ERROR,
                        std::to_string(calls_.size()) +
                            " calls are under way: wait for one of them to be answered");
  }
  auto call = std::make_shared<Running>();
  call->id = id;
  call->work = std::move(work);
  if (idle_ <= waiting_.size() && threads_.size() < MOST_RUNNING) {
    threads_.emplace_back([this] { run_calls(); });
  }
  calls_[id] = call;
  waiting_.push_back(std::move(call));
  changed_.notify_one();
}

void Calls::cancel(const std::string& id) {
  const std::lock_guard lock(mutex_);
  const auto found = calls_.find(id);
  if (found == calls_.end()) return;
  found->second->cancelled = true;
  waiting_.erase(std::remove(waiting_.begin(), waiting_.end(), found->second), waiting_.end());
  // The id is free again: what is still running under it says nothing any more.
  calls_.erase(found);
}

void Calls::run_calls() {
  while (true) {
    std::shared_ptr<Running> call;
    {
      std::unique_lock lock(mutex_);
      ++idle_;
      changed_.wait(lock, [&] { return ending_ || !waiting_.empty(); });
      --idle_;
      if (ending_) return;
      call = std::move(waiting_.front());
      waiting_.pop_front();
    }
    run(call);
  }
}

void Calls::run(const std::shared_ptr<Running>& call) {
  try {
    const std::string line = call->work(&call->cancelled);
    if (finish(*call)) writer_.write(line);
  } catch (const Cancelled&) {
    finish(*call);
  }
}

bool Calls::finish(const Running& call) {
  const std::lock_guard lock(mutex_);
  if (call.cancelled) return false;
  calls_.erase(call.id);
  return true;
}

}  // namespace context_delta::server
