#include "indexer/languages/java/type_names.h"

#include <algorithm>

#include "indexer/languages/java/headers.h"
#include "indexer/languages/java/library.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

using kit::Binder;

bool is_type(const Definition& definition) { return kit::is_class_kind(definition.kind); }

/// The folder below which the folders of packages lie: files of one such folder are compiled
/// together.
std::string_view source_root(std::string_view path, std::string_view package) {
  std::string_view folder = kit::folder_of(path);
  for (std::size_t parts = kit::split(package, '.').size(); parts > 0; --parts) {
    folder = kit::folder_of(folder);
  }
  return folder;
}

bool is_library_package(std::string_view package) {
  return package.starts_with("java.") || package.starts_with("javax.");
}

}  // namespace

TypeNames::TypeNames(const File& file, const kit::Outline& own, World& world,
                     std::string_view package)
    : file_(file), world_(world), package_(package) {
  outlines_.emplace(file.id, own);
}

const kit::Outline& TypeNames::outline(const File& file) {
  const auto place = outlines_.find(file.id);
  if (place != outlines_.end()) return place->second;
  return outlines_.emplace(file.id, kit::Outline(file, world_)).first->second;
}

/// The package that a scope stands in, as the outermost class around it says.
std::string_view TypeNames::package_of(const File& file, DefinitionIndex scope) {
  if (scope == NOWHERE) return package_;
  const Definition* around = &definition(file, scope);
  while (around->parent != NOWHERE) around = &definition(file, around->parent);
  return around->scope;
}

Type TypeNames::class_type(const File& file, DefinitionIndex index) {
  Type made;
  made.kind = Type::Kind::CLASS;
  made.file = &file;
  made.definition = index;
  made.sure = (definition(file, index).traits & BROKEN) == 0;
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
      made = imported(file, scope, name);
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
  if (found.kind == Type::Kind::UNKNOWN) found = found_in_imports(file, scope, simple);
  if (found.kind == Type::Kind::UNKNOWN) {
    found = class_among(file, scope, package_of(file, scope), simple);
  }
  if (found.kind == Type::Kind::UNKNOWN) found = found_on_demand(file, scope, simple);
  const bool lower = !simple.empty() && simple.front() >= 'a' && simple.front() <= 'z';
  if (found.kind == Type::Kind::UNKNOWN && lower) {
    found.kind = Type::Kind::PACKAGE;
    found.name = simple;
  }
  return found;
}

