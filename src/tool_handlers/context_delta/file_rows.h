#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/fields.h"

namespace context_delta {

template <class List>
std::int64_t _count(const List& list) {
  return static_cast<std::int64_t>(list.size());
}

/// The rows of the kept files, in their order, for as long as the part takes them: the row of the
/// change with the symbols that the file defines and the references into it.
template <class Services>
std::vector<typename Services::Row> _file_rows(
    Services& services, const std::vector<typename Services::FileChange>& files,
    const typename Services::Impact& impact, Part<Services>& part) {
  using Value = typename Services::Value;
  std::vector<typename Services::Row> rows;
  for (const auto& change : files) {
    typename Services::Row row = services.change_row(change);
    const auto found = lookup(impact, field::path(change));
    row.set("symbols", found ? Value(field::symbols(*found)) : Value(std::int64_t{0}));
    row.set("references", found ? Value(field::references(*found)) : Value(std::int64_t{0}));
    if (!part.take(row)) break;
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace context_delta
