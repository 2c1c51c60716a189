#pragma once

#include <string_view>
#include <vector>

#include "indexer/model/place.h"
#include "indexer/world/keys.h"

/// Which answers of a World an update changes.
namespace context_delta::indexer {

/// Adds the keys of names whose definitions differ between two versions of a file's facts in
/// anything that a rule may decide by, and the key of its interface when that differs. Returns,
/// for each definition before, its index after, or NOWHERE when it has no counterpart.
std::vector<DefinitionIndex> compare_facts(const File& file, const Interface& before,
                                           const Interface& after, StaleKeys& stale);

/// Adds the keys of everything that a file's coming or going changes.
void add_whole_file(const File& file, const Interface& facts, StaleKeys& stale);

}  // namespace context_delta::indexer
