#include "indexer/languages/cpp/lookup.h"

#include <algorithm>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::cpp {
namespace {

using kit::Binder;
using kit::definition_at;

constexpr int DEEPEST = 12;

std::string joined(std::string_view scope, std::string_view name) {
  std::string whole(scope);
  if (!whole.empty() && !name.empty()) whole += '.';
  return whole += name;
}

bool is_type(const Candidate& candidate) {
  return c_family::is_family(candidate.file->language) &&
         (kit::is_class_kind(candidate.kind) || candidate.kind == Kind::TYPE);
}

}  // namespace

std::string dotted(std::string_view qualified) {
  std::string name;
  int angles = 0;
  for (std::size_t i = 0; i < qualified.size(); ++i) {
    if (qualified[i] == '<') ++angles;
    if (angles == 0 && qualified[i] == ':') {
      if (!name.empty() && name.back() != '.') name += '.';
    } else if (angles == 0 && qualified[i] != ' ') {
      name += qualified[i];
    }
    if (qualified[i] == '>' && angles > 0) --angles;
  }
  if (name.ends_with('.')) name.pop_back();
  return name;
}

Lookup::Lookup(const File& file, const Facts& facts, World& world)
    : file_(file), facts_(facts), world_(world), scopes_(facts), linkage_(file, world) {
  outlines_.emplace(file.id, kit::Outline(facts_, scopes_));
}

const kit::Outline& Lookup::outline(const File& file) {
  const auto place = outlines_.find(file.id);
  if (place != outlines_.end()) return place->second;
  return outlines_.emplace(file.id, kit::Outline(file, world_)).first->second;
}

Context Lookup::context_of(DefinitionIndex definition) const {
  return {.file = &file_,
          .scope = definition == NOWHERE ? std::string() : local_name(facts_, definition),
          .definition = definition};
}

/// The scopes that a name is looked for in, innermost first, with the bases of classes.
std::vector<std::string> Lookup::levels(const Context& context) {
  std::vector<std::string> found;
  std::string_view scope = context.scope;
  while (true) {
    found.emplace_back(scope);
    if (scope.empty()) return found;
    const std::size_t dot = scope.rfind('.');
    scope = dot == std::string_view::npos ? std::string_view() : scope.substr(0, dot);
  }
}

const Candidate* Lookup::class_candidate(const Context& context, std::string_view written) {
  const bool global = written.starts_with("::");
  const std::string path = dotted(global ? written.substr(2) : written);
  const std::size_t dot = path.rfind('.');
  const std::string name = dot == std::string::npos ? path : path.substr(dot + 1);
  const std::string qualifier = dot == std::string::npos ? std::string() : path.substr(0, dot);
  std::vector<const Candidate*> visible;
  for (const Candidate& candidate : world_.definitions(name)) {
    const bool own = candidate.file->id == context.file->id;
    if (is_type(candidate) && (own || is_visible(*candidate.file))) visible.push_back(&candidate);
  }
  if (visible.empty()) return nullptr;
  for (const std::string& level : levels(global ? Context{} : context)) {
    const std::string container = joined(level, qualifier);
    const Candidate* found = nullptr;
    bool several = false;
    for (const Candidate* candidate : visible) {
      if (candidate->container != container) continue;
      const bool own = candidate->file->id == context.file->id;
      const bool found_own = found != nullptr && found->file->id == context.file->id;
      several = found != nullptr && own == found_own;
      if (found == nullptr || (own && !found_own)) found = candidate;
    }
    if (found != nullptr) return several ? nullptr : found;
  }
  return nullptr;
}

Type Lookup::alias_target(const Candidate& alias, int depth) {
  const std::string& type = definition(alias).type;
  if (type.empty() || depth > DEEPEST) return {};
  const Context there = {.file = alias.file, .scope = alias.container};
  return type_named(there, type, depth + 1);
}

