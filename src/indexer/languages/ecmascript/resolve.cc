#include "indexer/languages/ecmascript/resolve.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "indexer/languages/ecmascript/builtins.h"
#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/ecmascript/values.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/ledger.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::definition_at;

/// What a receiver of unknown type leaves open.
enum class Shape { BARE, ON_VALUE, ON_MODULE };

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file), facts_(facts), world_(world), values_(file, facts, world) {
    neighbourhood_.file = &file;
    for (const Import& import : facts.imports) {
      const ModuleAnswer answer = values_.module(file, import.module);
      if (answer.file != nullptr) neighbourhood_.imported.insert(answer.file->id);
    }
  }

  Resolution run();

 private:
  void resolve(std::int32_t index);
  Value meaning(const Reference& reference, Value& owner);
  void resolve_call(std::int32_t index, const Value& value, const Value& owner);
  void prove(std::int32_t index, const Value& value, std::string_view rule);
  void tie_constructor(std::int32_t index, const Value& type);
  void guess(std::int32_t index, const Value& value, const Value& owner);
  void dispatch(std::int32_t index, const Value& value, std::string_view why,
                const std::vector<Candidate>& overrides);
  std::vector<Candidate> overrides_of(const Value& owner, const Value& method);
  bool is_patched(std::string_view owner_name, const std::string& name);
  bool fits(const Candidate& candidate, const Reference& reference, Shape shape) const;
  std::optional<Candidate> candidate_of(const Value& value);
  std::string_view reason(const Value& value, const Value& owner, const Reference& reference);

  const File& file_;
  const Facts& facts_;
  World& world_;
  Evaluator values_;
  kit::Neighbourhood neighbourhood_;
  kit::Ledger ledger_{neighbourhood_};
  Resolution made_;
};

std::vector<const Candidate*> pointers_to(const std::vector<Candidate>& candidates) {
  std::vector<const Candidate*> pointers;
  pointers.reserve(candidates.size());
  for (const Candidate& candidate : candidates) pointers.push_back(&candidate);
  return pointers;
}

constexpr std::string_view ONLY_DECLARED = "the receiver's type only declares it";

/// A bare name of a block carries the block's number where other names have their receiver.
bool is_bare(const Reference& reference) {
  const std::string& receiver = reference.receiver;
  return receiver.empty() || (receiver.front() == '\'' && number_in(receiver.substr(1)) != NOWHERE);
}

Resolution Resolver::run() {
  made_.module_name = without_suffix(file_.path);
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    made_.qualified_names.push_back(made_.module_name + "." +
                                    local_name(facts_, static_cast<DefinitionIndex>(i)));
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
  values_.start_question();
  Value value = meaning(reference, owner);
  if (values_.gave_up()) value = unsure(std::move(value), "the types around it are too involved");
  if (is_call(reference.role)) {
    resolve_call(index, value, owner);
    return;
  }
  const bool named = value.is_definition() ||
                     (value.kind == Value::Kind::INSTANCE && reference.role != Role::IMPORT) ||
                     (reference.role == Role::IMPORT && value.kind == Value::Kind::INSTANCE &&
                      value.rule == "import");
  if (named && value.sure && value.definition != NOWHERE) prove(index, value, "import");
}

/// The meaning of the name; `owner` is that of its receiver.
Value Resolver::meaning(const Reference& reference, Value& owner) {
  const bool is_type = reference.role == Role::TYPE || reference.role == Role::INHERIT;
  if (reference.role == Role::IMPORT) {
    const ModuleAnswer answer = values_.module(file_, reference.receiver);
    if (answer.file == nullptr || !is_in_family(answer.file->language)) return {};
    Value found = values_.exported(*answer.file, reference.name, Space::VALUES);
    if (!found.is_definition()) {
      found = values_.exported(*answer.file, reference.name, Space::TYPES);
    }
    found.rule = "import";
    found.sure = found.sure && answer.sure;
    return found;
  }
  if (is_bare(reference)) {
    const Space space = is_type ? Space::TYPES : Space::VALUES;
    return values_.name_value(file_, reference.enclosing, reference.name + reference.receiver,
                              space);
  }
  owner = values_.expression_value(file_, reference.enclosing, reference.receiver);
  if (is_type && owner.kind == Value::Kind::MODULE) {
    return values_.exported(*owner.file, reference.name, Space::TYPES);
  }
  return values_.member(owner, reference.name);
}

