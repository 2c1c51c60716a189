#include "services/delta.h"

#include "services/native_services.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/empty_results.h"
#include "workers/git_history.h"

namespace context_delta::services {

json::Mapping delta_pack(const git_utils::Git& git, const storage::Repository& index,
                         const DeltaRequest& request) {
  std::optional<wiki::WikiLens> lens;
  if (request.wiki) lens.emplace(*request.wiki, git);

  NativeServices services(git, request.base_parameter, request.target_parameter);
  return handle_build_delta_context_pack(
      services, Request<NativeServices>{.repository = {index, index.db},
                                        .repo_root = git.root(),
                                        .base_branch = request.base_branch,
                                        .target_branch = request.target_branch,
                                        .token_budget = request.token_budget,
                                        .include_call_graph = request.include_call_graph,
                                        .include_snippets = request.include_snippets,
                                        .source_only = request.source_only,
                                        .wiki_lens = lens ? &*lens : nullptr});
}

void check_before_first_index(const git_utils::Git& git, const std::filesystem::path& path,
                              const DeltaRequest& request) {
  std::error_code unreadable;
  if (std::filesystem::exists(path, unreadable)) return;
  git_history::History(git).branch_changes(request.base_branch, request.target_branch,
                                           request.target_parameter, request.base_parameter);
}

json::Mapping error_result(const git_utils::GitHistoryError& error) {
  return _error_result<NativeServices>(error);
}

}  // namespace context_delta::services
