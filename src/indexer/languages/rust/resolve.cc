#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/rust/evaluator.h"
#include "indexer/languages/rust/library.h"
#include "indexer/languages/rust/rust.h"

namespace context_delta::indexer::rust {
namespace {

using kit::definition_at;

std::string_view last_part(std::string_view container) {
  return container.substr(container.rfind('.') + 1);
}

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file),
        facts_(facts),
        world_(world),
        scopes_(facts),
        values_(file, {facts, scopes_}, world) {
    neighbourhood_.file = &file;
  }

  Resolution run();

 private:
  void name_definitions();
  void note_imported();
  void resolve(std::int32_t index);
  void resolve_call(std::int32_t index);
  void resolve_macro(std::int32_t index);
  void resolve_shadowed(std::int32_t index);
  void resolve_name(std::int32_t index);
  Callee callee_of(const Reference& reference);
  bool accepts(const Reference& reference, const Callee& callee);
  void prove(std::int32_t index, const File& file, DefinitionIndex target, std::string_view rule);
  void guess_doubted(std::int32_t index, const Callee& callee, std::string_view why);
  void guess_namesakes(std::int32_t index, const Callee& callee);
  bool fits(const Candidate& candidate, const Reference& reference, bool is_method_call,
            bool type_is_known);
  std::optional<Candidate> candidate_of(const File& file, DefinitionIndex index);
  const Reference& reference_at(std::int32_t index) const {
    return facts_.references[static_cast<std::size_t>(index)];
  }

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  Evaluator values_;
  kit::Neighbourhood neighbourhood_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, std::optional<Candidate>> candidates_;
  Resolution made_;
};

Resolution Resolver::run() {
  name_definitions();
  note_imported();
  for (std::size_t i = 0; i < facts_.references.size(); ++i) {
    resolve(static_cast<std::int32_t>(i));
  }
  return std::move(made_);
}

void Resolver::name_definitions() {
  made_.module_name = module_path(file_, world_);
  std::vector<std::string> prefixes;  // of what stands inside each definition
  for (const Definition& each : facts_.definitions) {
    const std::string outer = each.parent == NOWHERE
                                  ? made_.module_name
                                  : prefixes[static_cast<std::size_t>(each.parent)];
    std::string inner = outer + "::" + each.name;
    if (!is_impl(each)) {
      made_.qualified_names.push_back(inner);
      prefixes.push_back(std::move(inner));
      continue;
    }
    const std::string trait = each.bases.empty() ? std::string() : each.bases.front();
    const std::string header = trait.empty() ? each.type : trait + " for " + each.type;
    made_.qualified_names.push_back(outer + "::<impl " + header + ">");
    if (!trait.empty()) inner = "<" + inner + " as " + trait + ">";
    prefixes.push_back(std::move(inner));
  }
}

void Resolver::note_imported() {
  for (const Import& import : facts_.imports) {
    Meaning found = values_.import_meaning(file_, import, Space::TYPE);
    if (found.file == nullptr) found = values_.import_meaning(file_, import, Space::VALUE);
    if (found.file != nullptr) neighbourhood_.imported.insert(found.file->id);
  }
}

void Resolver::resolve(std::int32_t index) {
  const Reference& reference = reference_at(index);
  if (reference.role != Role::CALL) return resolve_name(index);
  if (reference.receiver.ends_with('!')) return resolve_macro(index);
  if (reference.receiver == "let") return resolve_shadowed(index);
  resolve_call(index);
}

Callee Resolver::callee_of(const Reference& reference) {
  const bool is_path = reference.receiver.empty() || reference.receiver.ends_with("::");
  if (!is_path) {
    return values_.method(values_.value_type(reference.enclosing, reference.receiver),
                          reference.name);
  }
  const std::string path = reference.receiver + reference.name;
  return values_.path_callee(file_, reference.enclosing, parse_type(path));
}

/// A call with another number of arguments was read wrong.
bool Resolver::accepts(const Reference& reference, const Callee& callee) {
  const Definition& found = values_.definition(*callee.file, callee.definition);
  if (!kit::is_function_kind(found.kind) || reference.arguments == ANY_NUMBER) return true;
  const bool is_path = reference.receiver.empty() || reference.receiver.ends_with("::");
  const bool takes_self = found.kind == Kind::METHOD && (found.traits & STATIC_MEMBER) == 0;
  if (!is_path && !takes_self) return false;
  const int count = reference.arguments - (is_path && takes_self ? 1 : 0);
  return count >= found.least_arguments && count <= found.most_arguments;
}

