#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/java/headers.h"
#include "indexer/languages/java/java.h"
#include "indexer/languages/java/library.h"
#include "indexer/languages/java/values.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

using kit::definition_at;

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file),
        facts_(facts),
        world_(world),
        scopes_(facts),
        package_(facts.definitions.empty() ? "" : facts.definitions.front().scope),
        names_(file, {facts, scopes_}, world, package_),
        values_(facts, names_) {
    neighbourhood_.file = &file;
    for (const Import& import : facts.imports) {
      const bool is_type = import.name != "*" && (import.traits & STATIC_MEMBER) == 0;
      const Type type = names_.imported(
          file, NOWHERE, is_type ? import.module + "." + import.name : import.module);
      if (type.kind == Type::Kind::CLASS) neighbourhood_.imported.insert(type.file->id);
    }
  }

  Resolution run();

 private:
  void resolve_type(std::int32_t index, const Reference& reference);
  void resolve_import(std::int32_t index, const Reference& reference);
  void resolve_call(std::int32_t index, const Reference& reference);
  void resolve_creation(std::int32_t index, const Reference& reference);
  Type created_type(const Reference& reference);
  void accept(std::int32_t index, const Reference& reference, const Callee& callee,
              std::string_view rule);
  void dispatch(std::int32_t index, const Method& method, std::vector<Candidate> overrides,
                std::string_view why);
  void guess_overloads(std::int32_t index, const Callee& callee, std::string_view why);
  void guess_namesakes(std::int32_t index, const Reference& reference, std::string_view why);
  const std::vector<Candidate>& overrides(const Type& owner, const Method& method);
  std::optional<Candidate> candidate(const File& file, DefinitionIndex definition);
  void prove(std::int32_t index, const File& file, DefinitionIndex definition,
             std::string_view rule);

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  std::string package_;
  TypeNames names_;
  Values values_;
  kit::Neighbourhood neighbourhood_;
  using Place = std::pair<std::int64_t, DefinitionIndex>;
  std::map<std::pair<Place, Place>, std::vector<Candidate>> overrides_;
  Resolution made_;
};

Resolution Resolver::run() {
  made_.module_name = package_;
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    made_.qualified_names.push_back(local_name(facts_, static_cast<DefinitionIndex>(i)));
  }
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    const Reference& reference = facts_.references[i];
    const auto index = static_cast<std::int32_t>(i);
    if (reference.role == Role::CALL) {
      resolve_call(index, reference);
    } else if (reference.role == Role::CONSTRUCT) {
      resolve_creation(index, reference);
    } else if (reference.role == Role::IMPORT) {
      resolve_import(index, reference);
    } else {
      resolve_type(index, reference);
    }
  }
  return std::move(made_);
}

std::optional<Candidate> Resolver::candidate(const File& file, DefinitionIndex definition) {
  const std::vector<Candidate>& all = world_.definitions(names_.definition(file, definition).name);
  const auto found = std::lower_bound(all.begin(), all.end(), definition,
                                      [&](const Candidate& each, DefinitionIndex wanted) {
                                        const int order = each.file->path.compare(file.path);
                                        return order == 0 ? each.definition < wanted : order < 0;
                                      });
  const bool same =
      found != all.end() && found->file->id == file.id && found->definition == definition;
  return same ? std::optional<Candidate>(*found) : std::nullopt;
}

void Resolver::prove(std::int32_t index, const File& file, DefinitionIndex definition,
                     std::string_view rule) {
  const std::optional<Candidate> target = candidate(file, definition);
  if (!target) return;
  made_.edges.push_back({.reference = index, .target = *target, .proven = true, .rule = rule});
}

void Resolver::resolve_type(std::int32_t index, const Reference& reference) {
  const std::string name =
      reference.receiver.empty() ? reference.name : reference.receiver + "." + reference.name;
  const Type type = names_.named(file_, reference.enclosing, name);
  if (type.kind != Type::Kind::CLASS || !type.sure) return;
  prove(index, *type.file, type.definition, type.file->id == file_.id ? "same-file" : "import");
}