/// Type parameters, local classes, member classes of the classes around, and the file's own.
Type TypeNames::found_in_scope(const File& file, DefinitionIndex scope, std::string_view simple) {
  const kit::Outline& known = outline(file);
  for (DefinitionIndex at = scope;; at = known.definition(at).parent) {
    const bool in_header = at != NOWHERE && at == header_;
    const Type own = in_header ? Type{} : own_class(file, at, simple);
    if (own.kind == Type::Kind::CLASS) return own;
    if (at == NOWHERE) return {};
    const Definition& around = known.definition(at);
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

Type TypeNames::found_in_imports(const File& file, DefinitionIndex scope, std::string_view simple) {
  Type found;
  outline(file).each_import(simple, [&](const Import& import) {
    const std::string qualified = import.module + "." + import.name;
    found = imported(file, scope, qualified);
    if (found.kind != Type::Kind::UNKNOWN) return true;
    if ((import.traits & STATIC_MEMBER) == 0) {
      found = external(qualified);
      return true;
    }
    const Type owner = imported(file, scope, import.module);
    if (owner.kind == Type::Kind::CLASS) found = member_class(owner, simple);
    return found.kind != Type::Kind::UNKNOWN;
  });
  return found;
}

Type TypeNames::found_on_demand(const File& file, DefinitionIndex scope, std::string_view simple) {
  const LibraryType* library = library_type(simple);
  std::string_view open;  // a package outside the repository that may have the class
  Type found;
  bool in_library = false;
  outline(file).each_import("*", [&](const Import& import) {
    const std::string qualified = import.module + "." + std::string(simple);
    const Type each = imported(file, scope, qualified);
    if (each.kind == Type::Kind::CLASS) {
      if (found.kind == Type::Kind::CLASS && !same_class(found, each)) found.sure = false;
      if (found.kind != Type::Kind::CLASS) found = each;
    } else if (library != nullptr && library->package == import.module) {
      found = external(qualified);
      in_library = true;
    } else if (imported(file, scope, import.module).kind == Type::Kind::UNKNOWN) {
      open = import.module;
    }
    return in_library;
  });
  if (in_library) return found;
  if (found.kind == Type::Kind::CLASS) return found;
  if (library != nullptr && library->package == "java.lang") {
    return external("java.lang." + std::string(simple));
  }
  const bool upper = !simple.empty() && simple.front() >= 'A' && simple.front() <= 'Z';
  if (open.empty() || !upper) return {};
  return external((is_library_package(open) ? std::string(open) : "?") + "." + std::string(simple));
}

/// The class of that simple name whose container is a package or class, seen from a file.
Type TypeNames::class_among(const File& importer, DefinitionIndex scope, std::string_view container,
                            std::string_view simple) {
  std::vector<const Candidate*> same_root;
  std::vector<const Candidate*> others;
  for (const Candidate& candidate : world_.definitions(simple)) {
    if (candidate.container != container || !kit::is_class_kind(candidate.kind)) continue;
    if (candidate.file->language != file_.language) continue;
    const bool together =
        source_root(candidate.file->path, package_of(*candidate.file, candidate.definition)) ==
        source_root(importer.path, package_of(importer, scope));
    (together ? same_root : others).push_back(&candidate);
  }
  if (container.empty()) others.clear();
  const std::vector<const Candidate*>& chosen = same_root.empty() ? others : same_root;
  if (chosen.empty()) return {};
  Type made = class_type(*chosen.front()->file, chosen.front()->definition);
  made.sure = made.sure && chosen.size() == 1;
  return made;
}

Type TypeNames::imported(const File& importer, DefinitionIndex scope, std::string_view qualified) {
  const std::size_t dot = qualified.rfind('.');
  if (dot == std::string_view::npos) return {};
  return class_among(importer, scope, qualified.substr(0, dot), qualified.substr(dot + 1));
}

/// The class that a scope itself defines.
Type TypeNames::own_class(const File& file, DefinitionIndex scope, std::string_view name) {
  const kit::Outline& known = outline(file);
  for (const Binder& binder : known.find(scope, name)) {
    const bool is_class = binder.kind == Binder::Kind::DEFINITION &&
                          is_type(known.definition(binder.index)) &&
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
  for (DefinitionIndex at = scope; at != NOWHERE; at = definition(file, at).parent) {
    if (is_type(definition(file, at))) return class_type(file, at);
  }
  return {};
}

const std::vector<Type>& TypeNames::supertypes(const Type& of) {
  const bool direct = stage_ == Stage::INHERITED;
  return world_.remember<std::vector<Type>>(
      direct ? "java:direct-supertypes" : "java:supertypes", *of.file, of.definition,
      [&] { return read_supertypes(of, direct ? Stage::DIRECT : Stage::INHERITED); });
}

std::vector<Type> TypeNames::read_supertypes(const Type& of, Stage stage) {
  TypeNames there(*of.file, kit::Outline(*of.file, world_), world_);
  there.stage_ = stage;
  // The type parameters of a class are seen in its own header.
  there.header_ = of.definition;
  std::vector<Type> answer;
  const Definition& own = there.definition(of);
  if (own.bases.empty()) return answer;
  for (const std::string& written : written_supertypes(own)) {
    answer.push_back(there.read(*of.file, of.definition, written));
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
  for (const Type& base : supertypes(of)) {
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
  using Answer = std::vector<Place>;
  if (of.kind != Type::Kind::CLASS || base.kind != Type::Kind::CLASS) return false;
  const Answer& line = world_.remember<Answer>("java:classes-above", *of.file, of.definition, [&] {
    TypeNames there(*of.file, kit::Outline(*of.file, world_), world_);
    Answer answer;
    for (const Type& each : there.ancestry(there.class_type(*of.file, of.definition)).classes) {
      answer.emplace_back(each.file->id, each.definition);
    }
    answer.erase(answer.begin());
    return answer;
  });
  return std::find(line.begin(), line.end(), Place(base.file->id, base.definition)) != line.end();
}

}  // namespace context_delta::indexer::java
