#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/scopes.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

namespace context_delta::indexer::kit {

/// What a file says, name by name. Of another file every look is recorded as a dependency on what
/// that file says of the one name, so that a change of its other names leaves the looker alone.
class Outline {
 public:
  /// Of the file that is resolved: nothing is recorded.
  Outline(const Interface& facts, const ScopeIndex& scopes) : facts_(&facts), scopes_(&scopes) {}
  /// Of another file. Valid until the next record starts.
  Outline(const File& file, World& world);

  /// What gives a name its meaning in one scope; see ScopeIndex::find.
  std::span<const Binder> find(DefinitionIndex scope, std::string_view name) const;
  const Definition& definition(DefinitionIndex index) const;
  /// The same; null when the file has no such definition.
  const Definition* definition_if(DefinitionIndex index) const;
  /// See container_name.
  std::string container(DefinitionIndex index) const;
  /// The names of the definitions directly in an interface, in the order of the text.
  std::vector<std::string_view> members_of_interface(DefinitionIndex interface) const;
  /// Of a binder that find() gave.
  const Binding& binding(const Binder& binder) const;
  const Import& import(const Binder& binder) const;
  /// Of the number that a binder gave.
  const Binding& binding(std::int32_t index) const {
    return facts_->bindings[static_cast<std::size_t>(index)];
  }
  /// An expression of what find() gave: whoever looked has recorded it with the binding.
  const Expression& expression(ExpressionIndex index) const {
    return facts_->expressions[static_cast<std::size_t>(index)];
  }
  /// The GENERIC bindings of a definition by name, in the order of the text.
  std::vector<std::string_view> type_parameters(DefinitionIndex definition) const;
  /// Calls `visit(import)` for each import of `name` under no other name, in the order of the text,
  /// until it returns true. The name `*` is all that a module has.
  template <class Visit>
  void each_import(std::string_view name, Visit visit) const {
    rely_on(name);
    for (const Import& import : facts_->imports) {
      if (import.name == name && bound_name(import) == name && visit(import)) return;
    }
  }
  /// The same for each import that gives `name` a meaning, in whatever scope.
  template <class Visit>
  void each_import_as(std::string_view name, Visit visit) const {
    rely_on(name);
    for (const Import& import : facts_->imports) {
      if (bound_name(import) == name && visit(import)) return;
    }
  }

 private:
  void rely_on(std::string_view name) const {
    if (world_ != nullptr) world_->rely_on(said_, name);
  }

  SaidKeys said_;
  World* world_ = nullptr;
  const Interface* facts_;
  const ScopeIndex* scopes_;
};

}  // namespace context_delta::indexer::kit
