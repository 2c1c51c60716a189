#include "services/index_at.h"

#include <chrono>
#include <map>
#include <mutex>
#include <utility>

namespace context_delta::services {
namespace {

constexpr int MOST_ATTEMPTS = 30;
constexpr std::chrono::milliseconds TRY{100};
constexpr int MOST_TRIES = 20;

/// One user at a time of each index file, as far as this process goes: calls for different commits
/// would move the file away from each other. Whoever has waited for long goes on all the same, to
/// wait for the file itself, where progress is told and interrupts are heard.
class Turn {
 public:
  Turn(const std::filesystem::path& path, CancelFlag cancelled)
      : turn_(turn_of(path)), lock_(*turn_, std::defer_lock) {
    for (int i = 0; i < MOST_TRIES && !lock_.try_lock_for(TRY); ++i) check_cancelled(cancelled);
  }

 private:
  static std::shared_ptr<std::timed_mutex> turn_of(const std::filesystem::path& path) {
    static std::mutex mutex;
    static std::map<std::filesystem::path, std::weak_ptr<std::timed_mutex>> turns;
    const std::lock_guard lock(mutex);
    std::erase_if(turns, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<std::timed_mutex>& known = turns[path.lexically_normal()];
    std::shared_ptr<std::timed_mutex> turn = known.lock();
    if (!turn) known = turn = std::make_shared<std::timed_mutex>();
    return turn;
  }

  std::shared_ptr<std::timed_mutex> turn_;
  std::unique_lock<std::timed_mutex> lock_;
};

}  // namespace

IndexAt open_index_at(const git_utils::Git& git, const std::filesystem::path& path,
                      const std::string& commit, const Update& update) {
  const Turn turn(path, git.limits().cancelled);
  auto repository = std::make_unique<storage::Repository>(path, git.limits().cancelled);
  indexer::UpdateReport report;
  for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
    indexer::UpdateReport latest = update(*repository, git, commit);
    if (attempt == 0 || !latest.up_to_date) report = std::move(latest);
    // Another process may move the index on before it is held.
    storage::Transaction reading = repository->begin_reading();
    if (repository->commit() != commit) continue;
    return {commit, std::move(repository), std::move(report), std::move(reading)};
  }
  throw storage::IndexError("cannot keep the index " + path.string() +
                                " at one commit: other processes move it; name an index file of "
                                "your own",
                            storage::IndexError::Cause::BUSY);
}

IndexAt open_current_index(const git_utils::Git& git, const std::filesystem::path& path,
                           const Update& update) {
  return open_index_at(git, path, git_utils::resolve_commit(git, "HEAD"), update);
}

}  // namespace context_delta::services
