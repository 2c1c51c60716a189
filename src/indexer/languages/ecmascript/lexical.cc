#include "indexer/languages/ecmascript/lexical.h"

namespace context_delta::indexer::ecmascript {

namespace {

/// How many scopes outwards a name is looked for.
constexpr int DEEPEST = 400;

}  // namespace

std::int32_t LexicalScopes::open(std::int32_t parent, DefinitionIndex definition, bool own,
                                 bool function) {
  Scope made;
  made.parent = parent;
  made.definition = definition;
  made.own = own;
  made.function = function;
  made.number = own ? 0 : ++numbers_[definition];
  scopes_.push_back(std::move(made));
  return static_cast<std::int32_t>(scopes_.size()) - 1;
}

Declaration& LexicalScopes::declare(std::int32_t scope, std::string_view name) {
  return scopes_[static_cast<std::size_t>(scope)].names[std::string(name)];
}

std::int32_t LexicalScopes::find(std::int32_t scope, std::string_view name) const {
  const std::string key(name);
  for (int step = 0; scope >= 0 && step < DEEPEST; ++step) {
    if (at(scope).names.contains(key)) return scope;
    scope = at(scope).parent;
  }
  return -1;
}

const Declaration* LexicalScopes::declaration(std::int32_t scope, std::string_view name) const {
  const auto found = at(scope).names.find(std::string(name));
  return found == at(scope).names.end() ? nullptr : &found->second;
}

std::int32_t LexicalScopes::function_scope(std::int32_t scope) const {
  while (!at(scope).function && at(scope).parent >= 0) scope = at(scope).parent;
  return scope;
}

std::string LexicalScopes::spelled(std::int32_t scope, std::string_view name) const {
  std::string text(name);
  if (!at(scope).own) {
    text += "'" + std::to_string(at(scope).definition + 1) + "_" + std::to_string(at(scope).number);
  }
  return text;
}

}  // namespace context_delta::indexer::ecmascript