void Resolver::resolve_call(std::int32_t index, const Value& given, const Value& owner) {
  const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
  const Value value = values_.as_whole(given, Space::VALUES);
  if (value.kind == Value::Kind::EXTERNAL || value.kind == Value::Kind::NONE) return;
  const bool broken = (reference.traits & BROKEN) != 0;
  if (!value.is_definition() || !value.sure || broken) return guess(index, value, owner);
  if (value.kind == Value::Kind::CLASS) {
    prove(index, value, value.rule);
    return tie_constructor(index, value);
  }
  const Definition& method = values_.definition(value);
  if ((method.traits & PROPERTY) != 0) return;
  const bool abstract = (method.traits & VIRTUAL) != 0;
  const bool on_class = owner.kind == Value::Kind::CLASS || owner.kind == Value::Kind::INSTANCE;
  if (abstract && !on_class) return dispatch(index, value, ONLY_DECLARED, {});
  const bool on_object = owner.kind == Value::Kind::OBJECT && !owner.home.name.empty();
  if (on_object && is_patched(owner.home.name, method.name)) return guess(index, value, owner);
  if (!on_class || method.kind != Kind::METHOD) {
    return prove(index, value, owner.kind == Value::Kind::SUPER ? "super" : value.rule);
  }
  if (is_patched(values_.definition(owner).name, method.name)) return guess(index, value, owner);
  if (!owner.exact || abstract) {
    const std::vector<Candidate> overrides = overrides_of(owner, value);
    if (abstract) return dispatch(index, value, ONLY_DECLARED, overrides);
    if (!overrides.empty()) {
      return dispatch(index, value, "a subclass overrides the method", overrides);
    }
  }
  prove(index, value,
        owner.rule == "self" ? "self"
        : owner.exact        ? "constructed"
                             : "declared-type");
}

void Resolver::prove(std::int32_t index, const Value& value, std::string_view rule) {
  ledger_.prove(index, {value.file, value.definition}, rule);
}

/// `new` of a class runs its constructor, or the one that it inherits.
void Resolver::tie_constructor(std::int32_t index, const Value& type) {
  const std::optional<Value> constructor = values_.constructor(type);
  if (constructor) prove(index, *constructor, CONSTRUCTION);
}

std::optional<Candidate> Resolver::candidate_of(const Value& value) {
  for (const Candidate& candidate : world_.definitions(values_.definition(value).name)) {
    if (candidate.file->id == value.file->id && candidate.definition == value.definition) {
      return candidate;
    }
  }
  return std::nullopt;
}

std::vector<Candidate> Resolver::overrides_of(const Value& owner, const Value& method) {
  std::vector<Candidate> found;
  const std::string name = values_.definition(method).name;
  if (name.starts_with('#')) return found;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (candidate.kind != Kind::METHOD || candidate.container.empty()) continue;
    if (!is_in_family(candidate.file->language)) continue;
    const Interface& there = values_.facts(*candidate.file);
    const Definition& override = definition_at(there, candidate.definition);
    const DefinitionIndex parent = override.parent;
    // Which constructor function inherits from which is not written where rules could see it.
    const bool prototypes =
        values_.definition(owner).kind == Kind::FUNCTION && !override.scope.empty() &&
        (candidate.definition != method.definition || candidate.file->id != method.file->id);
    if (prototypes) found.push_back(candidate);
    if (parent == NOWHERE || definition_at(there, parent).kind != Kind::CLASS) continue;
    const Value other = {.kind = Value::Kind::CLASS, .file = candidate.file, .definition = parent};
    if (values_.is_below(other, owner)) found.push_back(candidate);
  }
  return found;
}

