#pragma once

#include "cli/settings.h"
#include "services/current_index.h"
#include "utils/git_utils.h"

namespace context_delta::cli {

/// Brings the index up to date with what is checked out and begins to read it. Progress is shown
/// on standard error as the settings allow; a signal gives up and leaves the index as it was.
/// Raises git_utils::GitHistoryError, storage::IndexError, indexer::Cancelled.
services::CurrentIndex bring_up_to_date(const git_utils::Git& git, const Settings& settings);

}  // namespace context_delta::cli
