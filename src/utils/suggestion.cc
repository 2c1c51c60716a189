#include "utils/suggestion.h"

#include <algorithm>
#include <vector>

namespace context_delta {
namespace {

/// Insertions, deletions, replacements and swaps of neighbours that lead from `a` to `b`.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

}  // namespace

std::optional<std::string_view> nearest(std::string_view word,
                                        std::span<const std::string_view> names) {
  constexpr std::size_t LONGEST = 64;
  if (word.size() > LONGEST) return std::nullopt;
  std::optional<std::string_view> found;
  std::size_t least = 0;
  for (const std::string_view name : names) {
    const std::size_t distance = edit_distance(word, name);
    if (distance * 3 > name.size() || (found && distance >= least)) continue;
    found = name;
    least = distance;
  }
  return found;
}

std::string did_you_mean(std::string_view word, std::span<const std::string_view> names) {
  const std::optional<std::string_view> name = nearest(word, names);
  return name ? "; did you mean " + std::string(*name) + "?" : "";
}

}  // namespace context_delta
