#include <algorithm>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/rust/evaluator.h"
#include "indexer/languages/rust/library.h"
#include "indexer/languages/rust/manifest.h"

namespace context_delta::indexer::rust {
namespace {

using kit::Binder;

/// How many imports, globs and paths are followed.
constexpr int DEEPEST = 16;

Meaning unsure(Meaning meaning, std::string_view doubt) {
  meaning.sure = false;
  if (meaning.doubt.empty()) meaning.doubt = doubt;
  return meaning;
}

bool same(const Meaning& a, const Meaning& b) {
  return a.kind == b.kind && a.definition == b.definition && a.variant == b.variant &&
         (a.file == nullptr || b.file == nullptr ? a.file == b.file : a.file->id == b.file->id);
}

bool is_in_space(const Definition& definition, Space space) {
  switch (definition.kind) {
    case Kind::MACRO:
      return space == Space::MACRO;
    case Kind::FUNCTION:
    case Kind::VARIABLE:
      return space == Space::VALUE;
    case Kind::STRUCT:
      return space != Space::MACRO;
    case Kind::NAMESPACE:
      return space == Space::TYPE && is_module(definition);
    case Kind::ENUM:
    case Kind::UNION:
    case Kind::TRAIT:
    case Kind::TYPE:
      return space == Space::TYPE;
    default:
      return false;
  }
}

}  // namespace

Evaluator::Evaluator(const File& file, const kit::Outline& own, World& world)
    : file_(file), world_(world) {
  outlines_.emplace(file.id, own);
}

const kit::Outline& Evaluator::outline(const File& file) {
  const auto place = outlines_.find(file.id);
  if (place != outlines_.end()) return place->second;
  return outlines_.emplace(file.id, kit::Outline(file, world_)).first->second;
}

/// The items of a scope that have a name; several only when their attributes or macros choose.
Meaning Evaluator::combined(const File& file, Binders binders, Space space, int depth,
                            const Import* except, bool public_only) {
  const kit::Outline& known = outline(file);
  Meaning external;
  std::vector<Meaning> found;
  for (const Binder& binder : binders) {
    Meaning meaning;
    if (binder.kind == Binder::Kind::DEFINITION) {
      const Definition& each = known.definition(binder.index);
      if (!is_in_space(each, space)) continue;
      if (public_only && (each.traits & LOCAL_LINKAGE) != 0) continue;
      meaning.kind = is_module(each) ? Meaning::Kind::MODULE : Meaning::Kind::DEFINITION;
      meaning.file = &file;
      meaning.definition = binder.index;
      meaning.rule = "same-file";
      if ((each.traits & BROKEN) != 0) {
        meaning = unsure(meaning, "the definition's text does not parse");
      }
    } else if (binder.kind == Binder::Kind::IMPORT) {
      const Import& import = known.import(binder);
      if (&import == except || import.name == "*") continue;
      if (public_only && (import.traits & LOCAL_LINKAGE) != 0) continue;
      meaning = import_meaning(file, import, space, depth + 1);
      if ((import.traits & CONDITIONAL) != 0 && meaning.kind == Meaning::Kind::EXTERNAL) {
        external.doubt = "the import stands under a condition";
      }
    }
    if (meaning.kind == Meaning::Kind::EXTERNAL) external.kind = meaning.kind;
    if (meaning.kind == Meaning::Kind::UNKNOWN || meaning.kind == Meaning::Kind::EXTERNAL) continue;
    const bool known_already = std::any_of(
        found.begin(), found.end(), [&](const Meaning& other) { return same(meaning, other); });
    if (!known_already) found.push_back(meaning);
  }
  if (found.empty()) return external;
  if (found.size() > 1) return unsure(found.front(), "the name is defined more than once");
  if (!external.doubt.empty()) return unsure(found.front(), external.doubt);
  return found.front();
}

Meaning Evaluator::name_meaning(const File& file, DefinitionIndex scope, std::string_view name,
                                Space space, int depth, const Import* except) {
  if (except != nullptr || asking_ > 0 || depth > DEEPEST / 2) {
    return found_name(file, scope, name, space, depth, except);
  }
  const auto key = std::tuple(file.id, scope, std::string(name), space);
  const auto known = names_.find(key);
  if (known != names_.end()) return known->second;
  return names_[key] = found_name(file, scope, name, space, depth, except);
}

Meaning Evaluator::found_name(const File& file, DefinitionIndex scope, std::string_view name,
                              Space space, int depth, const Import* except) {
  if (depth > DEEPEST) return {};
  const kit::Outline& known = outline(file);
  DefinitionIndex at = scope;
  while (true) {
    const Definition* own = at == NOWHERE ? nullptr : &known.definition(at);
    const bool is_scope = own == nullptr || is_module(*own) || kit::is_function_kind(own->kind);
    if (is_scope) {
      Meaning found = combined(file, known.find(at, name), space, depth, except);
      const bool by_glob = except != nullptr && except->name == "*";
      if (found.kind == Meaning::Kind::UNKNOWN && !by_glob) {
        found = glob_member(module_around(file, known, at), at, name, space, depth);
      }
      if (found.kind != Meaning::Kind::UNKNOWN) return found;
    }
    if (own == nullptr || is_module(*own)) break;
    at = own->parent;
  }
  return outer_name(file, name, space);
}

/// Names that need no import: crates, and what every crate has.
Meaning Evaluator::outer_name(const File& file, std::string_view name, Space space) {
  if (is_standard_crate(name)) return {.kind = Meaning::Kind::EXTERNAL};
  if (space == Space::TYPE) {
    const File* manifest = manifest_of(file.path, world_);
    if (manifest != nullptr) {
      const Dependency found = dependency(*manifest, name, world_);
      if (found.root != nullptr) {
        return {.kind = Meaning::Kind::MODULE, .file = found.root, .rule = "import"};
      }
      if (found.known) return {.kind = Meaning::Kind::EXTERNAL};
    }
  }
  if (is_in_prelude(name)) return {.kind = Meaning::Kind::EXTERNAL};
  return {};
}

Meaning Evaluator::import_meaning(const File& file, const Import& import, Space space, int depth) {
  if (depth > DEEPEST) return {};
  if (is_module_declaration(import)) {
    if (space != Space::TYPE) return {};
    const File* found = declared_module(file, outline(file), import, world_);
    if (found == nullptr) return {};
    return {.kind = Meaning::Kind::MODULE, .file = found, .rule = "import"};
  }
  TypeText path = parse_type(import.module);
  if (import.module == "::") path.path.clear();
  if (import.name != "*") path.path.push_back({import.name, {}, {}});
  std::size_t used = 0;
  const bool outside = import.module.starts_with("::");
  Meaning found;
  if (outside && path.path.size() == 1) {
    found = outer_name(file, import.name, space);
  } else {
    found = path_meaning(file, import.scope, path.path, space, used, depth + 1, &import);
    if (used != path.path.size() && found.kind != Meaning::Kind::EXTERNAL) return {};
  }
  if (found.kind == Meaning::Kind::DEFINITION || found.kind == Meaning::Kind::VARIANT) {
    found.rule = "import";
  }
  return found;
}

Meaning Evaluator::path_meaning(const File& file, DefinitionIndex scope,
                                const std::vector<Segment>& path, Space space, std::size_t& used,
                                int depth, const Import* except) {
  used = 0;
  if (path.empty() || depth > DEEPEST) return {};
  Meaning at;
  const std::string_view first = path[0].name;
  const auto space_of = [&](std::size_t index) {
    return index + 1 == path.size() ? space : Space::TYPE;
  };
  if (first == "crate" || first == "$crate") {
    at = {.kind = Meaning::Kind::MODULE, .file = &crate_root(file, world_), .rule = "path"};
  } else if (first == "self" || first == "super") {
    Module module = module_around(file, outline(file), scope);
    for (used = 0; used < path.size() && path[used].name == (used == 0 ? first : "super"); ++used) {
      if (path[used].name == "self") continue;
      const std::optional<Module> parent = parent_module(module, outline(*module.file), world_);
      if (!parent) return {};
      module = *parent;
    }
    --used;
    at = {.kind = Meaning::Kind::MODULE,
          .file = module.file,
          .definition = module.definition,
          .rule = "path"};
  } else {
    at = name_meaning(file, scope, first, space_of(0), depth + 1, except);
    if (at.kind == Meaning::Kind::UNKNOWN && except != nullptr) {
      // The paths of imports of older editions start at the crate.
      at = module_member({&crate_root(file, world_), NOWHERE}, first, space_of(0), depth + 1);
    }
  }
  for (++used; used < path.size(); ++used) {
    Meaning next;
    if (at.kind == Meaning::Kind::MODULE) {
      next = module_member({at.file, at.definition}, path[used].name, space_of(used), depth + 1);
      next.rule = "path";
    } else if (at.kind == Meaning::Kind::DEFINITION) {
      next = variant_of(*at.file, at.definition, path[used].name);
      if (next.kind == Meaning::Kind::UNKNOWN) return at;
      next.rule = at.rule;
    } else {
      return at;
    }
    if (!at.sure) next = unsure(next, at.doubt);
    at = next;
  }
  return at;
}

Meaning Evaluator::variant_of(const File& file, DefinitionIndex index, std::string_view name) {
  if (definition(file, index).kind == Kind::TYPE) {
    constexpr int MOST_ALIASES = 4;
    if (following_ == MOST_ALIASES) return {};
    ++following_;
    const Type type = type_of_text(file, index, definition(file, index).type);
    --following_;
    if (type.kind != Type::Kind::NAMED ||
        definition(*type.file, type.definition).kind == Kind::TYPE)
      return {};
    return variant_of(*type.file, type.definition, name);
  }
  if (definition(file, index).kind != Kind::ENUM) return {};
  for (const Binder& binder : outline(file).find(index, name)) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    if (outline(file).binding(binder).value != "variant") continue;
    return {.kind = Meaning::Kind::VARIANT,
            .file = &file,
            .definition = index,
            .variant = binder.index,
            .rule = "same-file"};
  }
  return {};
}

