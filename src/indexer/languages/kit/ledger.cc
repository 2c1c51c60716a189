#include "indexer/languages/kit/ledger.h"

namespace context_delta::indexer::kit {

void Ledger::prove(std::int32_t reference, const Place& target, std::string_view rule) {
  edges_.push_back({.reference = reference, .target = target, .proven = true, .rule = rule});
}

void Ledger::dispatch(std::int32_t reference, const Candidate* declared,
                      std::span<const Candidate* const> others, std::string_view doubt) {
  std::vector<const Candidate*> fitting(others.begin(), others.end());
  if (declared != nullptr) fitting.push_back(declared);
  add_guess(edges_,
            {.reference = reference, .rule = "dispatch", .why = doubt, .favourite = declared},
            fitting, neighbourhood_);
}

void Ledger::namesakes(std::int32_t reference, std::span<const Candidate* const> fits,
                       std::string_view doubt, const Candidate* favourite) {
  add_guess(edges_,
            {.reference = reference, .rule = "namesake", .why = doubt, .favourite = favourite},
            fits, neighbourhood_);
}

}  // namespace context_delta::indexer::kit
