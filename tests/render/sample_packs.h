#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "utils/json.h"

/// Packs of every shape, as the component would make them.
namespace context_delta::test {

json::Mapping full_pack();
json::Mapping truncated_pack();
json::Mapping nothing_changed_pack();
json::Mapping error_pack();
/// A pack whose every text tries to break out of its place.
json::Mapping hostile_pack();

/// `pack` with other texts and numbers in the places of its own, each of these over and over.
json::Mapping refilled(const json::Mapping& pack, const std::vector<std::string>& texts,
                       const std::vector<std::int64_t>& numbers);

}  // namespace context_delta::test
