#include "indexer/model/facts.h"

#include <array>

namespace context_delta::indexer {
namespace {

constexpr std::array<std::string_view, 13> KIND_NAMES = {
    "namespace", "class",    "struct", "interface",   "trait",    "enum", "union",
    "type",      "function", "method", "constructor", "variable", "macro"};

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

bool is_inside_function(const Facts& facts, const Binding& binding) {
  if (binding.scope == NOWHERE) return false;
  if (binding.kind != Binding::Kind::PARAMETER && binding.kind != Binding::Kind::LOCAL)
    return false;
  const Kind scope = facts.definitions[static_cast<std::size_t>(binding.scope)].kind;
  return scope == Kind::FUNCTION || scope == Kind::METHOD || scope == Kind::CONSTRUCTOR;
}

bool is_type_parameter(const Binding& binding) {
  return binding.kind == Binding::Kind::MEMBER && (binding.traits & GENERIC) != 0 &&
         binding.scope != NOWHERE;
}

void add_binding(Hash& hash, const Binding& binding, std::int64_t scope) {
  hash.add(binding.name);
  hash.add(static_cast<std::int64_t>(binding.kind));
  hash.add(scope);
  hash.add(binding.type);
  hash.add(binding.value);
  hash.add(binding.traits);
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
  explicit ScopeNumbers(const Facts& facts) {
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
    return scope == NOWHERE ? 0 : numbers_[static_cast<std::size_t>(scope)];
  }

 private:
  std::vector<std::int64_t> numbers_;
};

void append_with_dots(std::string& text, std::string_view name) {
  if (name.empty()) return;
  if (!text.empty()) text += '.';
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool separator = name.substr(i, 2) == "::";
    text += separator ? '.' : name[i];
    i += separator ? 1 : 0;
  }
}

}  // namespace

std::string_view kind_name(Kind kind) { return KIND_NAMES[static_cast<std::size_t>(kind)]; }

std::string local_name(const Facts& facts, DefinitionIndex definition) {
  std::vector<const Definition*> chain;
  for (DefinitionIndex i = definition; i != NOWHERE; i = chain.back()->parent) {
    chain.push_back(&facts.definitions[static_cast<std::size_t>(i)]);
  }
  std::string text;
  for (auto part = chain.rbegin(); part != chain.rend(); ++part) {
    append_with_dots(text, (*part)->scope);
    append_with_dots(text, (*part)->name);
  }
  return text;
}

std::string container_name(const Facts& facts, DefinitionIndex definition) {
  const Definition& own = facts.definitions[static_cast<std::size_t>(definition)];
  std::string text = local_name(facts, own.parent);
  append_with_dots(text, own.scope);
  return text;
}

std::string_view bound_name(const Import& import) {
  if (!import.alias.empty()) return import.alias;
  if (!import.name.empty()) return import.name;
  return std::string_view(import.module).substr(0, import.module.find('.'));
}

std::uint64_t interface_hash(const Facts& facts) {
  Hash hash;
  for (const Definition& definition : facts.definitions) {
    add_definition(hash, definition, definition.parent);
  }
  hash.add(static_cast<std::int64_t>(facts.definitions.size()));
  for (const Binding& binding : facts.bindings) {
    if (!is_inside_function(facts, binding)) add_binding(hash, binding, binding.scope);
  }
  hash.add(-1);
  hash.add(static_cast<std::int64_t>(imports_hash(facts)));
  for (const std::string& name : facts.exports) hash.add(name);
  hash.add(static_cast<std::int64_t>(facts.exports.size()));
  return hash.value();
}

std::uint64_t imports_hash(const Facts& facts) {
  Hash hash;
  for (const Import& import : facts.imports) add_import(hash, import, import.scope);
  return hash.value();
}

std::unordered_map<std::string_view, std::uint64_t> name_hashes(const Facts& facts) {
  const ScopeNumbers scopes(facts);
  std::unordered_map<std::string_view, Hash> hashes;
  for (const Definition& each : facts.definitions) {
    add_definition(hashes[each.name], each, scopes.of(each.parent));
    if (each.parent == NOWHERE) continue;
    const Definition& parent = facts.definitions[static_cast<std::size_t>(each.parent)];
    if (parent.kind == Kind::INTERFACE) hashes[parent.name].add(each.name);
  }
  for (const Binding& each : facts.bindings) {
    if (!is_inside_function(facts, each)) {
      add_binding(hashes[each.name], each, scopes.of(each.scope));
    }
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
