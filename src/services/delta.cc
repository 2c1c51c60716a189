#include "services/delta.h"

#include "services/native_services.h"
#include "services/review.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/empty_results.h"

namespace context_delta::services {
namespace {

json::Mapping pack_of(Review& review, const storage::Repository& index,
                      const DeltaRequest& request) {
  std::optional<wiki::WikiLens> lens;
  if (request.wiki) lens.emplace(*request.wiki, review.git(), review.sides().head.commit);

  NativeServices services(review);
  return handle_build_delta_context_pack(
      services, Request<NativeServices>{.repository = {index, index.db},
                                        .repo_root = review.git().root(),
                                        .base_branch = request.base_branch,
                                        .target_branch = request.target_branch,
                                        .token_budget = request.token_budget,
                                        .include_call_graph = request.include_call_graph,
                                        .include_snippets = request.include_snippets,
                                        .source_only = request.source_only,
                                        .wiki_lens = lens ? &*lens : nullptr});
}

}  // namespace

DeltaAnswer delta_answer(const git_utils::Git& git, const std::filesystem::path& index,
                         const DeltaRequest& request, const Update& update) {
  try {
    Review review(git, request);
    const std::string& head = review.sides().head.commit;
    const IndexAt held = open_index_at(review.git(), index, head, update);
    return {pack_of(review, *held.repository, request), review.sides().base.commit, head,
            review.remarks()};
  } catch (const git_utils::GitHistoryError& error) {
    return {error_result(error), {}, {}, {}};
  }
}

json::Mapping error_result(const git_utils::GitHistoryError& error) {
  return _error_result<NativeServices>(error);
}

}  // namespace context_delta::services
