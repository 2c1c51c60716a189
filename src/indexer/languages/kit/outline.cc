#include "indexer/languages/kit/outline.h"

#include <algorithm>

namespace context_delta::indexer::kit {

Outline::Outline(const File& file, World& world)
    : said_(file.path), world_(&world), facts_(&world.facts_by_name(file)) {
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

const Definition* Outline::definition_if(DefinitionIndex index) const {
  const auto count = static_cast<DefinitionIndex>(facts_->definitions.size());
  return index < 0 || index >= count ? nullptr : &definition(index);
}

std::string Outline::container(DefinitionIndex index) const {
  // Each look is recorded.
  for (DefinitionIndex at = index; at != NOWHERE;) at = definition(at).parent;
  return container_name(*facts_, index);
}

std::vector<std::string_view> Outline::members_of_interface(DefinitionIndex interface) const {
  rely_on(definition_at(*facts_, interface).name);
  std::vector<std::string_view> names;
  for (std::size_t i = static_cast<std::size_t>(interface) + 1; i < facts_->definitions.size();
       ++i) {
    const Definition& each = facts_->definitions[i];
    if (each.parent < interface) break;
    if (each.parent == interface) names.push_back(each.name);
  }
  return names;
}

const Binding& Outline::binding(const Binder& binder) const { return binding(binder.index); }

std::vector<std::string_view> Outline::type_parameters(DefinitionIndex definition) const {
  rely_on(definition_at(*facts_, definition).name);
  std::vector<std::int32_t> indexes;
  for (const Binder& binder : scopes_->all(definition)) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    if ((binding(binder).traits & GENERIC) != 0) indexes.push_back(binder.index);
  }
  std::sort(indexes.begin(), indexes.end());
  std::vector<std::string_view> names;
  for (const std::int32_t index : indexes) names.push_back(binding(index).name);
  return names;
}

const Import& Outline::import(const Binder& binder) const {
  return facts_->imports[static_cast<std::size_t>(binder.index)];
}

}  // namespace context_delta::indexer::kit
