#include "indexer/languages/kit/ledger.h"

#include <algorithm>
#include <tuple>

namespace context_delta::indexer::kit {
namespace {

bool by_path(const Place& a, const Place& b) {
  return std::tie(a.file->path, a.definition) < std::tie(b.file->path, b.definition);
}

}  // namespace

void Ledger::prove(std::int32_t reference, const Place& target, std::string_view rule) {
  edges_.push_back({.reference = reference, .target = target, .proven = true, .rule = rule});
}

void Ledger::dispatch(std::int32_t reference, const Candidate* declared,
                      std::span<const Candidate* const> others, std::string_view doubt) {
  Dispatch targets;
  if (declared != nullptr) targets.push_back(*declared);
  for (const Candidate* each : others) {
    if (declared == nullptr || !(*each == *declared)) targets.push_back(*each);
  }
  if (targets.empty()) return;
  std::sort(targets.begin() + (declared == nullptr ? 0 : 1), targets.end(), by_path);
  targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
  Edge edge = {.reference = reference,
               .target = targets.front(),
               .proven = false,
               .rule = "dispatch",
               .why = doubt,
               .candidates = static_cast<std::int32_t>(targets.size())};
  if (targets.size() > 1) edge.dispatch = number_of(targets);
  edges_.push_back(edge);
}

std::int32_t Ledger::number_of(const Dispatch& dispatch) {
  std::vector<std::pair<std::int64_t, DefinitionIndex>> key;
  for (const Place& each : dispatch) key.emplace_back(each.file->id, each.definition);
  const auto [place, added] =
      numbers_.try_emplace(std::move(key), static_cast<std::int32_t>(dispatches_.size()));
  if (added) dispatches_.push_back(dispatch);
  return place->second;
}

void Ledger::write(Resolution& resolution) {
  resolution.edges = std::move(edges_);
  resolution.dispatches = std::move(dispatches_);
}

void Ledger::namesakes(std::int32_t reference, std::span<const Candidate* const> fits,
                       std::string_view doubt, const Candidate* favourite) {
  add_guess(edges_,
            {.reference = reference, .rule = "namesake", .why = doubt, .favourite = favourite},
            fits, neighbourhood_);
}

}  // namespace context_delta::indexer::kit