void Resolver::resolve_import(std::int32_t index, const Reference& reference) {
  Type type = names_.imported(file_, NOWHERE, reference.receiver + "." + reference.name);
  if (type.kind == Type::Kind::CLASS) {
    if (type.sure) prove(index, *type.file, type.definition, "import");
    return;
  }
  if ((reference.traits & STATIC_MEMBER) == 0) return;
  type = names_.imported(file_, NOWHERE, reference.receiver);
  if (type.kind != Type::Kind::CLASS || !type.sure) return;
  const Methods methods = methods_of(names_, type, reference.name);
  const bool single = methods.all.size() == 1;
  prove(index, *type.file, single ? methods.all.front().definition : type.definition, "import");
}

void Resolver::resolve_call(std::int32_t index, const Reference& reference) {
  const Arguments arguments =
      values_.arguments(reference.enclosing, reference.values, reference.arguments);
  if (reference.receiver.empty()) {
    const Callee callee = values_.bare(reference.enclosing, reference.name, arguments);
    return accept(index, reference, callee, callee.imported ? "import" : "this");
  }
  const Type receiver = values_.of(reference.enclosing, reference.receiver);
  const Callee callee = values_.on(receiver, reference.name, arguments);
  accept(index, reference, callee,
         receiver.is_super     ? "super"
         : receiver.is_this    ? "this"
         : receiver.names_type ? "class"
         : receiver.exact      ? "constructed"
                               : "declared-type");
}

/// Turns what a call of a method may mean into edges.
void Resolver::accept(std::int32_t index, const Reference& reference, const Callee& callee,
                      std::string_view rule) {
  if (callee.choice.fitting.empty()) {
    if (callee.outside) return;
    return guess_namesakes(index, reference,
                           callee.receiver.kind == Type::Kind::CLASS
                               ? "a supertype is not known"
                               : "the receiver's type is not known");
  }
  const Method& method = callee.choice.fitting.front();
  const Definition& definition = names_.definition(*method.file, method.definition);
  if (((reference.traits | definition.traits) & BROKEN) != 0) {
    return guess_overloads(index, callee, "the text around the call does not parse");
  }
  if (!callee.doubt.empty()) return guess_overloads(index, callee, callee.doubt);
  if (!callee.choice.sure) {
    return guess_overloads(index, callee, "the types of the arguments leave several methods open");
  }
  const bool settled = callee.receiver.is_super || (definition.traits & VIRTUAL) == 0;
  const bool is_abstract = (definition.traits & DECLARATION) != 0;
  if (!settled && (is_abstract || !callee.receiver.exact)) {
    const std::vector<Candidate>& others = overrides(callee.receiver, method);
    if (is_abstract) {
      return dispatch(index, method, others, "the method is abstract: an implementation runs");
    }
    if (!others.empty()) return dispatch(index, method, others, "a subclass overrides the method");
  }
  prove(index, *method.file, method.definition, rule);
}

const std::vector<Candidate>& Resolver::overrides(const Type& owner, const Method& method) {
  const std::pair<Place, Place> key = {{owner.file->id, owner.definition},
                                       {method.file->id, method.definition}};
  const auto known = overrides_.find(key);
  if (known != overrides_.end()) return known->second;
  return overrides_.emplace(key, overrides_of(names_, owner, method)).first->second;
}

void Resolver::dispatch(std::int32_t index, const Method& method, std::vector<Candidate> overrides,
                        std::string_view why) {
  const std::optional<Candidate> favourite = candidate(*method.file, method.definition);
  if (!favourite) return;
  overrides.push_back(*favourite);
  kit::add_guess(made_.edges,
                 {.reference = index, .rule = "dispatch", .why = why, .favourite = &*favourite},
                 std::move(overrides), neighbourhood_);
}

