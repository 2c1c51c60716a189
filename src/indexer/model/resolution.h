#pragma once

#include <cstdint>
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
};

struct Resolution {
  std::vector<std::string> qualified_names;  ///< of each definition, in the language's notation
  std::vector<Edge> edges;                   ///< ordered by reference, then rank
  std::string module_name;  ///< qualified name of the file itself; empty where files have none
};

}  // namespace context_delta::indexer
