#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "utils/git_utils.h"

namespace context_delta::git_history {

/// One side of a comparison.
struct Side {
  std::string name;    ///< as shown: the branch, or a short commit id
  std::string commit;  ///< full id
};

/// What is compared with what.
struct Sides {
  Side base, head;
  std::optional<std::string> why_base;         ///< why this base, when none was named
  std::string base_parameter = "base_branch";  ///< what errors call the name of the base
};

/// The names of a comparison as the caller gave them, and what errors call them. No head: what is
/// checked out.
struct Names {
  std::optional<std::string> base, head;
  std::string base_parameter, head_parameter;
  std::optional<std::int64_t> pull_request = {};  ///< instead of a head: the number of one
};

/// Finds the commits of both sides with a fixed number of git processes. A plain name is the local
/// branch of that name, else what git takes it for, else the branch of remote "origin".
/// A pull or merge request is looked for under the names that hosts and users fetch them to. Raises
/// GitHistoryError for names that name no commit, in terms of the parameter.
Sides find_sides(const git_utils::Git& git, const Names& names);

/// The commit that a name means, as find_sides() reads names. Raises GitHistoryError in terms of
/// `parameter`.
std::string find_commit(const git_utils::Git& git, const std::string& name,
                        std::string_view parameter);

}  // namespace context_delta::git_history
