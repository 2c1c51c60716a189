#pragma once

#include "utils/json.h"

/// Packs of every shape, as the component would make them.
namespace context_delta::test {

json::Mapping full_pack();
json::Mapping truncated_pack();
json::Mapping nothing_changed_pack();
json::Mapping error_pack();
/// A pack whose every text tries to break out of its place.
json::Mapping hostile_pack();

}  // namespace context_delta::test
