#include "indexer/languages/c/c.h"

namespace context_delta::indexer::c {

Resolution resolve(const File&, const Facts& facts, World&) {
  Resolution made;
  made.qualified_names.resize(facts.definitions.size());
  return made;
}

}  // namespace context_delta::indexer::c
