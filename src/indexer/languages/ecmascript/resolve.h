#pragma once

#include "indexer/model/facts.h"
#include "indexer/model/resolution.h"
#include "indexer/world/world.h"

namespace context_delta::indexer::ecmascript {

/// Ties references to definitions by scopes, imports, classes and types. Names are
/// `folder/file.Class.method`: the path without its suffix, then the local name.
Resolution resolve(const File& file, const Facts& facts, World& world);

}  // namespace context_delta::indexer::ecmascript
