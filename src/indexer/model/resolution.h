#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/model/place.h"

/// What the rules found out about one file in the light of the repository.
namespace context_delta::indexer {

/// The rule of the edge to the constructor that a call of a class runs, where the language calls
/// classes: a second end of a call whose first is the class.
inline constexpr std::string_view CONSTRUCTION = "construction";

/// A reference tied to a definition.
struct Edge {
  std::int32_t reference = 0;  ///< index in Facts::references of the file resolved
  Place target;
  bool proven = false;
  // `rule` and `why` are literals: the index stores each text once, for all edges that have it.
  /// Proven: the rule that proved it ("same-file", "import", "self", ...). Guessed: how the caller
  /// may be tied ("namesake", "dispatch").
  std::string_view rule = {};
  /// Guessed: why it is not proven, as a clause without a full stop ("the receiver's type is not
  /// known"). Empty when proven.
  std::string_view why = {};
  std::int32_t candidates = 1;  ///< guessed: how many definitions the guess was among
  std::int32_t rank = 0;        ///< guessed: 0 is the likeliest of them
  std::int32_t dispatch = -1;   ///< index in Resolution::dispatches, in place of a target
};

/// Definitions any of which may run for a call, because they override or implement what the
/// receiver's type declares: the declared one first, if it is one of them, then by path.
using Dispatch = std::vector<Place>;

struct Resolution {
  std::vector<std::string> qualified_names;  ///< of each definition, in the language's notation
  std::vector<Edge> edges;                   ///< ordered by reference, then rank
  std::vector<Dispatch> dispatches;          ///< each once, however many calls it stands for
  std::string module_name;  ///< qualified name of the file itself; empty where files have none
};

/// Where an edge leads to.
inline std::span<const Place> targets(const Resolution& resolution, const Edge& edge) {
  if (edge.dispatch < 0) return {&edge.target, 1};
  return resolution.dispatches[static_cast<std::size_t>(edge.dispatch)];
}

}  // namespace context_delta::indexer
