#pragma once

#include <memory>
#include <string>

#include "cli/settings.h"
#include "indexer/update.h"
#include "storage/repository.h"
#include "utils/git_utils.h"

namespace context_delta::cli {

/// The index of a repository at its checked-out commit, held still while it is read.
struct CurrentIndex {
  std::string commit;
  std::unique_ptr<storage::Repository> repository;  ///< where `reading` expects it
  indexer::UpdateReport report;
  storage::Transaction reading;
};

/// Brings the index up to date with what is checked out and begins to read it. Progress is shown
/// on standard error as the settings allow; a signal gives up and leaves the index as it was.
/// Raises git_utils::GitHistoryError, storage::IndexError, indexer::Cancelled.
CurrentIndex bring_up_to_date(const git_utils::Git& git, const Settings& settings);

}  // namespace context_delta::cli
