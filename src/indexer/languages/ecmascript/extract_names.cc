#include <algorithm>

#include "indexer/languages/ecmascript/extractor.h"
#include "indexer/languages/kit/text.h"

/// What is left to do at the end of a text: names in values are told apart by the scopes that
/// declare them, which is known only now, for functions are declared before they are written.
namespace context_delta::indexer::ecmascript {
namespace {

constexpr int DEEPEST = 6;

std::string_view head_of(std::string_view value) {
  std::size_t end = 0;
  while (end < value.size() && is_name_byte(value[end])) ++end;
  return value.substr(0, end);
}

}  // namespace

Facts Extractor::finish() {
  settle_assignments();
  settle_references();
  settle_bindings();
  settle_results();
  return builder_.finish();
}

/// Variables that are assigned after their declaration are bound once more.
void Extractor::settle_assignments() {
  for (Assignment& each : assignments_) {
    const std::int32_t scope = scopes_.find(each.lexical, each.name);
    if (scope < 0) continue;
    Declaration& declaration = scopes_.declare(scope, each.name);
    const bool first =
        declaration.binding >= 0 && !declaration.more && declaration.definition == NOWHERE &&
        builder_.facts().bindings[static_cast<std::size_t>(declaration.binding)].value.empty() &&
        builder_.facts().bindings[static_cast<std::size_t>(declaration.binding)].kind !=
            Binding::Kind::PARAMETER;
    declaration.more = declaration.more || !first;
    Binding binding;
    binding.name = scopes_.spelled(scope, each.name);
    binding.scope = scopes_.definition(scope);
    binding.kind = binding.scope == NOWHERE && scopes_.is_own(scope) ? Binding::Kind::GLOBAL
                                                                     : Binding::Kind::LOCAL;
    binding.value = std::move(each.value);
    binding.line = each.line;
    binding.traits = first ? std::uint16_t{0} : static_cast<std::uint16_t>(REASSIGNED);
    bind(std::move(binding), each.lexical);
  }
}

/// Whether what `scope` declares can be looked up from `reader`.
bool Extractor::is_visible(DefinitionIndex scope, DefinitionIndex reader) {
  if (scope == NOWHERE) return true;
  while (reader != NOWHERE && reader != scope) reader = builder_.definition(reader).parent;
  return reader == scope;
}

/// A value written in `lexical` as it must be written to mean the same in `reader`: names that are
/// not visible there are replaced by what they are bound to.
std::string Extractor::settled(std::string_view value, std::int32_t lexical, DefinitionIndex reader,
                               int depth) {
  const std::string_view head = head_of(value);
  if (head.empty() || head == "this" || head == "super") return std::string(value);
  const std::int32_t scope = scopes_.find(lexical, head);
  if (scope < 0) return std::string(value);
  const std::string rest(value.substr(head.size()));
  if (is_visible(scopes_.definition(scope), reader)) return scopes_.spelled(scope, head) + rest;
  const Declaration declaration = *scopes_.declaration(scope, head);
  if (declaration.more || depth > DEEPEST) return "?";
  if (declaration.definition != NOWHERE) {
    return "=" + std::to_string(declaration.definition) + rest;
  }
  if (declaration.binding < 0) return "?";
  const auto index = static_cast<std::size_t>(declaration.binding);
  const Binding& binding = builder_.facts().bindings[index];
  if (!binding.type.empty()) {
    return binding.type.size() < kit::LONGEST_EXPRESSION ? "<" + binding.type + ">" + rest : "?";
  }
  const std::string made = settled(values_[index], binding_scopes_[index], reader, depth + 1);
  const bool fits = !made.empty() && made.size() + rest.size() < kit::LONGEST_EXPRESSION;
  return fits ? made + rest : "?";
}

void Extractor::settle_bindings() {
  std::vector<Binding>& bindings = builder_.facts().bindings;
  values_.reserve(bindings.size());
  for (const Binding& each : bindings) values_.push_back(each.value);
  for (std::size_t i = 0; i < bindings.size(); ++i) {
    Binding& each = bindings[i];
    const bool local = each.kind == Binding::Kind::LOCAL || each.kind == Binding::Kind::PARAMETER;
    each.value = settled(each.value, binding_scopes_[i], local ? each.scope : NOWHERE);
  }
}

void Extractor::settle_references() {
  std::vector<Reference>& references = builder_.facts().references;
  reference_scopes_.resize(references.size(), 0);
  for (std::size_t i = 0; i < references.size(); ++i) {
    Reference& each = references[i];
    if (!is_call(each.role)) continue;
    if (!each.receiver.empty()) {
      each.receiver = settled(each.receiver, reference_scopes_[i], each.enclosing);
      continue;
    }
    const std::int32_t scope = scopes_.find(reference_scopes_[i], each.name);
    if (scope < 0 || scopes_.is_own(scope)) continue;
    // A name of a block stands with its number: the receiver is what follows the name.
    each.receiver = scopes_.spelled(scope, each.name).substr(each.name.size());
  }
}

/// The type of a function that returns one expression only is that expression.
void Extractor::settle_results() {
  std::unordered_map<DefinitionIndex, std::string> results;
  for (const Result& each : results_) {
    if (each.value == "null") continue;
    std::string value = settled(each.value, each.lexical, NOWHERE);
    const auto [place, added] = results.try_emplace(each.function, value);
    if (!added && place->second != value) place->second = "?";
  }
  for (const auto& [function, value] : results) {
    Definition& definition = builder_.definition(function);
    const bool known = !definition.type.empty() || value.empty() || value.starts_with('?');
    if (!known) definition.type = "=" + value;
  }
  publish_objects();
}

/// The members of object literals inside functions are seen by other files only where the function
/// returns the object or a member holds it.
void Extractor::publish_objects() {
  std::unordered_set<std::string> published;
  for (const Definition& definition : builder_.facts().definitions) {
    if (definition.type.starts_with("={")) {
      published.insert(definition.type.substr(1, definition.type.find('}')));
    }
  }
  for (const Binding& each : builder_.facts().bindings) {
    const bool seen = each.kind == Binding::Kind::MEMBER && !each.name.starts_with('{');
    if (seen && each.value.starts_with('{')) {
      published.insert(each.value.substr(0, each.value.find('}') + 1));
    }
  }
  for (Binding& each : builder_.facts().bindings) {
    if (each.kind != Binding::Kind::MEMBER || !each.name.starts_with('{')) continue;
    const std::string object = each.name.substr(0, each.name.find('}') + 1);
    const bool in_function =
        each.scope != NOWHERE && kit::is_function_kind(builder_.definition(each.scope).kind);
    if (in_function && !published.contains(object)) {
      each.kind = Binding::Kind::LOCAL;
    } else if (each.value.starts_with('{')) {
      published.insert(each.value.substr(0, each.value.find('}') + 1));
    }
  }
}

}  // namespace context_delta::indexer::ecmascript