void Resolver::resolve_call(std::int32_t index) {
  const Reference& reference = reference_at(index);
  const Callee callee = callee_of(reference);
  // A type of another crate may still have a trait of the repository.
  std::string_view receiver = reference.receiver;
  const bool is_path = receiver.empty() || receiver.ends_with("::");
  receiver.remove_suffix(receiver.empty() || !is_path ? 0 : 2);
  const bool is_on_type = callee.self.known() && (!is_path || is_primitive(receiver));
  if (callee.kind == Callee::Kind::EXTERNAL && !is_on_type) return;
  if (callee.kind != Callee::Kind::FOUND) return guess_namesakes(index, callee);
  if (!callee.sure) return guess_doubted(index, callee, callee.doubt);
  if ((reference.traits & FROM_MACRO) != 0) {
    return guess_doubted(index, callee, "the call is written inside a macro's arguments");
  }
  if ((reference.traits & BROKEN) != 0) {
    return guess_doubted(index, callee, "the text around the call does not parse");
  }
  if (!accepts(reference, callee)) {
    return guess_doubted(index, callee, "the number of arguments differs");
  }
  const bool on_self = reference.receiver == "self" || reference.receiver == "Self::";
  prove(index, *callee.file, callee.definition, on_self ? "self" : callee.rule);
}

/// Macros are found by the text before them, or by path once exported.
void Resolver::resolve_macro(std::int32_t index) {
  const Reference& reference = reference_at(index);
  std::vector<Candidate> fitting;
  std::optional<Candidate> own;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    if (candidate.kind != Kind::MACRO || candidate.file->language != file_.language) continue;
    fitting.push_back(candidate);
    if (candidate.file->id == file_.id) own = candidate;
  }
  const auto here = std::count_if(fitting.begin(), fitting.end(),
                                  [&](const Candidate& each) { return each.file->id == file_.id; });
  const bool before = own && definition_at(facts_, own->definition).first_line <= reference.line;
  if (here == 1 && before && reference.receiver == "!" && (reference.traits & BROKEN) == 0) {
    return prove(index, file_, own->definition, "same-file");
  }
  kit::add_guess(made_.edges,
                 {.reference = index,
                  .why = here > 1 ? "the macro is defined more than once"
                                  : "the macro is not defined before the call in this file",
                  .favourite = own ? &*own : nullptr},
                 std::move(fitting), neighbourhood_);
}

/// The call of a variable that hides a definition of the same name.
void Resolver::resolve_shadowed(std::int32_t index) {
  const Reference& reference = reference_at(index);
  const Meaning hidden =
      values_.name_meaning(file_, reference.enclosing, reference.name, Space::VALUE);
  if (hidden.kind != Meaning::Kind::DEFINITION) return;
  if (values_.definition(*hidden.file, hidden.definition).kind != Kind::FUNCTION) return;
  guess_doubted(index,
                {.kind = Callee::Kind::FOUND, .file = hidden.file, .definition = hidden.definition},
                "the name is a parameter or local variable");
}

/// A name that is used without a call.
void Resolver::resolve_name(std::int32_t index) {
  const Reference& reference = reference_at(index);
  const std::string written = reference.receiver + reference.name;
  const TypeText path = parse_type(written);
  const std::string_view rule_of_self = "self";
  if (path.kind != TypeText::Kind::PATH) return;
  if (path.path.front().name == "Self") {
    const Type self = values_.self_type(file_, reference.enclosing);
    if (self.kind == Type::Kind::NAMED) prove(index, *self.file, self.definition, rule_of_self);
    return;
  }
  Meaning found;
  for (const Space space : {Space::TYPE, Space::VALUE, Space::MACRO}) {
    if (reference.role == Role::CONSTRUCT && space != Space::TYPE) break;
    std::size_t used = 0;
    found = values_.path_meaning(file_, reference.enclosing, path.path, space, used);
    const bool whole = used == path.path.size() && (found.kind == Meaning::Kind::DEFINITION ||
                                                    found.kind == Meaning::Kind::VARIANT);
    if (whole) break;
    found = {};
  }
  if (found.kind == Meaning::Kind::UNKNOWN) return;
  const bool broken = (reference.traits & BROKEN) != 0;
  if (found.sure && !broken) return prove(index, *found.file, found.definition, found.rule);
  if (reference.role != Role::CONSTRUCT) return;
  guess_doubted(index,
                {.kind = Callee::Kind::FOUND, .file = found.file, .definition = found.definition},
                found.sure ? "the text around the call does not parse" : found.doubt);
}

