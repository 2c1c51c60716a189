#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool_handlers/context_delta/fields.h"

namespace context_delta {

/// The message of a pack without kept files: `excluded` changed files were left out by the source
/// filter; the note is shown only when none was.
std::string nothing_changed_message(std::int64_t excluded, std::optional<std::string_view> note);

/// Adds the section lists and totals of a pack with nothing in them to `row`.
template <class Services>
void _add_empty_parts(typename Services::Row& row) {
  using Value = typename Services::Value;
  for (const char* list : {"affected_files", "symbols", "callers", "neighbours", "snippets"}) {
    row.set(list, Value(std::vector<typename Services::Row>()));
  }
  row.set("tokens_used", Value(std::int64_t{0}));
  row.set("truncated", Value(false));
}

/// A new mapping of the empty parts, with new lists.
template <class Services>
typename Services::Row _empty_parts() {
  typename Services::Row parts;
  _add_empty_parts<Services>(parts);
  return parts;
}

/// What stands in for a pack when git cannot compare the branches.
template <class Services>
typename Services::Row _error_result(const typename Services::GitHistoryError& error) {
  auto result = _empty_parts<Services>();
  result.set("error", typename Services::Value(error_text(error)));
  return result;
}

/// Says whether the branch changed nothing at all or only files that the source filter left out.
template <class BranchChanges>
std::string _nothing_changed(const BranchChanges& changes, std::int64_t excluded) {
  if (excluded != 0) return nothing_changed_message(excluded, std::nullopt);
  const auto& note = field::note(changes);
  if (!truth(note)) return nothing_changed_message(0, std::nullopt);
  return nothing_changed_message(0, plain_text(note));
}

}  // namespace context_delta
