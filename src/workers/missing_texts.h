#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "utils/git_utils.h"
#include "workers/diff_parser.h"

namespace context_delta::git_history {

/// Most files that are listed without their texts: each is a word of a command line.
inline constexpr std::size_t MOST_MISSING_TEXTS = 1000;

/// The changed files of a comparison whose texts a partial clone has not fetched: with their
/// statuses, without counts and spans; renames are a deletion and an addition. None where there is
/// nothing missing, or more than MOST_MISSING_TEXTS. `range` are the commits as `git diff` takes
/// them. Raises GitHistoryError.
std::vector<DiffFile> changes_without_texts(const git_utils::Git& git,
                                            const std::vector<std::string>& range);

/// The pathspec of everything but a file.
std::string all_but(const std::string& path);

}  // namespace context_delta::git_history
