#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/kit/ledger.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/builtins.h"
#include "indexer/languages/python/modules.h"
#include "indexer/languages/python/python.h"
#include "indexer/languages/python/values.h"

namespace context_delta::indexer::python {
namespace {

bool is_bare(const Reference& reference) { return reference.receiver_expression == NO_EXPRESSION; }

/// What a receiver of unknown type leaves open.
enum class Shape { BARE, ON_VALUE, ON_CLASS };

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file),
        facts_(facts),
        world_(world),
        scopes_(facts),
        values_(file, {facts, scopes_}, world) {
    neighbourhood_.file = &file;
    for (const Import& import : facts.imports) {
      const ModuleAnswer& answer = values_.module(file, import.module);
      if (answer.file != nullptr) neighbourhood_.imported.insert(answer.file->id);
    }
  }

  Resolution run();

 private:
  void resolve(std::int32_t index);
  Value meaning(const Reference& reference, Value& owner);
  void prove(std::int32_t index, const Value& value, std::string_view rule);
  void tie_constructor(std::int32_t index, const Value& type, bool proven);
  void resolve_call(std::int32_t index, const Value& value, const Value& owner);
  void guess(std::int32_t index, const Value& value, const Value& owner);
  void dispatch(std::int32_t index, const Value& value, const std::vector<Candidate>& overrides);
  const std::vector<Candidate>& overrides_of(const Value& owner, const Value& method);
  std::vector<Candidate> find_overrides(const Value& owner, const Value& method);
  bool is_patched(const Value& owner, const std::string& name);
  bool fits(const Candidate& candidate, const Reference& reference, Shape shape) const;
  std::optional<Candidate> candidate_of(const Value& value);
  std::string_view reason(const Value& value, const Value& owner, const Reference& reference);

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  Evaluator values_;
  const Expression& expression(const Reference& reference) const {
    return facts_.expressions[static_cast<std::size_t>(reference.receiver_expression)];
  }

  kit::Neighbourhood neighbourhood_;
  kit::Ledger ledger_{neighbourhood_};
  // By the owner's file and definition, then the method's.
  std::map<std::tuple<std::int64_t, DefinitionIndex, std::int64_t, DefinitionIndex>,
           std::vector<Candidate>>
      overrides_;
  Resolution made_;
};

Resolution Resolver::run() {
  const std::string module = distinct_module_name(file_, world_);
  made_.module_name = module;
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    const std::string local = local_name(facts_, static_cast<DefinitionIndex>(i));
    made_.qualified_names.push_back(module.empty() ? local : module + "." + local);
  }
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    resolve(static_cast<std::int32_t>(i));
  }
  ledger_.write(made_);
  return std::move(made_);
}

void Resolver::resolve(std::int32_t index) {
  const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
  Value owner;
  const Value value = meaning(reference, owner);
  if (is_call(reference.role)) {
    resolve_call(index, value, owner);
  } else if (value.is_definition() && value.sure) {
    prove(index, value, value.rule);
  }
}

/// The meaning of the name; `owner` is that of its receiver.
Value Resolver::meaning(const Reference& reference, Value& owner) {
  if (reference.role == Role::IMPORT) {
    const ModuleAnswer& answer = values_.module(file_, expression(reference).name);
    if (answer.file == nullptr) return {};
    Value found = values_.module_member(*answer.file, reference.name);
    found.rule = "import";
    found.sure = found.sure && answer.sure;
    return found;
  }
  if (is_bare(reference)) {
    return values_.name_value(file_, reference.enclosing, reference.name);
  }
  owner = values_.expression_value(file_, reference.enclosing, reference.receiver_expression);
  return values_.member(owner, reference.name);
}

void Resolver::resolve_call(std::int32_t index, const Value& value, const Value& owner) {
  const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
  if (value.kind == Value::Kind::EXTERNAL || value.kind == Value::Kind::MODULE) return;
  const bool broken = (reference.traits & BROKEN) != 0;
  if (!value.is_definition() || !value.sure || broken) return guess(index, value, owner);
  if (value.kind == Value::Kind::CLASS) {
    const bool any_subclass = !value.exact && value.rule == "self";
    any_subclass ? guess(index, value, owner) : prove(index, value, value.rule);
    return tie_constructor(index, value, !any_subclass);
  }
  const Definition& method = values_.definition(value);
  if ((method.traits & PROPERTY) != 0) return;
  const bool on_class = owner.kind == Value::Kind::CLASS || owner.kind == Value::Kind::INSTANCE;
  if (!on_class)
    return prove(index, value, owner.kind == Value::Kind::SUPER ? "super" : value.rule);
  if (is_patched(owner, method.name)) return guess(index, value, owner);
  if (!owner.exact) {
    const std::vector<Candidate>& overrides = overrides_of(owner, value);
    if (!overrides.empty()) return dispatch(index, value, overrides);
  }
  prove(index, value,
        owner.rule == "self" ? "self"
        : owner.exact        ? "constructed"
                             : "declared-type");
}

void Resolver::prove(std::int32_t index, const Value& value, std::string_view rule) {
  ledger_.prove(index, {value.file, value.definition}, rule);
}

/// A call of a class runs its constructor, or the one that it inherits.
void Resolver::tie_constructor(std::int32_t index, const Value& type, bool proven) {
  for (const std::string_view name : {"__new__", "__init__"}) {
    const Value found = values_.member(
        {.kind = Value::Kind::CLASS, .file = type.file, .definition = type.definition}, name);
    if (found.kind != Value::Kind::FUNCTION) continue;
    const bool sure = proven && found.sure;
    const std::string_view why = proven ? found.doubt : "a subclass may be constructed instead";
    ledger_.add({.reference = index,
                 .target = {found.file, found.definition},
                 .proven = sure,
                 .rule = CONSTRUCTION,
                 .why = sure ? std::string_view() : why});
  }
}

