#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "storage/repository.h"
#include "utils/git_utils.h"
#include "utils/json.h"

/// The delta context pack of a real repository: the component over native services.
namespace context_delta::services {

inline constexpr std::int64_t DEFAULT_TOKEN_BUDGET = 4000;

struct DeltaRequest {
  std::optional<std::string> base_branch;    ///< null: the repository's default branch
  std::optional<std::string> target_branch;  ///< null: what is checked out
  std::int64_t token_budget = DEFAULT_TOKEN_BUDGET;
  bool include_call_graph = true;
  bool include_snippets = false;
  bool source_only = true;
  std::optional<std::filesystem::path> wiki;  ///< folder of Markdown pages; null: no wiki pages
  /// The names under which errors speak of the two branches.
  std::string base_parameter = "base_branch";
  std::string target_parameter = "target_branch";
};

/// The pack, from `git`'s repository and the index that answers for its checked-out commit. A
/// comparison that git cannot make is a pack with `error`. Raises storage::IndexError, and
/// wiki::WikiError when the wiki folder cannot be read.
json::Mapping delta_pack(const git_utils::Git& git, const storage::Repository& index,
                         const DeltaRequest& request);

/// Raises git_utils::GitHistoryError when git cannot make the comparison, unless there is an index
/// in the file `path`: a large repository is not indexed for nothing.
void check_before_first_index(const git_utils::Git& git, const std::filesystem::path& path,
                              const DeltaRequest& request);

/// The pack of a comparison that could not even begin: empty parts and `error`.
json::Mapping error_result(const git_utils::GitHistoryError& error);

}  // namespace context_delta::services