void Resolver::prove(std::int32_t index, const File& file, DefinitionIndex target,
                     std::string_view rule) {
  const std::optional<Candidate> found = candidate_of(file, target);
  if (!found) return;
  made_.edges.push_back({.reference = index, .target = *found, .proven = true, .rule = rule});
}

std::optional<Candidate> Resolver::candidate_of(const File& file, DefinitionIndex index) {
  const auto [place, added] = candidates_.try_emplace({file.id, index});
  if (!added) return place->second;
  for (const Candidate& candidate : world_.definitions(values_.definition(file, index).name)) {
    if (candidate.file->id == file.id && candidate.definition == index) place->second = candidate;
  }
  return place->second;
}

/// The callee first, and what else its doubt leaves open: the same name in the same type.
void Resolver::guess_doubted(std::int32_t index, const Callee& callee, std::string_view why) {
  const std::optional<Candidate> favourite = candidate_of(*callee.file, callee.definition);
  if (!favourite) return;
  std::vector<Candidate> fitting = {*favourite};
  if (!callee.sure) {
    for (const Candidate& each : world_.definitions(reference_at(index).name)) {
      const bool twin = each.kind == favourite->kind && !(each == *favourite) &&
                        each.file->language == file_.language &&
                        last_part(each.container) == last_part(favourite->container) &&
                        (each.kind == Kind::METHOD || each.file->id == favourite->file->id);
      if (twin) fitting.push_back(each);
    }
  }
  kit::add_guess(made_.edges, {.reference = index, .why = why, .favourite = &*favourite},
                 std::move(fitting), neighbourhood_);
}

bool Resolver::fits(const Candidate& candidate, const Reference& reference, bool is_method_call,
                    bool type_is_known) {
  if (candidate.file->language != file_.language) return false;
  const bool is_static = (candidate.traits & STATIC_MEMBER) != 0;
  // Traits may be given to types in ways that are not seen.
  const bool is_of_trait = (candidate.traits & VIRTUAL) != 0;
  if (is_method_call) {
    if (candidate.kind != Kind::METHOD || is_static) return false;
    if (!kit::accepts_arguments(candidate, reference.arguments)) return false;
    return !type_is_known || is_of_trait;
  }
  if (type_is_known) return candidate.kind == Kind::METHOD && is_of_trait;
  if (reference.receiver.empty()) {
    return candidate.kind == Kind::FUNCTION &&
           kit::accepts_arguments(candidate, reference.arguments);
  }
  if (candidate.kind != Kind::METHOD && candidate.kind != Kind::FUNCTION) return false;
  const TypeText path = parse_type(reference.receiver);
  if (path.kind == TypeText::Kind::PATH &&
      last_part(candidate.container) != path.path.back().name) {
    return false;
  }
  const std::int16_t self = is_static || candidate.kind == Kind::FUNCTION ? 0 : 1;
  return reference.arguments == ANY_NUMBER ||
         kit::accepts_arguments(candidate, static_cast<std::int16_t>(reference.arguments - self));
}

void Resolver::guess_namesakes(std::int32_t index, const Callee& callee) {
  const Reference& reference = reference_at(index);
  const bool is_method_call = !reference.receiver.empty() && !reference.receiver.ends_with("::");
  const bool type_is_known = callee.kind != Callee::Kind::UNKNOWN;
  if ((is_method_call || type_is_known) && is_common_method(reference.name)) return;
  std::vector<Candidate> fitting;
  std::optional<Candidate> declared;
  for (const Candidate& candidate : world_.definitions(reference.name)) {
    if (!fits(candidate, reference, is_method_call, type_is_known)) continue;
    fitting.push_back(candidate);
    if ((candidate.traits & VIRTUAL) != 0 && !declared) declared = candidate;
  }
  const std::string_view why = type_is_known    ? "the receiver's type does not define the method"
                               : is_method_call ? "the receiver's type is not known"
                                                : "what the path means is not known";
  kit::add_guess(made_.edges,
                 {.reference = index, .why = why, .favourite = declared ? &*declared : nullptr},
                 std::move(fitting), neighbourhood_);
}

}  // namespace

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).run();
}

}  // namespace context_delta::indexer::rust
