#include "indexer/model/facts.h"

namespace context_delta::indexer {
namespace {

/// FNV-1a over 64 bits; every item is followed by its length, so that items do not run together.
class Hash {
 public:
  void add(std::string_view text) {
    for (const char byte : text) add_byte(static_cast<unsigned char>(byte));
    add(static_cast<std::int64_t>(text.size()));
  }
  void add(std::int64_t number) {
    for (int shift = 0; shift < 64; shift += 8) {
      add_byte(static_cast<unsigned char>(static_cast<std::uint64_t>(number) >> shift));
    }
  }
  std::uint64_t value() const { return value_; }

 private:
  void add_byte(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3u; }
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

/// `scope`: what stands for the enclosing definition.
void add_definition(Hash& hash, const Definition& definition, std::int64_t scope) {
  hash.add(definition.name);
  hash.add(static_cast<std::int64_t>(definition.kind));
  hash.add(scope);
  hash.add(definition.signature);
  hash.add(definition.scope);
  for (const std::string& base : definition.bases) hash.add(base);
  hash.add(static_cast<std::int64_t>(definition.bases.size()));
  hash.add(definition.type);
  for (const std::string& parameter : definition.parameters) hash.add(parameter);
  hash.add(static_cast<std::int64_t>(definition.parameters.size()));
  hash.add(definition.least_arguments);
  hash.add(definition.most_arguments);
  hash.add(definition.traits);
}

bool is_type_parameter(const Binding& binding) {
  return binding.kind == Binding::Kind::MEMBER && (binding.traits & GENERIC) != 0 &&
         binding.scope != NOWHERE;
}

/// A hash of each expression as a whole. Variables count by name: what they are is the function's
/// own business. `definition_number` says what stands for a definition.
template <class DefinitionNumber>
std::vector<std::int64_t> expression_hashes(const Interface& facts,
                                            DefinitionNumber definition_number) {
  std::vector<std::int64_t> hashes;
  hashes.reserve(facts.expressions.size());
  for (const Expression& each : facts.expressions) {
    Hash hash;
    hash.add(static_cast<std::int64_t>(each.kind));
    hash.add(each.name);
    const bool is_definition = each.kind == ExpressionKind::DEFINITION;
    if (is_definition) hash.add(definition_number(each.number));
    if (!is_definition && each.kind != ExpressionKind::LOCAL) hash.add(each.number);
    for (const ExpressionIndex operand : each.operands) {
      hash.add(hashes[static_cast<std::size_t>(operand)]);
    }
    hash.add(static_cast<std::int64_t>(each.operands.size()));
    hashes.push_back(static_cast<std::int64_t>(hash.value()));
  }
  return hashes;
}

void add_binding(Hash& hash, const Binding& binding, std::int64_t scope,
                 const std::vector<std::int64_t>& expressions) {
  hash.add(binding.name);
  hash.add(static_cast<std::int64_t>(binding.kind));
  hash.add(scope);
  hash.add(binding.type);
  hash.add(binding.value);
  hash.add(binding.traits);
  const ExpressionIndex value = binding.value_expression;
  hash.add(value == NO_EXPRESSION ? 0 : expressions[static_cast<std::size_t>(value)]);
}

void add_import(Hash& hash, const Import& import, std::int64_t scope) {
  hash.add(import.module);
  hash.add(import.name);
  hash.add(import.alias);
  hash.add(scope);
  hash.add(import.traits);
}

/// Numbers for scopes that do not depend on other definitions: of the names around them, and which
/// of several namesakes in one scope each is.
class ScopeNumbers {
 public:
  explicit ScopeNumbers(const Interface& facts) {
    std::unordered_map<std::int64_t, std::int64_t> namesakes;
    for (const Definition& definition : facts.definitions) {
      Hash hash;
      hash.add(of(definition.parent));
      hash.add(definition.scope);
      hash.add(definition.name);
      const std::int64_t named = static_cast<std::int64_t>(hash.value());
      hash.add(namesakes[named]++);
      numbers_.push_back(static_cast<std::int64_t>(hash.value()));
    }
  }
  std::int64_t of(DefinitionIndex scope) const {
    const bool exists = scope >= 0 && static_cast<std::size_t>(scope) < numbers_.size();
    return exists ? numbers_[static_cast<std::size_t>(scope)] : 0;
  }

 private:
  std::vector<std::int64_t> numbers_;
};

}  // namespace

std::uint64_t interface_hash(const Interface& facts) {
  Hash hash;
  for (const Definition& definition : facts.definitions) {
    add_definition(hash, definition, definition.parent);
  }
  hash.add(static_cast<std::int64_t>(facts.definitions.size()));
  const auto expressions = expression_hashes(facts, [](std::int32_t number) { return number; });
  for (const Binding& binding : facts.bindings) {
    add_binding(hash, binding, binding.scope, expressions);
  }
  hash.add(-1);
  hash.add(static_cast<std::int64_t>(imports_hash(facts)));
  for (const std::string& name : facts.exports) hash.add(name);
  hash.add(static_cast<std::int64_t>(facts.exports.size()));
  return hash.value();
}

std::uint64_t imports_hash(const Interface& facts) {
  Hash hash;
  for (const Import& import : facts.imports) add_import(hash, import, import.scope);
  return hash.value();
}

std::unordered_map<std::string_view, std::uint64_t> name_hashes(const Interface& facts) {
  const ScopeNumbers scopes(facts);
  std::unordered_map<std::string_view, Hash> hashes;
  for (const Definition& each : facts.definitions) {
    add_definition(hashes[each.name], each, scopes.of(each.parent));
    if (each.parent == NOWHERE) continue;
    const Definition& parent = facts.definitions[static_cast<std::size_t>(each.parent)];
    if (parent.kind == Kind::INTERFACE) hashes[parent.name].add(each.name);
  }
  const auto expressions =
      expression_hashes(facts, [&](std::int32_t number) { return scopes.of(number); });
  for (const Binding& each : facts.bindings) {
    add_binding(hashes[each.name], each, scopes.of(each.scope), expressions);
    if (is_type_parameter(each)) {
      Hash& owner = hashes[facts.definitions[static_cast<std::size_t>(each.scope)].name];
      owner.add(each.name);
      owner.add(scopes.of(each.scope));
    }
  }
  for (const Import& each : facts.imports) {
    add_import(hashes[bound_name(each)], each, scopes.of(each.scope));
  }
  std::unordered_map<std::string_view, std::uint64_t> values;
  for (const auto& [name, hash] : hashes) values.emplace(name, hash.value());
  return values;
}

}  // namespace context_delta::indexer
