#include "services/current_index.h"

#include <utility>

namespace context_delta::services {
namespace {

constexpr int MOST_ATTEMPTS = 10;

}  // namespace

CurrentIndex current_index(const git_utils::Git& git, const std::filesystem::path& path,
                           const Update& update) {
  std::string commit = git_utils::resolve_commit(git, "HEAD");
  auto repository = std::make_unique<storage::Repository>(path, git.limits().cancelled);
  indexer::UpdateReport report;
  for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
    indexer::UpdateReport latest = update(*repository, commit);
    if (attempt == 0 || !latest.up_to_date) report = std::move(latest);
    // Another process may move the index on before it is held.
    storage::Transaction reading = repository->begin_reading();
    if (repository->commit() != commit) continue;
    return {std::move(commit), std::move(repository), std::move(report), std::move(reading)};
  }
  throw storage::IndexError("cannot keep the index " + path.string() +
                                " at one commit: other processes move it; name an index file of "
                                "your own",
                            storage::IndexError::Cause::BUSY);
}

}  // namespace context_delta::services
