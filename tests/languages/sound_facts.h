#pragma once

#include <string>

#include "indexer/model/facts.h"

namespace context_delta::tests {

/// What must hold of facts whatever text they were made from: what does not; empty when all does.
inline std::string fault_of(const indexer::Facts& facts) {
  const auto count = static_cast<indexer::DefinitionIndex>(facts.definitions.size());
  indexer::DefinitionIndex index = 0;
  for (const indexer::Definition& each : facts.definitions) {
    if (each.parent >= index++) return "a parent comes after its child";
    if (each.first_line < 1 || each.last_line < each.first_line) return "lines out of order";
    if (each.signature.size() > 250) return "a long signature";
    if (each.least_arguments > each.most_arguments) return "more arguments than the most";
  }
  for (const auto& each : facts.references) {
    if (each.enclosing >= count) return "a reference within no definition";
  }
  for (const auto& each : facts.bindings) {
    if (each.scope >= count) return "a binding within no definition";
  }
  for (const auto& each : facts.imports) {
    if (each.scope >= count) return "an import within no definition";
  }
  const bool same = indexer::decode_facts(indexer::encode_facts(facts)) == facts;
  return same ? "" : "other facts once they are read back";
}

}  // namespace context_delta::tests