/// `Alias::Name`, or a name that a using-declaration brought in.
Type Lookup::indirect_type(const Context& context, std::string_view written, int depth) {
  const std::string path = dotted(written);
  const std::size_t dot = path.rfind('.');
  if (dot != std::string::npos) {
    const Type owner = type_named(context, path.substr(0, dot), depth + 1);
    if (owner.kind != Type::Kind::CLASS) return {};
    const Context inside = {.file = owner.in.file, .scope = owner.in.name};
    const Candidate* found = class_candidate(inside, path.substr(dot + 1));
    return found != nullptr && found->container == owner.in.name
               ? type_named(inside, path.substr(dot + 1), depth + 1)
               : Type{};
  }
  Type made;
  outline(*context.file).each_import(path, [&](const Import& import) {
    if (import.module.starts_with('"')) return false;
    made = type_named({.file = context.file}, import.module + "::" + path, depth + 1);
    return true;
  });
  return made;
}

Type Lookup::type_named(const Context& context, std::string_view written, int depth) {
  written = kit::trimmed(written);
  if (depth > DEEPEST || written.empty()) return {};
  const Candidate* found = class_candidate(context, written);
  if (found == nullptr) {
    const Type type = indirect_type(context, written, depth);
    return type.kind == Type::Kind::CLASS ? type : templated(context, written, depth);
  }
  if (found->kind == Kind::TYPE) return alias_target(*found, depth);
  Type made;
  made.kind = Type::Kind::CLASS;
  made.in = {.file = found->file,
             .definition = found->definition,
             .name = joined(found->container, definition(*found).name)};
  return made;
}

Type Lookup::enclosing_class(const Context& context) {
  std::string_view scope = context.scope;
  while (!scope.empty()) {
    const std::size_t dot = scope.rfind('.');
    const std::string_view name = dot == std::string_view::npos ? scope : scope.substr(dot + 1);
    const std::string_view container =
        dot == std::string_view::npos ? std::string_view() : scope.substr(0, dot);
    const Context around = {.file = context.file, .scope = std::string(container)};
    const Candidate* found = class_candidate(around, name);
    if (found != nullptr && found->kind != Kind::TYPE && found->container == container) {
      Type made;
      made.kind = Type::Kind::CLASS;
      made.in = {.file = found->file, .definition = found->definition, .name = std::string(scope)};
      made.is_this = true;
      return made;
    }
    scope = container;
  }
  return {};
}

bool Lookup::is_local(const Context& context, std::string_view name) const {
  for (DefinitionIndex at = context.definition; at != NOWHERE;
       at = definition_at(facts_, at).parent) {
    if (!kit::is_function_kind(definition_at(facts_, at).kind)) continue;
    for (const Binder& binder : scopes_.find(at, name)) {
      if (binder.kind == Binder::Kind::BINDING) return true;
    }
  }
  return false;
}

const Lookup::Bases& Lookup::bases(const Class& of) {
  const auto [place, added] = bases_.try_emplace({of.file->id, of.definition});
  if (added) add_bases(place->second, of, 0);
  return place->second;
}

void Lookup::add_bases(Bases& line, const Class& of, int depth) {
  const bool repeated =
      std::find(line.classes.begin(), line.classes.end(), of) != line.classes.end();
  if (repeated || depth > DEEPEST) return;
  line.classes.push_back(of);
  const std::string scope(
      of.name.substr(0, of.name.rfind('.') == std::string::npos ? 0 : of.name.rfind('.')));
  const std::vector<std::string> written = outline(*of.file).definition(of.definition).bases;
  for (const std::string& base : written) {
    const Type found = type_named({.file = of.file, .scope = scope}, base, depth + 1);
    if (found.kind == Type::Kind::CLASS) {
      add_bases(line, found.in, depth + 1);
    } else {
      line.complete = false;
    }
  }
}

const std::vector<Class>& Lookup::ancestors(const Class& of, bool& complete) {
  const Bases& line = bases(of);
  complete = line.complete;
  return line.classes;
}

}  // namespace context_delta::indexer::cpp
