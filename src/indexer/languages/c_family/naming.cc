#include "indexer/languages/c_family/naming.h"

#include <algorithm>

#include "indexer/languages/c_family/includes.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/scopes.h"

namespace context_delta::indexer::c_family {
namespace {

/// A prototype that other files see names what one of them defines.
bool declares_elsewhere(std::uint16_t traits) {
  return (traits & DECLARATION) != 0 && (traits & LOCAL_LINKAGE) == 0;
}

}  // namespace

std::string distinct_name(const File& file, const Facts& facts, DefinitionIndex definition,
                          std::string qualified, World& world) {
  const Definition& own = kit::definition_at(facts, definition);
  if (declares_elsewhere(own.traits) || own.kind == Kind::NAMESPACE) return qualified;
  const std::string container = container_name(facts, definition);
  const std::vector<Candidate>& namesakes = world.definitions(own.name);
  const bool twin =
      std::any_of(namesakes.begin(), namesakes.end(), [&](const Candidate& candidate) {
        return candidate.file->id != file.id && candidate.container == container &&
               candidate.kind != Kind::NAMESPACE && !declares_elsewhere(candidate.traits) &&
               is_family(candidate.file->language);
      });
  return twin ? file.path + ":" + qualified : qualified;
}

}  // namespace context_delta::indexer::c_family
