#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/model/facts.h"

/// Which declaration a name means: blocks and functions without a name of their own declare names
/// too, and facts know definitions alone.
namespace context_delta::indexer::ecmascript {

/// What one scope declares under a name.
struct Declaration {
  std::int32_t binding = -1;             ///< in Facts::bindings; -1: none
  DefinitionIndex definition = NOWHERE;  ///< a function or class; NOWHERE: none
  bool more = false;                     ///< declared or assigned again
};

class LexicalScopes {
 public:
  /// The scope of the module has index 0.
  LexicalScopes() { scopes_.emplace_back(); }

  /// Opens a scope inside `parent` for a block of `definition`. `own`: it is the definition's
  /// outermost scope, whose names facts hold as they are. `function`: `var` is declared in it.
  std::int32_t open(std::int32_t parent, DefinitionIndex definition, bool own, bool function);

  /// What `scope` declares under `name`, made on the first call.
  Declaration& declare(std::int32_t scope, std::string_view name);

  /// The innermost scope from `scope` outwards that declares the name; -1 when none does.
  std::int32_t find(std::int32_t scope, std::string_view name) const;
  const Declaration* declaration(std::int32_t scope, std::string_view name) const;

  /// The scope in which a `var` or a function parameter of `scope` is declared.
  std::int32_t function_scope(std::int32_t scope) const;
  bool is_function(std::int32_t scope) const { return at(scope).function; }
  bool is_own(std::int32_t scope) const { return at(scope).own; }
  DefinitionIndex definition(std::int32_t scope) const { return at(scope).definition; }

  /// How facts spell a name that `scope` declares: itself, or with the number of the block.
  std::string spelled(std::int32_t scope, std::string_view name) const;

 private:
  struct Scope {
    std::int32_t parent = -1;
    DefinitionIndex definition = NOWHERE;
    bool own = true;
    bool function = true;
    std::int32_t number = 0;  ///< among the scopes of the definition
    std::unordered_map<std::string, Declaration> names;
  };
  const Scope& at(std::int32_t scope) const { return scopes_[static_cast<std::size_t>(scope)]; }

  std::vector<Scope> scopes_;
  std::unordered_map<DefinitionIndex, std::int32_t> numbers_;
};

}  // namespace context_delta::indexer::ecmascript