void Resolver::guess_overloads(std::int32_t index, const Callee& callee, std::string_view why) {
  std::vector<Candidate> fitting;
  for (const Method& each : callee.choice.fitting) {
    const std::optional<Candidate> found = candidate(*each.file, each.definition);
    if (found) fitting.push_back(*found);
  }
  if (fitting.empty()) return;
  const Candidate favourite = fitting.front();
  kit::add_guess(made_.edges, {.reference = index, .why = why, .favourite = &favourite},
                 std::move(fitting), neighbourhood_);
}

/// Any method of the name, for a receiver that nothing is known of.
void Resolver::guess_namesakes(std::int32_t index, const Reference& reference,
                               std::string_view why) {
  const bool common = is_common_method(reference.name);
  std::vector<Candidate> fitting;
  for (const Candidate& each : world_.definitions(reference.name)) {
    if (each.kind != Kind::METHOD || each.file->language != file_.language) continue;
    if (!kit::accepts_arguments(each, reference.arguments)) continue;
    const bool hidden = (each.traits & LOCAL_LINKAGE) != 0 && each.file->id != file_.id;
    if (hidden) continue;
    if (common && kit::nearness(each, neighbourhood_) > 2) continue;
    fitting.push_back(each);
  }
  kit::add_guess(made_.edges, {.reference = index, .why = why}, std::move(fitting), neighbourhood_);
}

/// The class whose constructor runs: of `new T()`, `outer.new T()`, `this()` or `super()`.
Type Resolver::created_type(const Reference& reference) {
  if (reference.receiver.empty() && reference.name == "this") {
    return names_.enclosing_class(file_, reference.enclosing);
  }
  if (reference.receiver.empty() && reference.name == "super") {
    return values_.superclass(reference.enclosing);
  }
  const std::string_view receiver = reference.receiver;
  if (receiver.ends_with(".new")) {
    const Type outer = values_.of(reference.enclosing, receiver.substr(0, receiver.size() - 4));
    return outer.is_class() ? names_.member_class(outer, reference.name) : Type{};
  }
  return names_.named(
      file_, reference.enclosing,
      receiver.empty() ? reference.name : reference.receiver + "." + reference.name);
}

void Resolver::resolve_creation(std::int32_t index, const Reference& reference) {
  const Type type = created_type(reference);
  if (type.kind != Type::Kind::CLASS) return;
  const Definition& definition = names_.definition(type);
  // What `new T() { }` runs is the constructor of the class that it declares, a subclass of T.
  const bool declares = (reference.traits & DECLARATION) != 0;
  const std::vector<Method> constructors =
      declares ? std::vector<Method>() : constructors_of(names_, type);
  const bool explicit_call = reference.name == "this" || reference.name == "super";
  const bool is_constant = definition.kind == Kind::ENUM;
  Callee callee;
  callee.receiver = type;
  callee.receiver.is_super = true;
  if (!type.sure) callee.doubt = "several classes have this name";
  const bool broken = (reference.traits & BROKEN) != 0;
  if (constructors.empty()) {
    // The compiler makes the constructor: the class itself stands for it.
    if (explicit_call || is_constant) return;
    const std::optional<Candidate> target = candidate(*type.file, type.definition);
    if (!target) return;
    if (type.sure && !broken) return prove(index, *type.file, type.definition, "constructor");
    kit::add_guess(made_.edges,
                   {.reference = index,
                    .why = broken ? "the text around the call does not parse"
                                  : "several classes have this name",
                    .favourite = &*target},
                   {*target}, neighbourhood_);
    return;
  }
  const Arguments arguments =
      values_.arguments(reference.enclosing, reference.values, reference.arguments);
  callee.choice = choose(names_, constructors, arguments, is_record(definition));
  if (callee.choice.fitting.empty()) {
    if (is_record(definition)) return prove(index, *type.file, type.definition, "constructor");
    callee.choice.fitting = constructors;
    callee.doubt = "no constructor takes these arguments";
  }
  accept(index, reference, callee,
         explicit_call && reference.name == "super" ? "super" : "constructor");
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::java
