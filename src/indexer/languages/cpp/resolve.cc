#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/c_family/includes.h"
#include "indexer/languages/c_family/library.h"
#include "indexer/languages/c_family/naming.h"
#include "indexer/languages/cpp/cpp.h"
#include "indexer/languages/cpp/lookup.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"

namespace context_delta::indexer::cpp {
namespace {

using kit::definition_at;

/// Which kinds of definitions a call that nothing is known of may mean.
enum class Shape { BARE, MEMBER, QUALIFIED };

std::string qualified_name(const Facts& facts, DefinitionIndex index) {
  std::string name;
  for (DefinitionIndex at = index; at != NOWHERE; at = definition_at(facts, at).parent) {
    const Definition& each = definition_at(facts, at);
    if (!name.empty()) name.insert(0, "::");
    name.insert(0, each.name);
    if (!each.scope.empty()) name.insert(0, each.scope + "::");
  }
  return name;
}

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file), facts_(facts), world_(world), lookup_(file, facts, world) {
    neighbourhood_.file = &file;
    neighbourhood_.imported = lookup_.linkage().seen().ids();
  }

  Resolution run();

 private:
  void resolve_call(std::int32_t index, const Reference& reference);
  void resolve_bare(std::int32_t index, const Reference& reference, const Context& context);
  void resolve_qualified(std::int32_t index, const Reference& reference, const Context& context);
  void resolve_member(std::int32_t index, const Reference& reference, const Context& context);
  void resolve_construction(std::int32_t index, const Reference& reference);
  void resolve_type(std::int32_t index, const Reference& reference);
  bool resolve_macro(std::int32_t index, const Reference& reference, const Callees& callees);
  void accept(std::int32_t index, const Reference& reference, Callees callees);
  void prove(std::int32_t index, const Candidate& target, std::string_view rule);
  void guess(std::int32_t index, const Reference& reference, Shape shape, std::string_view why);
  bool fits(const Candidate& candidate, const Reference& reference, Shape shape) const;

  const File& file_;
  const Facts& facts_;
  World& world_;
  Lookup lookup_;
  kit::Neighbourhood neighbourhood_;
  Resolution made_;
};

Resolution Resolver::run() {
  for (std::size_t i = 0; i < facts_.definitions.size(); ++i) {
    const auto index = static_cast<DefinitionIndex>(i);
    made_.qualified_names.push_back(
        c_family::distinct_name(file_, facts_, index, qualified_name(facts_, index), world_));
  }
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    const Reference& reference = facts_.references[i];
    const auto index = static_cast<std::int32_t>(i);
    if (reference.role == Role::CONSTRUCT) {
      resolve_construction(index, reference);
    } else if (is_call(reference.role)) {
      resolve_call(index, reference);
    } else {
      resolve_type(index, reference);
    }
  }
  return std::move(made_);
}

void Resolver::prove(std::int32_t index, const Candidate& target, std::string_view rule) {
  made_.edges.push_back({.reference = index, .target = target, .proven = true, .rule = rule});
}

/// Turns what was found into edges.
void Resolver::accept(std::int32_t index, const Reference& reference, Callees callees) {
  if (callees.external || callees.fitting.empty()) return;
  if (callees.sure && (reference.traits & BROKEN) != 0) {
    callees.sure = false;
    callees.why = "the text around the call does not parse";
  }
  if (callees.sure) return prove(index, callees.fitting.front(), callees.rule);
  const Candidate favourite = callees.fitting.front();
  kit::add_guess(made_.edges,
                 {.reference = index,
                  .rule = callees.rule == "dispatch" ? "dispatch" : "namesake",
                  .why = callees.why,
                  .favourite = &favourite},
                 std::move(callees.fitting), neighbourhood_);
}

void Resolver::resolve_call(std::int32_t index, const Reference& reference) {
  const Context context = lookup_.context_of(reference.enclosing);
  if (reference.receiver.empty()) {
    resolve_bare(index, reference, context);
  } else if (reference.receiver.ends_with("::")) {
    resolve_qualified(index, reference, context);
  } else {
    resolve_member(index, reference, context);
  }
}

/// Macros go before everything else of their name. Whether the reference is settled.
bool Resolver::resolve_macro(std::int32_t index, const Reference& reference,
                             const Callees& callees) {
  std::vector<Candidate> macros;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    if (candidate.kind != Kind::MACRO || !c_family::is_family(candidate.file->language)) continue;
    if (lookup_.linkage().seen().contains(*candidate.file)) macros.push_back(candidate);
  }
  if (macros.empty()) return false;
  const c_family::Linked found = lookup_.linkage().find(macros, reference);
  if (found.proven && callees.fitting.empty()) {
    prove(index, *found.target, "macro");
    return true;
  }
  macros.insert(macros.end(), callees.fitting.begin(), callees.fitting.end());
  kit::add_guess(made_.edges, {.reference = index, .why = "a macro has this name"},
                 std::move(macros), neighbourhood_);
  return true;
}

