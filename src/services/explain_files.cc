#include "services/explain_files.h"

#include <utility>

#include "services/review.h"
#include "storage/repository_changes.h"

namespace context_delta::services {

std::vector<ExplainedFile> explain_files(const git_utils::Git& git,
                                         const std::filesystem::path& index,
                                         const DeltaRequest& request, const Update& update) {
  const Review review(git, request);
  const IndexAt held = open_index_at(review.git(), index, review.sides().head.commit, update);
  std::vector<std::string> paths;
  for (const auto& change : review.changes().files) paths.push_back(change.path);
  const auto impact = repository_changes::file_impact(held.repository->db, paths);
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
