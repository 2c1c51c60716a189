#pragma once

#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/empty_results.h"
#include "tool_handlers/context_delta/pack.h"
#include "tool_handlers/context_delta/services.h"

namespace context_delta {

template <class Services>
typename Services::Row handle_build_delta_context_pack(Services& services,
                                                       const Request<Services>& request) {
  static_assert(ContextServices<Services>);
  try {
    const auto& changes = services.branch_changes(request.repo_root, request.base_branch,
                                                  request.target_branch, "target_branch");
    bool elsewhere = false;
    if (request.target_branch.has_value()) {
      const auto checked_out = services.resolve_commit(request.repo_root, "HEAD");
      elsewhere = checked_out != field::head_commit(changes);
    }
    return _pack(services, request.repository, request.repo_root, changes,
                 PackOptions<Services>{.token_budget = request.token_budget,
                                       .include_call_graph = request.include_call_graph,
                                       .include_snippets = request.include_snippets,
                                       .source_only = request.source_only,
                                       .warn = elsewhere,
                                       .wiki_lens = request.wiki_lens});
  } catch (const typename Services::GitHistoryError& error) {
    return _error_result<Services>(error);
  }
}

}  // namespace context_delta
