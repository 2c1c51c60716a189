#include "indexer/languages/support/outline.h"

namespace context_delta::indexer::support {

Outline::Outline(const File& file, World& world)
    : file_(&file), world_(&world), facts_(&world.facts_by_name(file)) {
  scopes_ = &world.remember<ScopeIndex>("outline", file, [&] { return ScopeIndex(*facts_); });
}

std::span<const Binder> Outline::find(DefinitionIndex scope, std::string_view name) const {
  rely_on(name);
  return scopes_->find(scope, name);
}

const Definition& Outline::definition(DefinitionIndex index) const {
  const Definition& found = definition_at(*facts_, index);
  rely_on(found.name);
  return found;
}

const Binding& Outline::binding(const Binder& binder) const {
  return facts_->bindings[static_cast<std::size_t>(binder.index)];
}

const Import& Outline::import(const Binder& binder) const {
  return facts_->imports[static_cast<std::size_t>(binder.index)];
}

}  // namespace context_delta::indexer::support
