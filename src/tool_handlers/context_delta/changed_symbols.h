#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/fields.h"
#include "tool_handlers/context_delta/file_selection.h"

namespace context_delta {

inline constexpr std::size_t FILES_PER_READ = 10;  ///< paths that one index query covers at most

template <class Services>
using StatusByPath = std::unordered_map<typename Services::Path, typename Services::Value>;

/// A changed symbol's row; "signature" only when there is one.
template <class Services>
typename Services::Row _symbol_row(const typename Services::SymbolOnLines& symbol,
                                   const typename Services::Value& status) {
  using Value = typename Services::Value;
  typename Services::Row row;
  row.set("fqn", Value(field::fqn(symbol)));
  row.set("name", Value(field::name(symbol)));
  row.set("kind", Value(field::kind(symbol)));
  row.set("file", Value(field::path(symbol)));
  row.set("line", Value(field::start_line(symbol)));
  row.set("end_line", Value(field::end_line(symbol)));
  row.set("status", status);
  const auto& signature = field::signature(symbol);
  if (truth(signature)) row.set("signature", Value(signature));
  return row;
}

/// Cuts paths into lists of at most FILES_PER_READ, one at a time.
template <class Path>
class Chunks {
 public:
  explicit Chunks(std::span<const Path> paths) : left_(paths) {}

  /// The next list; empty after the last.
  std::vector<Path> next() {
    const auto chunk = left_.first(std::min(FILES_PER_READ, left_.size()));
    left_ = left_.subspan(chunk.size());
    return {chunk.begin(), chunk.end()};
  }

 private:
  std::span<const Path> left_;
};

template <class Path>
Chunks<Path> _chunks(const std::vector<Path>& paths) {
  return Chunks<Path>(paths);
}

/// The changed symbols of one chunk of paths, by file in the chunk's order, first line and id.
template <class Services>
std::vector<typename Services::SymbolOnLines> _symbols_of_chunk(
    Services& services, const typename Services::Repository& repository,
    const typename Services::Spans& spans, const std::vector<typename Services::Path>& chunk) {
  using Integer = typename Services::Integer;
  using Symbol = typename Services::SymbolOnLines;
  std::unordered_map<typename Services::Path, std::size_t> rank;
  for (std::size_t i = 0; i < chunk.size(); ++i) rank.insert_or_assign(chunk[i], i);

  const auto ranges = services.line_ranges(spans, chunk);
  std::vector<Symbol> found = services.symbols_on_lines(
      field::db(repository), ranges, services.change_kinds(), services.symbols_per_row());
  _sort_by_key(found, [&](const Symbol& symbol) {
    return std::tuple<std::size_t, Integer, typename Services::SymbolId>(
        entry(rank, field::path(symbol)), field::start_line(symbol), field::id(symbol));
  });
  return found;
}

/// The symbols on the changed lines and their rows, side by side: by file in impact order, then by
/// line. The index is read a few files at a time, until the first row that the part refuses.
template <class Services>
std::pair<std::vector<typename Services::SymbolOnLines>, std::vector<typename Services::Row>>
_changed_symbols(Services& services, const typename Services::Repository& repository,
                 const std::vector<typename Services::FileChange>& files,
                 const typename Services::Spans& spans, const StatusByPath<Services>& status,
                 Part<Services>& part) {
  std::vector<typename Services::Path> paths;
  for (const auto& change : files) {
    const auto& path = field::path(change);
    const auto found = lookup(spans, path);
    if (found && truth(*found)) paths.push_back(path);
  }

  std::vector<typename Services::SymbolOnLines> shown;
  std::vector<typename Services::Row> rows;
  auto chunks = _chunks(paths);
  for (auto chunk = chunks.next(); !chunk.empty(); chunk = chunks.next()) {
    for (const auto& symbol : _symbols_of_chunk(services, repository, spans, chunk)) {
      auto row = _symbol_row<Services>(symbol, entry(status, field::path(symbol)));
      if (!part.take(row)) return {std::move(shown), std::move(rows)};
      shown.push_back(symbol);
      rows.push_back(std::move(row));
    }
  }
  return {std::move(shown), std::move(rows)};
}

}  // namespace context_delta
