#include "services/explain_files.h"

#include <utility>

#include "storage/repository_changes.h"

namespace context_delta::services {

std::vector<ExplainedFile> explain_files(const git_utils::Git& git,
                                         const storage::Repository& index,
                                         const DeltaRequest& request) {
  git_history::BranchChanges changes = git_history::History(git).branch_changes(
      request.base_branch, request.target_branch, request.target_parameter, request.base_parameter);
  std::vector<std::string> paths;
  for (git_utils::FileChange& change : changes.files) paths.push_back(std::move(change.path));
  const auto impact = repository_changes::file_impact(index.db, paths);
  std::vector<ExplainedFile> files;
  for (std::string& path : paths) {
    const auto found = impact.find(path);
    const auto language = found == impact.end() ? std::nullopt : found->second.language;
    auto exclusion = git_history::source_exclusion(path, language);
    files.push_back({std::move(path), exclusion});
  }
  return files;
}

}  // namespace context_delta::services
