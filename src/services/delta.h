#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "services/index_at.h"
#include "storage/repository.h"
#include "utils/git_utils.h"
#include "utils/json.h"

/// The delta context pack of a real repository: the component over native services.
namespace context_delta::services {

inline constexpr std::int64_t DEFAULT_TOKEN_BUDGET = 4000;

/// What is reviewed beside the commits of what is checked out.
enum class Uncommitted : unsigned char {
  NOTHING,
  STAGED,
  ALL,  ///< all changes, and new files that are not ignored
};

struct DeltaRequest {
  std::optional<std::string> base_branch;    ///< null: the repository's default branch
  std::optional<std::string> target_branch;  ///< any commit; null: what is checked out
  std::optional<std::int64_t> pull_request;  ///< the number of a fetched one, instead of a target
  Uncommitted uncommitted = Uncommitted::NOTHING;  ///< something only without a target branch
  std::int64_t token_budget = DEFAULT_TOKEN_BUDGET;
  /// Tell in the remarks how many files hold uncommitted changes that are not reviewed.
  bool tell_uncommitted = false;
  bool include_call_graph = true;
  bool include_snippets = false;
  bool source_only = true;
  std::optional<std::filesystem::path> wiki;  ///< folder of Markdown pages; null: no wiki pages
  /// The names under which errors speak of the two branches.
  std::string base_parameter = "base_branch";
  std::string target_parameter = "target_branch";
};

/// Rows that a pack counts as left out by its own limits: symbols of a file and callers of a symbol
/// beyond the most that it lists.
struct BeyondLimits {
  std::int64_t symbols = 0;
  std::int64_t callers = 0;
  std::int64_t neighbours = 0;
};

/// An answer, and the two commits that all of it hangs on.
struct DeltaAnswer {
  json::Mapping pack;
  std::string base_commit, head_commit;   ///< full ids; empty when git found none
  std::vector<std::string> remarks = {};  ///< what else a person should know, a clause each
  BeyondLimits beyond_limits = {};
  bool is_cut_by_budget = false;  ///< whether a greater budget would list more
};

/// The one path from a request to its pack: finds the commits, compares them, brings the index in
/// the file `index` to the reviewed one by `update`, and asks the component. A comparison that git
/// cannot make is a pack with `error`, and nothing is indexed for it. Raises storage::IndexError,
/// wiki::WikiError when the wiki folder cannot be read, and what `update` raises.
DeltaAnswer delta_answer(const git_utils::Git& git, const std::filesystem::path& index,
                         const DeltaRequest& request, const Update& update);

/// The pack of a comparison that could not even begin: empty parts and `error`.
json::Mapping error_result(const git_utils::GitHistoryError& error);

}  // namespace context_delta::services
