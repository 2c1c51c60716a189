#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "indexer/update.h"
#include "storage/repository.h"
#include "utils/git_utils.h"

namespace context_delta::services {

/// The index of a repository at its checked-out commit, held still while it is read.
struct CurrentIndex {
  std::string commit;
  std::unique_ptr<storage::Repository> repository;  ///< where `reading` expects it
  indexer::UpdateReport report;
  storage::Transaction reading;
};

/// Brings an index to a commit, as indexer::update() does.
using Update = std::function<indexer::UpdateReport(storage::Repository& repository,
                                                   const std::string& commit)>;

/// Brings the index in the file `path` up to date with what is checked out and begins to read it.
/// Raises git_utils::GitHistoryError, storage::IndexError, Cancelled when the git object's limits
/// say so, and whatever `update` raises.
CurrentIndex current_index(const git_utils::Git& git, const std::filesystem::path& path,
                           const Update& update);

}  // namespace context_delta::services
