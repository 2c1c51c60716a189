#include "services/delta.h"

#include <algorithm>

#include "services/native_services.h"
#include "services/review.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/empty_results.h"

namespace context_delta::services {
namespace {

std::int64_t omitted(const json::Mapping& pack, std::string_view key) {
  const json::Value* number = pack.find(key);
  return number == nullptr ? 0 : *number->as<std::int64_t>();
}

bool is_cut_by_budget(const json::Mapping& pack, const BeyondLimits& beyond) {
  return omitted(pack, "files_omitted") > 0 || omitted(pack, "symbols_omitted") > beyond.symbols ||
         omitted(pack, "callers_omitted") > beyond.callers ||
         omitted(pack, "neighbours_omitted") > beyond.neighbours;
}

void add_pack(DeltaAnswer& answer, Review& review, const storage::Repository& index,
              const DeltaRequest& request) {
  std::optional<wiki::WikiLens> lens;
  if (request.wiki) lens.emplace(*request.wiki, review.git(), review.sides().head.commit);
  // Less than nothing counts as nothing: what pages cost is taken from it and must not wrap.
  const std::int64_t budget = std::max<std::int64_t>(request.token_budget, 0);

  NativeServices services(review);
  answer.pack = handle_build_delta_context_pack(
      services, Request<NativeServices>{.repository = {index, index.db},
                                        .repo_root = review.git().root(),
                                        .base_branch = request.base_branch,
                                        .target_branch = request.target_branch,
                                        .token_budget = budget,
                                        .include_call_graph = request.include_call_graph,
                                        .include_snippets = request.include_snippets,
                                        .source_only = request.source_only,
                                        .wiki_lens = lens ? &*lens : nullptr});
  answer.beyond_limits = services.beyond_limits();
  answer.is_cut_by_budget = is_cut_by_budget(answer.pack, answer.beyond_limits);
}

}  // namespace

DeltaAnswer delta_answer(const git_utils::Git& git, const std::filesystem::path& index,
                         const DeltaRequest& request, const Update& update) {
  try {
    Review review(git, request);
    const std::string& head = review.sides().head.commit;
    const IndexAt held = open_index_at(review.git(), index, head, update);
    DeltaAnswer answer;
    add_pack(answer, review, *held.repository, request);
    answer.base_commit = review.sides().base.commit;
    answer.head_commit = head;
    answer.remarks = review.remarks();
    return answer;
  } catch (const git_utils::GitHistoryError& error) {
    return {error_result(error), {}, {}};
  }
}

json::Mapping error_result(const git_utils::GitHistoryError& error) {
  return _error_result<NativeServices>(error);
}

}  // namespace context_delta::services
