#pragma once

#include <string>

#include "indexer/world/world.h"

/// Qualified names that tell definitions of several files apart.
namespace context_delta::indexer::c_family {

/// `qualified`, the name of a definition of `file`; with the file's path before it, `src/a.c:name`,
/// when another file defines the same name too: static functions, one program beside another.
std::string distinct_name(const File& file, const Facts& facts, DefinitionIndex definition,
                          std::string qualified, World& world);

}  // namespace context_delta::indexer::c_family