Meaning Evaluator::module_member(const Module& module, std::string_view name, Space space,
                                 int depth, bool public_only) {
  if (depth > DEEPEST) return {};
  const Binders binders = outline(*module.file).find(module.definition, name);
  const Meaning found = combined(*module.file, binders, space, depth + 1, nullptr, public_only);
  if (found.kind != Meaning::Kind::UNKNOWN) return found;
  return glob_member(module, module.definition, name, space, depth + 1);
}

/// What the `use a::*` of a scope bring; those of several must agree.
Meaning Evaluator::glob_member(const Module& module, DefinitionIndex scope, std::string_view name,
                               Space space, int depth) {
  if (depth > DEEPEST) return {};
  if (!asked_.emplace(module.file->id, scope, std::string(name), space).second) return {};
  ++asking_;
  const Meaning found = asked_globs(module, scope, name, space, depth);
  if (--asking_ == 0) asked_.clear();
  return found;
}

Meaning Evaluator::asked_globs(const Module& module, DefinitionIndex scope, std::string_view name,
                               Space space, int depth) {
  const kit::Outline& known = outline(*module.file);
  const std::string wildcards =
      wildcard_name(scope == NOWHERE ? "" : std::string_view(known.definition(scope).name));
  Meaning found;
  for (const Binder& binder : known.find(scope, wildcards)) {
    if (binder.kind != Binder::Kind::IMPORT) continue;
    const Import& import = known.import(binder);
    const Meaning from = import_meaning(*module.file, import, Space::TYPE, depth + 1);
    Meaning member;
    if (from.kind == Meaning::Kind::MODULE) {
      const Module owner = {from.file, from.definition};
      if (owner.is(module)) continue;
      member = module_member(owner, name, space, depth + 1, !is_inside(module, owner));
    } else if (from.kind == Meaning::Kind::DEFINITION) {
      member = variant_of(*from.file, from.definition, name);
    }
    if (member.kind == Meaning::Kind::UNKNOWN || member.kind == Meaning::Kind::EXTERNAL) continue;
    member.rule = "glob";
    if (!from.sure) member = unsure(member, from.doubt);
    if (found.kind != Meaning::Kind::UNKNOWN && !same(found, member)) {
      return unsure(found, "several wildcard imports bring the name");
    }
    if (found.kind == Meaning::Kind::UNKNOWN) found = member;
  }
  return found;
}

/// Private items are visible in their module and those below.
bool Evaluator::is_inside(const Module& inner, const Module& outer) {
  std::optional<Module> at = inner;
  for (int step = 0; at && step < DEEPEST * 2; ++step) {
    if (at->is(outer)) return true;
    at = parent_module(*at, outline(*at->file), world_);
  }
  return false;
}

}  // namespace context_delta::indexer::rust
