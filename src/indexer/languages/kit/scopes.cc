#include "indexer/languages/kit/scopes.h"

#include <algorithm>
#include <tuple>

namespace context_delta::indexer::kit {
namespace {

auto key(const Binder& binder) { return std::tie(binder.scope, binder.name); }

}  // namespace

ScopeIndex::ScopeIndex(const Interface& facts) {
  binders_.reserve(facts.definitions.size() + facts.bindings.size() + facts.imports.size());
  std::int32_t index = 0;
  for (const Definition& definition : facts.definitions) {
    binders_.push_back({definition.parent, definition.name, Binder::Kind::DEFINITION, index++});
  }
  index = 0;
  for (const Binding& binding : facts.bindings) {
    binders_.push_back({binding.scope, binding.name, Binder::Kind::BINDING, index++});
  }
  index = 0;
  for (const Import& import : facts.imports) {
    binders_.push_back({import.scope, bound_name(import), Binder::Kind::IMPORT, index++});
  }
  std::stable_sort(binders_.begin(), binders_.end(),
                   [](const Binder& a, const Binder& b) { return key(a) < key(b); });
}

std::span<const Binder> ScopeIndex::find(DefinitionIndex scope, std::string_view name) const {
  const Binder wanted = {scope, name, {}, 0};
  const auto [first, last] =
      std::equal_range(binders_.begin(), binders_.end(), wanted,
                       [](const Binder& a, const Binder& b) { return key(a) < key(b); });
  return {first, last};
}

std::span<const Binder> ScopeIndex::all(DefinitionIndex scope) const {
  const auto first =
      std::lower_bound(binders_.begin(), binders_.end(), scope,
                       [](const Binder& a, DefinitionIndex wanted) { return a.scope < wanted; });
  auto last = first;
  while (last != binders_.end() && last->scope == scope) ++last;
  return {first, last};
}

const ScopeIndex& scopes_of(const File& file, World& world) {
  return world.remember<ScopeIndex>("scopes", file, [&] { return ScopeIndex(world.facts(file)); });
}

const Definition& definition_at(const Interface& facts, DefinitionIndex index) {
  return facts.definitions[static_cast<std::size_t>(index)];
}

}  // namespace context_delta::indexer::kit