std::optional<Candidate> Resolver::candidate_of(const Value& value) {
  const std::vector<Candidate>& all = world_.definitions(values_.definition(value).name);
  const auto place = std::lower_bound(
      all.begin(), all.end(), value, [](const Candidate& candidate, const Value& wanted) {
        return std::tie(candidate.file->path, candidate.definition) <
               std::tie(wanted.file->path, wanted.definition);
      });
  if (place == all.end() || place->file->id != value.file->id ||
      place->definition != value.definition) {
    return std::nullopt;
  }
  return *place;
}

const std::vector<Candidate>& Resolver::overrides_of(const Value& owner, const Value& method) {
  const std::tuple key(owner.file->id, owner.definition, method.file->id, method.definition);
  const auto place = overrides_.find(key);
  if (place != overrides_.end()) return place->second;
  return overrides_.emplace(key, find_overrides(owner, method)).first->second;
}

std::vector<Candidate> Resolver::find_overrides(const Value& owner, const Value& method) {
  std::vector<Candidate> found;
  const std::string name = values_.definition(method).name;
  if (name.starts_with("__") && !name.ends_with("__")) return found;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (!kit::is_function_kind(candidate.kind) || candidate.container.empty()) continue;
    if (candidate.file->language != file_.language) continue;
    const kit::Outline& there = values_.outline(*candidate.file);
    const DefinitionIndex parent = there.definition(candidate.definition).parent;
    if (parent == NOWHERE || !kit::is_class_kind(there.definition(parent).kind)) continue;
    const Value other = {.kind = Value::Kind::CLASS, .file = candidate.file, .definition = parent};
    Value base = owner;
    base.kind = Value::Kind::CLASS;
    if (values_.is_below(other, base)) found.push_back(candidate);
  }
  return found;
}

/// Whether a module assigns to the member from outside: `Class.name = ...`.
bool Resolver::is_patched(const Value& owner, const std::string& name) {
  const std::string& owner_name = values_.definition(owner).name;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (candidate.kind != Kind::VARIABLE || candidate.container.empty()) continue;
    const std::string_view container = candidate.container;
    if (container.substr(container.rfind('.') + 1) == owner_name) return true;
  }
  return false;
}

void Resolver::dispatch(std::int32_t index, const Value& value,
                        const std::vector<Candidate>& overrides) {
  std::vector<const Candidate*> others;
  for (const Candidate& each : overrides) others.push_back(&each);
  const std::optional<Candidate> declared = candidate_of(value);
  ledger_.dispatch(index, declared ? &*declared : nullptr, others,
                   "a subclass overrides the method");
}

bool Resolver::fits(const Candidate& candidate, const Reference& reference, Shape shape) const {
  if (candidate.file->language != file_.language) return false;
  if ((candidate.traits & PROPERTY) != 0) return false;
  if ((candidate.traits & (DECLARATION | VIRTUAL)) == DECLARATION) return false;
  const bool is_method = candidate.kind == Kind::METHOD || candidate.kind == Kind::CONSTRUCTOR;
  switch (candidate.kind) {
    case Kind::CLASS:
      return shape != Shape::ON_VALUE;
    case Kind::METHOD:
    case Kind::CONSTRUCTOR:
      if (shape == Shape::BARE) return false;
      break;
    case Kind::FUNCTION:
      if (shape == Shape::ON_VALUE) return false;
      break;
    default:
      return false;
  }
  const bool nested = !is_method && !candidate.container.empty();
  if (nested && candidate.file->id != file_.id) return false;
  return kit::accepts_arguments(candidate, reference.arguments) ||
         (shape == Shape::ON_CLASS && reference.arguments != ANY_NUMBER &&
          kit::accepts_arguments(candidate, static_cast<std::int16_t>(reference.arguments - 1)));
}

std::string_view Resolver::reason(const Value& value, const Value& owner,
                                  const Reference& reference) {
  if ((reference.traits & BROKEN) != 0) return "the text around the call does not parse";
  if (!value.doubt.empty()) return value.doubt;
  if (value.kind == Value::Kind::CLASS) return "a subclass may be constructed instead";
  if (value.is_definition()) return "the member is assigned elsewhere";
  if (is_bare(reference)) return "the name is not bound in the file";
  if (owner.kind == Value::Kind::UNKNOWN) return "the receiver's type is not known";
  return "the receiver's class does not define the member";
}

void Resolver::guess(std::int32_t index, const Value& value, const Value& owner) {
  const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
  std::optional<Candidate> favourite;
  if (value.is_definition()) favourite = candidate_of(value);
  const bool bare = is_bare(reference);
  const Shape shape = bare ? Shape::BARE
                      : owner.kind == Value::Kind::MODULE || owner.kind == Value::Kind::CLASS
                          ? Shape::ON_CLASS
                          : Shape::ON_VALUE;
  const bool common =
      !bare && !favourite && owner.kind == Value::Kind::UNKNOWN && is_common_method(reference.name);
  std::vector<const Candidate*> fitting;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    const bool is_favourite = favourite && candidate == *favourite;
    if (!is_favourite && !fits(candidate, reference, shape)) continue;
    if (common && kit::nearness(candidate, neighbourhood_) == 3) continue;
    fitting.push_back(&candidate);
  }
  ledger_.namesakes(index, fitting, reason(value, owner, reference),
                    favourite ? &*favourite : nullptr);
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::python
