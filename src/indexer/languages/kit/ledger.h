#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "indexer/languages/kit/guesses.h"
#include "indexer/model/resolution.h"
#include "indexer/world/world.h"

/// The edges of a file as its rules find them. Rules and doubts are those of model/rules.h.
namespace context_delta::indexer::kit {

class Ledger {
 public:
  explicit Ledger(const Neighbourhood& neighbourhood) : neighbourhood_(neighbourhood) {}

  /// The reference names this definition and nothing else.
  void prove(std::int32_t reference, const Place& target, std::string_view rule);

  /// The receiver's type declares the method, and any of `others`, which override or implement it,
  /// may run in its place. All are kept, however many.
  void dispatch(std::int32_t reference, const Candidate* declared,
                std::span<const Candidate* const> others, std::string_view doubt);

  /// The reference may mean any of these definitions of its name. `favourite`: the one that the
  /// doubt fell upon, if any; it must be among them.
  void namesakes(std::int32_t reference, std::span<const Candidate* const> fits,
                 std::string_view doubt, const Candidate* favourite = nullptr);

  /// An edge beside those of a reference: the constructor that a call of a class runs.
  void add(const Edge& edge) { edges_.push_back(edge); }

  /// Hands all edges over, in the order in which they were found.
  void write(Resolution& resolution);

 private:
  std::int32_t number_of(const Dispatch& dispatch);

  const Neighbourhood& neighbourhood_;
  std::vector<Edge> edges_;
  std::vector<Dispatch> dispatches_;
  std::map<std::vector<std::pair<std::int64_t, DefinitionIndex>>, std::int32_t> numbers_;
};

}  // namespace context_delta::indexer::kit