void Resolver::resolve_bare(std::int32_t index, const Reference& reference,
                            const Context& context) {
  Callees callees;
  const Type owner = lookup_.enclosing_class(context);
  if (owner.kind == Type::Kind::CLASS) {
    callees = lookup_.method(owner.in, reference.name, reference.arguments, true);
    if (callees.found && callees.rule == "class") callees.rule = "this";
  }
  if (!callees.found) callees = lookup_.function(context, reference.name, reference.arguments);
  if (lookup_.is_local(context, reference.name)) {
    callees.sure = false;
    callees.why = "a parameter or local variable has this name";
    callees.rule = {};
  }
  if (resolve_macro(index, reference, callees)) return;
  if (callees.found) return accept(index, reference, std::move(callees));
  const Type type = lookup_.type_named(context, reference.name);
  if (type.kind == Type::Kind::CLASS) {
    return accept(index, reference, lookup_.constructor(type.in, reference.arguments));
  }
  guess(index, reference, Shape::BARE, "no declaration of the name is seen from the call");
}

void Resolver::resolve_qualified(std::int32_t index, const Reference& reference,
                                 const Context& context) {
  Callees callees =
      lookup_.qualified_function(context, reference.receiver, reference.name, reference.arguments);
  if (callees.external) return;
  if (callees.found) return accept(index, reference, std::move(callees));
  const Type type = lookup_.type_named(context, reference.receiver + reference.name);
  if (type.kind == Type::Kind::CLASS) {
    return accept(index, reference, lookup_.constructor(type.in, reference.arguments));
  }
  guess(index, reference, Shape::QUALIFIED, "the qualifier's meaning is not known");
}

void Resolver::resolve_member(std::int32_t index, const Reference& reference,
                              const Context& context) {
  Type type = lookup_.type_of(context, reference.receiver);
  if (type.kind == Type::Kind::EXTERNAL) type = lookup_.pointee(type);
  if (type.kind == Type::Kind::EXTERNAL) return;
  if (type.kind == Type::Kind::CLASS) {
    Callees callees = lookup_.method(type.in, reference.name, reference.arguments, true);
    if (callees.external) return;
    if (callees.found) {
      if (callees.rule == "class") callees.rule = type.is_this ? "this" : "declared-type";
      return accept(index, reference, std::move(callees));
    }
    return guess(index, reference, Shape::MEMBER,
                 "the receiver's class does not declare the member");
  }
  guess(index, reference, Shape::MEMBER, "the receiver's type is not known");
}

void Resolver::resolve_construction(std::int32_t index, const Reference& reference) {
  const Context context = lookup_.context_of(reference.enclosing);
  const Type type = lookup_.type_named(context, reference.receiver + reference.name);
  if (type.kind != Type::Kind::CLASS) return;
  Callees callees = lookup_.constructor(type.in, reference.arguments);
  const bool is_class =
      !callees.fitting.empty() && kit::is_class_kind(callees.fitting.front().kind);
  const bool bare = (reference.traits & DECLARATION) != 0;
  if (bare && is_class) return;  // nothing runs that the class defines
  accept(index, reference, std::move(callees));
}

void Resolver::resolve_type(std::int32_t index, const Reference& reference) {
  const Context context = lookup_.context_of(reference.enclosing);
  const Type type = lookup_.type_named(context, reference.receiver + reference.name);
  if (type.kind != Type::Kind::CLASS) return;
  for (const Candidate& candidate :
       world_.definitions(type.in.name.substr(type.in.name.rfind('.') + 1))) {
    const bool same =
        candidate.file->id == type.in.file->id && candidate.definition == type.in.definition;
    if (same) return prove(index, candidate, "include");
  }
}

bool Resolver::fits(const Candidate& candidate, const Reference& reference, Shape shape) const {
  if (!c_family::is_family(candidate.file->language)) return false;
  if (!kit::is_function_kind(candidate.kind)) return false;
  if (shape == Shape::MEMBER && candidate.kind != Kind::METHOD) return false;
  if (shape == Shape::BARE && candidate.kind != Kind::FUNCTION) return false;
  const bool hidden = (candidate.traits & LOCAL_LINKAGE) != 0 &&
                      !neighbourhood_.imported.contains(candidate.file->id);
  return !hidden && kit::accepts_arguments(candidate, reference.arguments);
}

void Resolver::guess(std::int32_t index, const Reference& reference, Shape shape,
                     std::string_view why) {
  if (shape == Shape::BARE && c_family::is_library_function(reference.name)) return;
  const bool common = shape == Shape::MEMBER && c_family::is_common_method(reference.name);
  std::vector<Candidate> fitting;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    if (!fits(candidate, reference, shape)) continue;
    if (common && !neighbourhood_.imported.contains(candidate.file->id)) continue;
    fitting.push_back(candidate);
  }
  std::vector<Candidate> listed;
  for (const Candidate& candidate : fitting) {
    const bool defined_elsewhere =
        (candidate.traits & DECLARATION) != 0 &&
        std::any_of(fitting.begin(), fitting.end(), [&](const Candidate& other) {
          return (other.traits & DECLARATION) == 0 && other.container == candidate.container &&
                 other.most_arguments == candidate.most_arguments;
        });
    if (!defined_elsewhere) listed.push_back(candidate);
  }
  kit::add_guess(made_.edges, {.reference = index, .why = why}, std::move(listed), neighbourhood_);
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::cpp
