#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/fields.h"

namespace context_delta {

/// −references, −symbols, −changed lines, path: ascending, the files most of the index depends on
/// come first.
template <class Services>
using ImpactKey = std::tuple<typename Services::Integer, typename Services::Integer,
                             typename Services::Integer, typename Services::Path>;

/// The files most of the index depends on first: references, then symbols, then lines. `impact` is
/// the file's record, or null when the index has none.
template <class Services, class FileImpact>
ImpactKey<Services> _impact_order(const typename Services::FileChange& change,
                                  const FileImpact& impact) {
  using Integer = typename Services::Integer;
  Integer references(0);
  Integer symbols(0);
  if (impact) {
    references = field::references(*impact);
    symbols = field::symbols(*impact);
  }
  return {-references, -symbols, -(field::additions(change) + field::deletions(change)),
          field::path(change)};
}

/// The index's language of a changed file; null when it knows the file or its language not.
template <class Services>
typename Services::Language _language(const typename Services::Impact& impact,
                                      const typename Services::FileChange& change) {
  const auto found = lookup(impact, field::path(change));
  if (!found) return typename Services::Language();
  return field::language(*found);
}

/// The changed files that pass the source filter, in the order of the comparison.
template <class Services>
std::vector<typename Services::FileChange> _kept_files(
    Services& services, const typename Services::BranchChanges& changes,
    const typename Services::Impact& impact, const typename Services::Flag& source_only) {
  std::vector<typename Services::FileChange> files;
  for (const auto& change : field::files(changes)) {
    if (truth(source_only)) {
      const auto language = _language<Services>(impact, change);
      if (!services.is_source_path(field::path(change), language)) continue;
    }
    files.push_back(change);
  }
  return files;
}

/// Sorts indices, stably. Unlike std::stable_sort it stays within bounds when the order contradicts
/// itself, as that of a host's values may.
template <class Less>
void _merge_sort(std::vector<std::size_t>& indices, const Less& less) {
  std::vector<std::size_t> merged(indices.size());
  for (std::size_t run = 1; run < indices.size(); run *= 2) {
    auto output = merged.begin();
    for (std::size_t start = 0; start < indices.size(); start += 2 * run) {
      const auto at = [&](std::size_t index) {
        return indices.cbegin() + static_cast<std::ptrdiff_t>(std::min(index, indices.size()));
      };
      output = std::merge(at(start), at(start + run), at(start + run), at(start + 2 * run), output,
                          less);
    }
    indices.swap(merged);
  }
}

/// Sorts by keys made once for each item, in order; items of equal keys keep their order.
template <class Item, class MakeKey>
void _sort_by_key(std::vector<Item>& items, const MakeKey& make_key) {
  using Key = decltype(make_key(items.front()));
  std::vector<Key> keys;
  keys.reserve(items.size());
  for (const Item& item : items) keys.push_back(make_key(item));

  std::vector<std::size_t> order(items.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  _merge_sort(order, [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  std::vector<Item> sorted;
  sorted.reserve(items.size());
  for (const std::size_t index : order) sorted.push_back(std::move(items[index]));
  items = std::move(sorted);
}

template <class Services>
void _sort_by_impact(std::vector<typename Services::FileChange>& files,
                     const typename Services::Impact& impact) {
  _sort_by_key(files, [&](const typename Services::FileChange& change) {
    return _impact_order<Services>(change, lookup(impact, field::path(change)));
  });
}

template <class Services, class Files>
std::vector<typename Services::Path> _paths(const Files& files) {
  std::vector<typename Services::Path> paths;
  for (const auto& change : files) paths.push_back(field::path(change));
  return paths;
}

}  // namespace context_delta
