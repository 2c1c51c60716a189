#include "indexer/languages/kit/guesses.h"

#include <algorithm>
#include <tuple>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::kit {
namespace {

/// How many folders lie between two paths.
std::size_t distance(std::string_view a, std::string_view b) {
  std::size_t common = 0;
  const std::size_t shorter = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < shorter && a[i] == b[i]; ++i) {
    if (a[i] == '/') common = i + 1;
  }
  const auto below = [&](std::string_view path) {
    return static_cast<std::size_t>(
        std::count(path.begin() + static_cast<std::ptrdiff_t>(common), path.end(), '/'));
  };
  return below(a) + below(b);
}

}  // namespace

bool accepts_arguments(const Candidate& candidate, std::int16_t arguments) {
  if (arguments == ANY_NUMBER) return true;
  return arguments >= candidate.least_arguments && arguments <= candidate.most_arguments;
}

int nearness(const Candidate& candidate, const Neighbourhood& neighbourhood) {
  if (candidate.file->id == neighbourhood.file->id) return 0;
  if (folder_of(candidate.file->path) == folder_of(neighbourhood.file->path)) return 1;
  if (neighbourhood.imported.contains(candidate.file->id)) return 2;
  return 3;
}

void add_guess(std::vector<Edge>& edges, const Guess& guess,
               std::span<const Candidate* const> fitting, const Neighbourhood& neighbourhood) {
  struct Ranked {
    bool other;
    int nearness;
    std::size_t distance;
    const Candidate* candidate;
  };
  std::vector<Ranked> ranked;
  ranked.reserve(fitting.size());
  for (const Candidate* candidate : fitting) {
    const bool favourite = guess.favourite != nullptr && *candidate == *guess.favourite;
    ranked.push_back({!favourite, nearness(*candidate, neighbourhood),
                      distance(candidate->file->path, neighbourhood.file->path), candidate});
  }
  const std::size_t listed = std::min(ranked.size(), MOST_GUESSES);
  const auto end_of_listed = ranked.begin() + static_cast<std::ptrdiff_t>(listed);
  const auto before = [](const Ranked& a, const Ranked& b) {
    return std::tie(a.other, a.nearness, a.distance, a.candidate->file->path,
                    a.candidate->definition) < std::tie(b.other, b.nearness, b.distance,
                                                        b.candidate->file->path,
                                                        b.candidate->definition);
  };
  std::partial_sort(ranked.begin(), end_of_listed, ranked.end(), before);
  for (std::size_t i = 0; i < listed; ++i) {
    edges.push_back({.reference = guess.reference,
                     .target = *ranked[i].candidate,
                     .proven = false,
                     .rule = guess.rule,
                     .why = guess.why,
                     .candidates = static_cast<std::int32_t>(fitting.size()),
                     .rank = static_cast<std::int32_t>(i)});
  }
}

void add_guess(std::vector<Edge>& edges, const Guess& guess, const std::vector<Candidate>& fitting,
               const Neighbourhood& neighbourhood) {
  std::vector<const Candidate*> pointers;
  pointers.reserve(fitting.size());
  for (const Candidate& candidate : fitting) pointers.push_back(&candidate);
  add_guess(edges, guess, pointers, neighbourhood);
}

}  // namespace context_delta::indexer::kit
