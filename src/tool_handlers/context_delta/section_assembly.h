#pragma once

#include <cstdint>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/callers.h"
#include "tool_handlers/context_delta/changed_symbols.h"
#include "tool_handlers/context_delta/fields.h"
#include "tool_handlers/context_delta/file_rows.h"
#include "tool_handlers/context_delta/file_selection.h"
#include "tool_handlers/context_delta/services.h"
#include "tool_handlers/context_delta/snippets.h"

namespace context_delta {

inline constexpr const char* TARGET_WARNING =
    "Symbols, lines and callers come from the index of the checked-out branch, not of "
    "target_branch: they may be off where the two differ.";

template <class Services>
struct PackOptions {
  typename Services::Integer token_budget;
  typename Services::Flag include_call_graph;
  typename Services::Flag include_snippets;
  typename Services::Flag source_only;
  bool warn;  ///< the target is not what is checked out
  typename Services::WikiLens wiki_lens = {};
};

/// Completes a pack that has its header: reads the changed lines once, pays for the wiki pages,
/// lets each section spend its part, and counts what was left out. `files` are the kept ones, in
/// impact order, at least one.
template <class Services>
typename Services::Row _assemble_sections(Services& services,
                                          const typename Services::Repository& repository,
                                          const typename Services::RepoRoot& repo_root,
                                          const typename Services::BranchChanges& changes,
                                          const typename Services::Impact& impact,
                                          const std::vector<typename Services::FileChange>& files,
                                          typename Services::Row result,
                                          const PackOptions<Services>& options) {
  using Integer = typename Services::Integer;
  using Row = typename Services::Row;
  using Value = typename Services::Value;

  const auto& spans = services.changed_line_spans(repo_root, field::base_commit(changes),
                                                  field::head_commit(changes), files, true);

  typename Services::Pages pages;
  if (options.wiki_lens) {
    KeptPaths<Services> paths(files);
    pages = services.pages_citing(options.wiki_lens, paths);
  }
  Integer pages_cost(0);
  if (truth(pages)) pages_cost = services.estimate_tokens(json_text(pages));

  std::span<const Share> shares = SHARES;
  if (truth(options.include_snippets)) shares = SHARES_WITH_SNIPPETS;
  Budget<Services> budget(services, options.token_budget - pages_cost, shares);

  auto files_part = budget.part("files");
  const std::vector<Row> file_rows = _file_rows(services, files, impact, files_part);

  StatusByPath<Services> status;
  for (const auto& change : files) {
    status.insert_or_assign(field::path(change), Value(field::status(change)));
  }

  auto symbols_part = budget.part("symbols");
  const auto [symbols, symbol_rows] =
      _changed_symbols(services, repository, files, spans, status, symbols_part);

  const auto ranges = services.line_ranges(spans, _paths<Services>(files));
  const Integer total_symbols =
      services.count_symbols_on_lines(field::db(repository), ranges, services.change_kinds());

  // Granted even when no callers are listed, so that its share passes on to the snippets.
  auto callers_part = budget.part("callers");
  Listed<Services> callers;
  Listed<Services> neighbours;
  if (truth(options.include_call_graph)) {
    std::tie(callers, neighbours) = _callers(services, repository, symbols, callers_part);
  }

  std::vector<Row> snippets;
  if (truth(options.include_snippets)) {
    auto snippets_part = budget.part("snippets");
    snippets = _snippets(services, repo_root, file_rows, spans, snippets_part);
  }

  const std::pair<const char*, Integer> omitted[] = {
      {"files_omitted", Integer(_count(files) - _count(file_rows))},
      {"symbols_omitted", total_symbols - Integer(_count(symbols))},
      {"callers_omitted", callers.found - Integer(_count(callers.rows))},
      {"neighbours_omitted", neighbours.found - Integer(_count(neighbours.rows))},
  };
  bool truncated = false;
  for (const auto& [key, number] : omitted) truncated = truncated || truth(number);

  result.set("affected_files", Value(file_rows));
  result.set("symbols", Value(symbol_rows));
  result.set("callers", Value(std::move(callers.rows)));
  result.set("neighbours", Value(std::move(neighbours.rows)));
  result.set("snippets", Value(std::move(snippets)));
  result.set("tokens_used", Value(budget.used() + pages_cost));
  result.set("truncated", Value(truncated));
  result.set("total_changed_symbols", Value(total_symbols));
  for (const auto& [key, number] : omitted) result.set(key, Value(number));
  if (truth(pages)) result.set("wiki_pages", Value(std::move(pages)));
  if (options.warn) result.set("warning", Value(TARGET_WARNING));
  return result;
}

}  // namespace context_delta
