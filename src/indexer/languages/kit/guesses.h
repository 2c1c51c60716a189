#pragma once

#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "indexer/model/resolution.h"
#include "indexer/world/world.h"

/// Guesses: a call tied to the namesakes that it may mean, the likeliest first.
namespace context_delta::indexer::kit {

/// How many namesakes of one call are listed at most.
inline constexpr std::size_t MOST_GUESSES = 5;

/// What ranks namesakes for one file.
struct Neighbourhood {
  const File* file = nullptr;
  std::unordered_set<std::int64_t> imported;  ///< ids of the files that it imports
};

/// One call that no rule could prove.
struct Guess {
  std::int32_t reference = 0;
  std::string_view rule = "namesake";
  std::string_view why = {};
  /// Listed before all others, such as the definition that a doubt fell upon.
  const Candidate* favourite = nullptr;
};

/// Whether a call with this many arguments fits the candidate.
bool accepts_arguments(const Candidate& candidate, std::int16_t arguments);

/// Appends the edges of a guess among `fitting`: same file, then same folder, then imported files,
/// then the rest; within each, fewer folders apart first, then by path and definition. No edge when
/// nothing fits.
void add_guess(std::vector<Edge>& edges, const Guess& guess,
               std::span<const Candidate* const> fitting, const Neighbourhood& neighbourhood);
void add_guess(std::vector<Edge>& edges, const Guess& guess, const std::vector<Candidate>& fitting,
               const Neighbourhood& neighbourhood);

/// 0 same file, 1 same folder, 2 imported, 3 the rest.
int nearness(const Candidate& candidate, const Neighbourhood& neighbourhood);

}  // namespace context_delta::indexer::kit
