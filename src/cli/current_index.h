#pragma once

#include <filesystem>

#include "cli/settings.h"
#include "services/index_at.h"
#include "utils/git_utils.h"

namespace context_delta::cli {

/// The index file that the settings mean.
std::filesystem::path index_path(const git_utils::Git& git, const Settings& settings);

/// Brings an index to a commit. Progress is shown on standard error as the settings allow; a signal
/// gives up and leaves the index as it was. The settings must outlive it.
services::Update updater(const Settings& settings);

/// The index of the commit that `--at` names, else of what is checked out. Raises
/// git_utils::GitHistoryError, storage::IndexError, indexer::Cancelled.
services::IndexAt open_index(const git_utils::Git& git, const Settings& settings);

}  // namespace context_delta::cli
