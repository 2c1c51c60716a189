#include "indexer/languages/java/type_names.h"

#include <algorithm>

#include "indexer/languages/java/headers.h"
#include "indexer/languages/java/library.h"
#include "indexer/languages/support/facts_builder.h"
#include "indexer/languages/support/text.h"

namespace context_delta::indexer::java {
namespace {

using support::Binder;
using support::definition_at;

bool is_type(const Definition& definition) { return support::is_class_kind(definition.kind); }

/// The folder below which the folders of packages lie: files of one such folder are compiled
/// together.
std::string_view source_root(std::string_view path, std::string_view package) {
  std::string_view folder = support::folder_of(path);
  for (std::size_t parts = support::split(package, '.').size(); parts > 0; --parts) {
    folder = support::folder_of(folder);
  }
  return folder;
}

bool is_library_package(std::string_view package) {
  return package.starts_with("java.") || package.starts_with("javax.");
}

}  // namespace

TypeNames::TypeNames(const File& file, const Facts& facts, World& world)
    : file_(file), facts_(facts), world_(world), scopes_(facts) {}

const Facts& TypeNames::facts(const File& file) {
  return file.id == file_.id ? facts_ : world_.facts(file);
}

const support::ScopeIndex& TypeNames::scopes(const File& file) {
  return file.id == file_.id ? scopes_ : support::scopes_of(file, world_);
}

const Definition& TypeNames::definition(const Type& type) {
  return definition_at(facts(*type.file), type.definition);
}

std::string_view TypeNames::package_of(const File& file) {
  const Facts& known = facts(file);
  return known.definitions.empty() ? std::string_view() : known.definitions.front().scope;
}

Type TypeNames::class_type(const File& file, DefinitionIndex index) {
  Type made;
  made.kind = Type::Kind::CLASS;
  made.file = &file;
  made.definition = index;
  made.sure = (definition_at(facts(file), index).traits & BROKEN) == 0;
  return made;
}

Type TypeNames::variable(const File& file, DefinitionIndex scope, std::string_view name) {
  Type made;
  made.kind = Type::Kind::VARIABLE;
  made.file = &file;
  made.definition = scope;
  made.name = name;
  return made;
}

const std::vector<TypeParameter>& TypeNames::parameters_of(const Type& generic) {
  const auto [place, added] = parameters_.try_emplace({generic.file->id, generic.definition});
  if (added) place->second = type_parameters(definition(generic));
  return place->second;
}

Type TypeNames::bound(const Type& variable) {
  for (const TypeParameter& each : parameters_of(variable)) {
    if (each.name != variable.name || each.bound.empty()) continue;
    Type made = read(*variable.file, variable.definition, each.bound, 3);
    if (made.kind == Type::Kind::VARIABLE) made = {};
    made.dimensions = static_cast<std::uint8_t>(made.dimensions + variable.dimensions);
    return made;
  }
  Type object = external("java.lang.Object");
  object.dimensions = variable.dimensions;
  return object;
}

Type TypeNames::erased(const Type& type) {
  return type.kind == Type::Kind::VARIABLE ? bound(type) : type;
}

Type TypeNames::substituted(const Type& type, const Type& owner, int depth) {
  if (owner.arguments.empty() || depth > 4) return type;
  if (type.kind == Type::Kind::VARIABLE) {
    if (type.file->id != owner.file->id || type.definition != owner.definition) return type;
    const std::vector<TypeParameter>& parameters = parameters_of(owner);
    for (std::size_t i = 0; i < parameters.size() && i < owner.arguments.size(); ++i) {
      if (parameters[i].name != type.name) continue;
      Type made = owner.arguments[i];
      made.dimensions = static_cast<std::uint8_t>(made.dimensions + type.dimensions);
      return made;
    }
    return type;
  }
  Type made = type;
  for (Type& argument : made.arguments) argument = substituted(argument, owner, depth + 1);
  return made;
}

Type TypeNames::named(const File& file, DefinitionIndex scope, std::string_view name) {
  std::string key = std::to_string(file.id) + ":" + std::to_string(scope) + ":";
  key += name;
  const auto known = names_.find(key);
  if (known != names_.end()) return known->second;
  const std::size_t dot = name.rfind('.');
  Type made;
  if (dot == std::string_view::npos) {
    made = found_by_name(file, scope, name);
  } else {
    const Type owner = named(file, scope, name.substr(0, dot));
    if (owner.kind == Type::Kind::CLASS) {
      made = member_class(owner, name.substr(dot + 1));
    } else if (owner.kind == Type::Kind::PACKAGE) {
      made = imported(file, name);
      const bool is_class = name[dot + 1] >= 'A' && name[dot + 1] <= 'Z';
      if (made.kind == Type::Kind::UNKNOWN && is_class) made = external(name);
      if (made.kind == Type::Kind::UNKNOWN) {
        made.kind = Type::Kind::PACKAGE;
        made.name = name;
      }
    } else if (owner.kind == Type::Kind::EXTERNAL) {
      made = external(owner.name + std::string(name.substr(dot)));
    }
  }
  names_.emplace(std::move(key), made);
  return made;
}

Type TypeNames::found_by_name(const File& file, DefinitionIndex scope, std::string_view simple) {
  Type found = found_in_scope(file, scope, simple);
  if (found.kind == Type::Kind::UNKNOWN) found = found_in_imports(file, simple);
  if (found.kind == Type::Kind::UNKNOWN) {
    found = class_among(file, package_of(file), simple);
  }
  if (found.kind == Type::Kind::UNKNOWN) found = found_on_demand(file, simple);
  const bool lower = !simple.empty() && simple.front() >= 'a' && simple.front() <= 'z';
  if (found.kind == Type::Kind::UNKNOWN && lower) {
    found.kind = Type::Kind::PACKAGE;
    found.name = simple;
  }
  return found;
}

/// Type parameters, local classes, member classes of the classes around, and the file's own.
Type TypeNames::found_in_scope(const File& file, DefinitionIndex scope, std::string_view simple) {
  const Facts& known = facts(file);
  for (DefinitionIndex at = scope;; at = definition_at(known, at).parent) {
    const bool in_header = at != NOWHERE && at == header_;
    const Type own = in_header ? Type{} : own_class(file, at, simple);
    if (own.kind == Type::Kind::CLASS) return own;
    if (at == NOWHERE) return {};
    const Definition& around = definition_at(known, at);
    if ((around.traits & GENERIC) != 0) {
      const Type generic = variable(file, at, simple);
      for (const TypeParameter& each : parameters_of(generic)) {
        if (each.name == simple) return generic;
      }
    }
    if (is_type(around) && around.name == simple && !is_anonymous(known, at)) {
      return class_type(file, at);
    }
    if (is_type(around) && stage_ != Stage::DIRECT && !in_header && !around.bases.empty()) {
      const Type inherited = member_class(class_type(file, at), simple);
      if (inherited.kind != Type::Kind::UNKNOWN) return inherited;
    }
  }
}

Type TypeNames::found_in_imports(const File& file, std::string_view simple) {
  for (const Import& import : facts(file).imports) {
    if (import.name != simple) continue;
    const std::string qualified = import.module + "." + import.name;
    Type found = imported(file, qualified);
    if (found.kind != Type::Kind::UNKNOWN) return found;
    if ((import.traits & STATIC_MEMBER) == 0) return external(qualified);
    const Type owner = imported(file, import.module);
    if (owner.kind == Type::Kind::CLASS) found = member_class(owner, simple);
    if (found.kind != Type::Kind::UNKNOWN) return found;
  }
  return {};
}

Type TypeNames::found_on_demand(const File& file, std::string_view simple) {
  const LibraryType* library = library_type(simple);
  std::string_view open;  // a package outside the repository that may have the class
  Type found;
  for (const Import& import : facts(file).imports) {
    if (import.name != "*") continue;
    const Type each = imported(file, import.module + "." + std::string(simple));
    if (each.kind == Type::Kind::CLASS) {
      if (found.kind == Type::Kind::CLASS && !same_class(found, each)) found.sure = false;
      if (found.kind != Type::Kind::CLASS) found = each;
    } else if (library != nullptr && library->package == import.module) {
      return external(import.module + "." + std::string(simple));
    } else if (imported(file, import.module).kind == Type::Kind::UNKNOWN) {
      open = import.module;
    }
  }
  if (found.kind == Type::Kind::CLASS) return found;
  if (library != nullptr && library->package == "java.lang") {
    return external("java.lang." + std::string(simple));
  }
  const bool upper = !simple.empty() && simple.front() >= 'A' && simple.front() <= 'Z';
  if (open.empty() || !upper) return {};
  return external((is_library_package(open) ? std::string(open) : "?") + "." + std::string(simple));
}

/// The class of that simple name whose container is a package or class, seen from a file.
Type TypeNames::class_among(const File& importer, std::string_view container,
                            std::string_view simple) {
  std::vector<const Candidate*> same_root;
  std::vector<const Candidate*> others;
  for (const Candidate& candidate : world_.definitions(simple)) {
    if (candidate.container != container || !support::is_class_kind(candidate.kind)) continue;
    if (candidate.file->language != file_.language) continue;
    const bool together = source_root(candidate.file->path, package_of(*candidate.file)) ==
                          source_root(importer.path, package_of(importer));
    (together ? same_root : others).push_back(&candidate);
  }
  if (container.empty()) others.clear();
  const std::vector<const Candidate*>& chosen = same_root.empty() ? others : same_root;
  if (chosen.empty()) return {};
  Type made = class_type(*chosen.front()->file, chosen.front()->definition);
  made.sure = made.sure && chosen.size() == 1;
  return made;
}

Type TypeNames::imported(const File& importer, std::string_view qualified) {
  const std::size_t dot = qualified.rfind('.');
  if (dot == std::string_view::npos) return {};
  return class_among(importer, qualified.substr(0, dot), qualified.substr(dot + 1));
}

/// The class that a scope itself defines.
Type TypeNames::own_class(const File& file, DefinitionIndex scope, std::string_view name) {
  const Facts& known = facts(file);
  for (const Binder& binder : scopes(file).find(scope, name)) {
    const bool is_class = binder.kind == Binder::Kind::DEFINITION &&
                          is_type(definition_at(known, binder.index)) &&
                          !is_anonymous(known, binder.index);
    if (is_class) return class_type(file, binder.index);
  }
  return {};
}

Type TypeNames::member_class(const Type& owner, std::string_view name) {
  if (stage_ == Stage::DIRECT) return own_class(*owner.file, owner.definition, name);
  for (const Type& each : ancestry(owner).classes) {
    const Type found = own_class(*each.file, each.definition, name);
    if (found.kind != Type::Kind::UNKNOWN) return found;
  }
  return {};
}

Type TypeNames::enclosing_class(const File& file, DefinitionIndex scope) {
  const Facts& known = facts(file);
  for (DefinitionIndex at = scope; at != NOWHERE; at = definition_at(known, at).parent) {
    if (is_type(definition_at(known, at))) return class_type(file, at);
  }
  return {};
}

const TypeNames::Supertypes& TypeNames::supertypes(const File& file) {
  if (stage_ == Stage::INHERITED) {
    return world_.remember<Supertypes>("java:direct-supertypes", file,
                                       [&] { return read_supertypes(file, Stage::DIRECT); });
  }
  return world_.remember<Supertypes>("java:supertypes", file,
                                     [&] { return read_supertypes(file, Stage::INHERITED); });
}

TypeNames::Supertypes TypeNames::read_supertypes(const File& file, Stage stage) {
  TypeNames there(file, world_.facts(file), world_);
  there.stage_ = stage;
  Supertypes answer(there.facts_.definitions.size());
  for (std::size_t i = 0; i < answer.size(); ++i) {
    const Definition& each = there.facts_.definitions[i];
    if (!is_type(each) || each.bases.empty()) continue;
    // The type parameters of a class are seen in its own header.
    const auto index = static_cast<DefinitionIndex>(i);
    there.header_ = index;
    for (const std::string& written : written_supertypes(each)) {
      answer[i].push_back(there.read(file, index, written));
    }
  }
  return answer;
}

const Ancestry& TypeNames::ancestry(const Type& of) {
  const auto key = std::pair(of.file->id, of.definition);
  const auto found = ancestries_.find(key);
  if (found != ancestries_.end()) return found->second;
  Type root = of;
  root.arguments.clear();
  root.exact = root.is_this = root.is_super = root.names_type = false;
  root.dimensions = 0;
  Ancestry line;
  add_ancestors(line, root, 0);
  return ancestries_.emplace(key, std::move(line)).first->second;
}

void TypeNames::add_ancestors(Ancestry& line, const Type& of, int depth) {
  const bool repeated = std::any_of(line.classes.begin(), line.classes.end(),
                                    [&](const Type& other) { return same_class(other, of); });
  if (repeated || depth > 30) return;
  line.classes.push_back(of);
  for (const Type& base : supertypes(*of.file)[static_cast<std::size_t>(of.definition)]) {
    if (base.kind == Type::Kind::CLASS) {
      Type above = substituted(base, of);
      line.known = line.known && above.sure;
      add_ancestors(line, above, depth + 1);
    } else if (base.kind == Type::Kind::EXTERNAL) {
      line.externals.push_back(substituted(base, of));
    } else {
      line.known = false;
    }
  }
}

/// Asked of every class that has a method of some name, so it is kept across files.
bool TypeNames::is_below(const Type& of, const Type& base) {
  using Place = std::pair<std::int64_t, DefinitionIndex>;
  using Answer = std::vector<std::vector<Place>>;  // of each definition, the classes above it
  if (of.kind != Type::Kind::CLASS || base.kind != Type::Kind::CLASS) return false;
  const Answer& above = world_.remember<Answer>("java:classes-above", *of.file, [&] {
    TypeNames there(*of.file, world_.facts(*of.file), world_);
    Answer answer(there.facts_.definitions.size());
    for (std::size_t i = 0; i < answer.size(); ++i) {
      const auto index = static_cast<DefinitionIndex>(i);
      if (!is_type(there.facts_.definitions[i])) continue;
      for (const Type& each : there.ancestry(there.class_type(*of.file, index)).classes) {
        answer[i].emplace_back(each.file->id, each.definition);
      }
      answer[i].erase(answer[i].begin());
    }
    return answer;
  });
  const std::vector<Place>& line = above[static_cast<std::size_t>(of.definition)];
  return std::find(line.begin(), line.end(), Place(base.file->id, base.definition)) != line.end();
}

}  // namespace context_delta::indexer::java