/// Whether a file assigns to the member from outside: `owner.name = ...`.
bool Resolver::is_patched(std::string_view owner_name, const std::string& name) {
  for (const Candidate& candidate : world_.definitions(name)) {
    if (candidate.kind != Kind::VARIABLE || (candidate.traits & REASSIGNED) == 0) continue;
    const std::string_view container = candidate.container;
    const std::size_t prototype = container.rfind(".prototype");
    const std::string_view patched = container.substr(0, prototype);
    if (patched.substr(patched.rfind('.') + 1) == owner_name) return true;
  }
  return false;
}

void Resolver::dispatch(std::int32_t index, const Value& value, std::string_view why,
                        const std::vector<Candidate>& overrides) {
  const std::optional<Candidate> declared = candidate_of(value);
  ledger_.dispatch(index, declared ? &*declared : nullptr, pointers_to(overrides), why);
}

bool Resolver::fits(const Candidate& candidate, const Reference& reference, Shape shape) const {
  if (!is_in_family(candidate.file->language)) return false;
  if ((candidate.traits & PROPERTY) != 0) return false;
  // Signatures of overloads stand beside the body that is meant.
  const bool signature = (candidate.traits & (DECLARATION | VIRTUAL)) == DECLARATION;
  if (signature && !candidate.file->path.ends_with(".d.ts")) return false;
  const bool elsewhere = candidate.file->id != file_.id;
  if (elsewhere && (candidate.traits & LOCAL_LINKAGE) != 0) return false;
  const bool member = !candidate.container.empty();
  switch (candidate.kind) {
    case Kind::CLASS:
      if (shape == Shape::ON_VALUE && reference.role != Role::CONSTRUCT) return false;
      break;
    case Kind::METHOD:
      if (shape == Shape::BARE || reference.role == Role::CONSTRUCT) return false;
      break;
    case Kind::FUNCTION:
      if (shape == Shape::ON_VALUE && !member) return false;
      if (shape == Shape::BARE && member && elsewhere) return false;
      break;
    default:
      return false;
  }
  return candidate.kind == Kind::CLASS || kit::accepts_arguments(candidate, reference.arguments);
}

std::string_view Resolver::reason(const Value& value, const Value& owner,
                                  const Reference& reference) {
  if ((reference.traits & BROKEN) != 0) return "the text around the call does not parse";
  if (!value.doubt.empty()) return value.doubt;
  if (value.is_definition()) return "the member is assigned elsewhere";
  if (is_bare(reference)) return "the name is not bound in the file";
  if (owner.kind == Value::Kind::UNKNOWN) return "the receiver's type is not known";
  return "the receiver does not define the member";
}

void Resolver::guess(std::int32_t index, const Value& value, const Value& owner) {
  const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
  std::optional<Candidate> favourite;
  if (value.is_definition()) favourite = candidate_of(value);
  std::vector<Candidate> fitting;
  for (const auto& [file, definition] : value.choices) {
    const std::optional<Candidate> choice =
        candidate_of({.kind = Value::Kind::FUNCTION, .file = file, .definition = definition});
    if (choice && (!favourite || !(*choice == *favourite))) fitting.push_back(*choice);
  }
  const auto choices = std::ssize(fitting);
  const bool bare = is_bare(reference);
  const bool on_module = owner.kind == Value::Kind::MODULE || owner.kind == Value::Kind::OBJECT ||
                         owner.kind == Value::Kind::NAMESPACE || owner.kind == Value::Kind::CLASS;
  const Shape shape = bare ? Shape::BARE : on_module ? Shape::ON_MODULE : Shape::ON_VALUE;
  const bool common = !bare && !favourite && is_common_method(reference.name);
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    const bool is_favourite = favourite && candidate == *favourite;
    const auto end = fitting.begin() + choices;
    if (std::find(fitting.begin(), end, candidate) != end) continue;
    if (!is_favourite && !fits(candidate, reference, shape)) continue;
    if (common && kit::nearness(candidate, neighbourhood_) == 3) continue;
    fitting.push_back(candidate);
  }
  // The function that an alias stands for has another name.
  const bool listed =
      favourite && std::find(fitting.begin(), fitting.end(), *favourite) != fitting.end();
  if (favourite && !listed) fitting.push_back(*favourite);
  ledger_.namesakes(index, pointers_to(fitting), reason(value, owner, reference),
                    favourite ? &*favourite : nullptr);
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::ecmascript
