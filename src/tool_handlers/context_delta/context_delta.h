#pragma once

#include <cstdint>
#include <optional>

/// The delta action: what a branch changed, for review.
namespace context_delta {

inline constexpr std::int64_t CALLER_LOOKUPS = 20;      ///< symbols whose callers are looked up
inline constexpr std::int64_t CALLERS_PER_SYMBOL = 10;  ///< callers of one kind read per symbol
inline constexpr std::int64_t SNIPPET_FILES = 10;       ///< file rows that may get a snippet
inline constexpr std::int64_t SNIPPET_LINES = 40;       ///< lines that one snippet shows at most

/// The parameters of the operation. Flags are tested for truth where they are used.
template <class Services>
struct Request {
  typename Services::Repository repository;  ///< the index of the checked-out branch
  typename Services::RepoRoot repo_root;
  std::optional<typename Services::Branch> base_branch = {};    ///< null: the default branch
  std::optional<typename Services::Branch> target_branch = {};  ///< null: what is checked out
  typename Services::Integer token_budget = 4000;
  typename Services::Flag include_call_graph = true;
  typename Services::Flag include_snippets = false;
  typename Services::Flag source_only = true;  ///< no tests, documents or generated files
  typename Services::WikiLens wiki_lens = {};
};

/// The changes of a branch since it left its base, within a token budget.
///
/// Returns the delta context pack, a mapping of JSON values whose keys are described in
/// docs/pack.md: the full pack; the same header with `message` when no kept file changed; or, when
/// git cannot compare the branches, empty parts with `error`. The budget is the most tokens of
/// files, symbols, callers and snippets together; wiki pages are paid from it first, and a budget
/// that they exceed leaves nothing for the rest. Whatever the services raise, but the one error
/// type of git, passes through.
template <class Services>
typename Services::Row handle_build_delta_context_pack(Services& services,
                                                       const Request<Services>& request);

}  // namespace context_delta
