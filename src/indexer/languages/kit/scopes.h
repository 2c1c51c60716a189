#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What a file binds in which scope.
namespace context_delta::indexer::kit {

/// A definition, binding or import that gives a name its meaning in a scope.
struct Binder {
  enum class Kind : std::uint8_t { DEFINITION, BINDING, IMPORT };
  DefinitionIndex scope = NOWHERE;
  std::string_view name;
  Kind kind = Kind::DEFINITION;
  std::int32_t index = 0;  ///< in the list of its kind in Facts
};

/// The binders of one file by scope and name. Points into the facts it was made of.
class ScopeIndex {
 public:
  explicit ScopeIndex(const Interface& facts);

  /// In the order definitions, bindings, imports, each in the order of the text.
  std::span<const Binder> find(DefinitionIndex scope, std::string_view name) const;
  /// All of a scope, by name.
  std::span<const Binder> all(DefinitionIndex scope) const;

 private:
  std::vector<Binder> binders_;
};

/// The index of another file, kept in the world.
const ScopeIndex& scopes_of(const File& file, World& world);

const Definition& definition_at(const Interface& facts, DefinitionIndex index);

}  // namespace context_delta::indexer::kit
