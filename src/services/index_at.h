#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "indexer/update.h"
#include "storage/repository.h"
#include "utils/git_utils.h"

namespace context_delta::services {

/// The index of a repository at one commit, held still while it is read.
struct IndexAt {
  std::string commit;
  std::unique_ptr<storage::Repository> repository;  ///< where `reading` expects it
  indexer::UpdateReport report;
  storage::Transaction reading;
};

/// Brings an index to a commit of `git`, as indexer::update() does.
using Update = std::function<indexer::UpdateReport(
    storage::Repository& repository, const git_utils::Git& git, const std::string& commit)>;

/// The index of `commit` (a full id): brings the index in the file `path` there and begins to read
/// it. Whatever else wants another commit of the same file meanwhile, in this process or in others,
/// what is returned answers for this one. Raises git_utils::GitHistoryError, storage::IndexError,
/// Cancelled when the git object's limits say so, and whatever `update` raises.
IndexAt open_index_at(const git_utils::Git& git, const std::filesystem::path& path,
                      const std::string& commit, const Update& update);

/// The same for what is checked out.
IndexAt open_current_index(const git_utils::Git& git, const std::filesystem::path& path,
                           const Update& update);

}  // namespace context_delta::services
