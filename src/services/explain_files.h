#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "services/delta.h"
#include "workers/git_history.h"

namespace context_delta::services {

/// A changed file, and the rule that keeps it out of a pack of production source.
struct ExplainedFile {
  std::string path;
  std::optional<git_history::SourceExclusion> exclusion;  ///< null: it is kept
};

/// All changed files of the comparison that `request` asks for, by path, whatever its
/// `source_only`, by the index of the reviewed commit in the file `index`. Raises
/// git_utils::GitHistoryError, storage::IndexError, and what `update` raises.
std::vector<ExplainedFile> explain_files(const git_utils::Git& git,
                                         const std::filesystem::path& index,
                                         const DeltaRequest& request, const Update& update);

}  // namespace context_delta::services
