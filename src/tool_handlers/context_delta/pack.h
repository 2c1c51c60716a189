#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/empty_results.h"
#include "tool_handlers/context_delta/file_selection.h"
#include "tool_handlers/context_delta/section_assembly.h"

namespace context_delta {

/// The delta context pack of one comparison: selects and orders the changed files and writes the
/// header; with no kept file the pack says that nothing changed, otherwise its sections follow.
template <class Services>
typename Services::Row _pack(Services& services, const typename Services::Repository& repository,
                             const typename Services::RepoRoot& repo_root,
                             const typename Services::BranchChanges& changes,
                             const PackOptions<Services>& options) {
  using Value = typename Services::Value;
  const auto& impact =
      services.file_impact(field::db(repository), _paths<Services>(field::files(changes)));
  auto files = _kept_files(services, changes, impact, options.source_only);
  _sort_by_impact<Services>(files, impact);

  const auto kept = static_cast<std::int64_t>(files.size());
  const auto excluded = static_cast<std::int64_t>(field::files(changes).size()) - kept;
  typename Services::Row result;
  result.set("base_branch", Value(field::base_branch(changes)));
  result.set("target_branch", Value(field::head_branch(changes)));
  result.set("commit_count", Value(field::commit_count(changes)));
  result.set("total_changed_files", Value(kept));
  result.set("excluded_files", Value(excluded));

  if (files.empty()) {
    _add_empty_parts<Services>(result);
    result.set("message", Value(_nothing_changed(changes, excluded)));
    return result;
  }
  return _assemble_sections(services, repository, repo_root, changes, impact, files,
                            std::move(result), options);
}

}  // namespace context_delta
