#include <algorithm>
#include <charconv>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/rust/evaluator.h"
#include "indexer/languages/rust/library.h"

namespace context_delta::indexer::rust {
namespace {

using kit::Binder;

constexpr int MOST_DEREFERENCES = 4;
constexpr int DEEPEST = 16;

/// The name of the type or trait that a method stands in.
std::string_view owner_name(const Candidate& candidate) {
  const std::string_view container = candidate.container;
  return container.substr(container.rfind('.') + 1);
}

Callee found_in(const Candidate& candidate, const Type& self, std::string_view rule) {
  return {.kind = Callee::Kind::FOUND,
          .file = candidate.file,
          .definition = candidate.definition,
          .self = self,
          .rule = rule};
}

/// Whether no type can be both, as far as they are known.
bool differ(const Type& a, const Type& b, int depth = 0) {
  using Kind = Type::Kind;
  const bool concrete = (a.kind == Kind::NAMED || a.kind == Kind::EXTERNAL) &&
                        (b.kind == Kind::NAMED || b.kind == Kind::EXTERNAL);
  if (!concrete || depth > DEEPEST) return false;
  if (!same_definition(a, b)) return true;
  const std::size_t shared = std::min(a.arguments.size(), b.arguments.size());
  for (std::size_t i = 0; i < shared; ++i) {
    if (differ(a.arguments[i], b.arguments[i], depth + 1)) return true;
  }
  return false;
}

}  // namespace

const Type& Evaluator::impl_self(const File& file, DefinitionIndex impl) {
  return world_.remember<Type>("rust:impl-self", file, impl, [&] {
    Evaluator there(file, kit::Outline(file, world_), world_);
    there.without_impls_ = true;
    return there.type_of_text(file, impl, there.definition(file, impl).type);
  });
}

const Type& Evaluator::impl_trait(const File& file, DefinitionIndex impl) {
  return world_.remember<Type>("rust:impl-trait", file, impl, [&] {
    Evaluator there(file, kit::Outline(file, world_), world_);
    there.without_impls_ = true;
    const std::vector<std::string>& bases = there.definition(file, impl).bases;
    if (bases.empty()) return Type{};
    Type trait = there.type_of_text(file, impl, bases.front());
    const bool is_bound = trait.kind == Type::Kind::BOUNDED && !trait.arguments.empty();
    return is_bound ? Type(trait.arguments.front()) : trait;
  });
}

/// The only one that fits, or the first of several, unsure.
Callee Evaluator::chosen(const std::vector<Candidate>& candidates, const Type& self,
                         std::string_view rule) {
  std::vector<Candidate> fitting = candidates;
  if (fitting.size() > 1) {
    std::erase_if(fitting, [&](const Candidate& each) {
      const DefinitionIndex parent = definition(*each.file, each.definition).parent;
      return is_impl(definition(*each.file, parent)) && differ(impl_self(*each.file, parent), self);
    });
  }
  if (fitting.empty()) return {.kind = Callee::Kind::MISSING};
  Callee made = found_in(fitting.front(), self, rule);
  if (fitting.size() > 1) {
    made.sure = false;
    made.doubt = "several impls define the method";
  } else if ((fitting.front().traits & BROKEN) != 0) {
    made.sure = false;
    made.doubt = "the definition's text does not parse";
  }
  return made;
}

/// Whether an impl says that the type has the trait, or a trait that requires it.
bool Evaluator::has_trait(const Type& type, const Type& trait) {
  for (const Candidate& candidate :
       world_.definitions(definition(*type.file, type.definition).name)) {
    if (candidate.kind != Kind::NAMESPACE || candidate.file->language != file_.language) continue;
    if (!is_impl(definition(*candidate.file, candidate.definition))) continue;
    if (same_definition(impl_self(*candidate.file, candidate.definition), type) &&
        same_definition(impl_trait(*candidate.file, candidate.definition), trait)) {
      return true;
    }
  }
  return false;
}

Callee Evaluator::method_of_named(const Type& type, std::string_view name) {
  const std::string& type_name = definition(*type.file, type.definition).name;
  std::vector<Candidate> inherent;
  std::vector<Candidate> of_traits;
  std::vector<Candidate> defaults;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (candidate.kind != Kind::METHOD || candidate.file->language != file_.language) continue;
    // Files are opened only where their method may fit.
    const bool of_trait = (candidate.traits & VIRTUAL) != 0;
    if (!of_trait && owner_name(candidate) != type_name) continue;
    const DefinitionIndex parent = definition(*candidate.file, candidate.definition).parent;
    if (parent == NOWHERE) continue;
    const Definition& owner = definition(*candidate.file, parent);
    if (of_trait) {
      Type trait;
      trait.kind = Type::Kind::NAMED;
      trait.file = candidate.file;
      trait.definition = parent;
      if (has_trait(type, trait)) defaults.push_back(candidate);
    } else if (is_impl(owner)) {
      if (!same_definition(impl_self(*candidate.file, parent), type)) continue;
      (owner.bases.empty() ? inherent : of_traits).push_back(candidate);
    }
  }
  if (!inherent.empty()) {
    const Callee found = chosen(inherent, type, "inherent");
    if (found.kind == Callee::Kind::FOUND) return found;
  }
  if (!of_traits.empty()) {
    const Callee found = chosen(of_traits, type, "trait-impl");
    if (found.kind == Callee::Kind::FOUND) return found;
  }
  return chosen(defaults, type, "trait");
}

Callee Evaluator::method_of_traits(const Type& type, std::string_view name) {
  std::vector<Candidate> found;
  const std::vector<Type> traits = traits_of(type);
  bool complete = true;
  for (const Type& trait : traits) complete = complete && trait.known();
  for (const Candidate& candidate : world_.definitions(name)) {
    if ((candidate.traits & VIRTUAL) == 0 || candidate.file->language != file_.language) continue;
    const DefinitionIndex parent = definition(*candidate.file, candidate.definition).parent;
    const bool has = std::any_of(traits.begin(), traits.end(), [&](const Type& trait) {
      return trait.kind == Type::Kind::NAMED && trait.file->id == candidate.file->id &&
             trait.definition == parent;
    });
    if (has) found.push_back(candidate);
  }
  if (found.empty() && !complete) return {};
  return chosen(found, type, "trait");
}

/// A method that a trait of the repository gives to a type of a library, whose own methods are not
/// known: never sure.
Callee Evaluator::method_of_external(const Type& type, std::string_view name) {
  std::vector<Candidate> found;
  if (!is_common_method(name)) {
    for (const Candidate& candidate : world_.definitions(name)) {
      if (candidate.kind != Kind::METHOD || candidate.file->language != file_.language) continue;
      if (owner_name(candidate) != type.name) continue;
      const DefinitionIndex parent = definition(*candidate.file, candidate.definition).parent;
      if (parent == NOWHERE || !is_impl(definition(*candidate.file, parent))) continue;
      if (same_definition(impl_self(*candidate.file, parent), type)) found.push_back(candidate);
    }
  }
  Callee made = chosen(found, type, "trait-impl");
  if (made.kind != Callee::Kind::FOUND) return {.kind = Callee::Kind::EXTERNAL, .self = type};
  made.sure = false;
  if (made.doubt.empty()) made.doubt = "the receiver's type is of another crate";
  return made;
}

Callee Evaluator::find_method(const Type& type, std::string_view name) {
  switch (type.kind) {
    case Type::Kind::NAMED: {
      if (!type.arguments.empty()) return method_of_named(type, name);
      std::optional<Callee>& known = methods_[{type.file->id, type.definition, std::string(name)}];
      if (!known) known = method_of_named(type, name);
      return *known;
    }
    case Type::Kind::PARAMETER:
    case Type::Kind::BOUNDED:
      return method_of_traits(type, name);
    case Type::Kind::EXTERNAL:
      if (is_pointer(type.name) && !is_method_of_pointers(name)) {
        return {.kind = Callee::Kind::MISSING};
      }
      return method_of_external(type, name);
    case Type::Kind::TUPLE:
      return {.kind = Callee::Kind::EXTERNAL, .self = type};
    default:
      return {};
  }
}

Callee Evaluator::method(const Type& type, std::string_view name) {
  Type at = type;
  bool by_deref = false;
  Callee first;
  for (int step = 0; step < MOST_DEREFERENCES; ++step) {
    Callee found = find_method(at, name);
    if (found.kind == Callee::Kind::FOUND && found.sure && !at.doubt.empty()) {
      found.sure = false;
      found.doubt = at.doubt;
    }
    if (found.kind == Callee::Kind::FOUND && by_deref) {
      found.sure = false;
      if (found.doubt.empty()) found.doubt = "the method is reached through Deref";
    }
    if (found.kind != Callee::Kind::MISSING) return found;
    if (step == 0) first = found;
    by_deref = by_deref || at.kind != Type::Kind::EXTERNAL;
    Type next = dereferenced(at);
    if (!next.known()) return at.kind == Type::Kind::EXTERNAL ? Callee{} : first;
    at = std::move(next);
  }
  return first;
}

Type Evaluator::dereferenced(const Type& type, int depth) {
  if (type.kind == Type::Kind::EXTERNAL) {
    if (!is_pointer(type.name) || type.arguments.empty()) return {};
    return type.name == "Cow" ? type.arguments.back() : type.arguments.front();
  }
  if (type.kind == Type::Kind::NAMED || type.kind == Type::Kind::BOUNDED) {
    return associated(type, "Target", depth + 1);
  }
  return {};
}

Type Evaluator::field(const Type& type, std::string_view name, int depth) {
  if (depth > MOST_DEREFERENCES) return {};
  if (type.kind == Type::Kind::TUPLE) {
    std::size_t index = type.arguments.size();
    std::from_chars(name.data(), name.data() + name.size(), index);
    return index < type.arguments.size() ? type.arguments[index] : Type{};
  }
  if (type.kind == Type::Kind::NAMED) {
    for (const Binder& binder : outline(*type.file).find(type.definition, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      const Binding& each = outline(*type.file).binding(binder);
      if (each.value != "field") continue;
      const Environment environment = environment_of(*type.file, type.definition, type);
      Type made = type_of_text(*type.file, type.definition, each.type, &environment, depth + 1);
      if (made.doubt.empty()) made.doubt = type.doubt;
      return made;
    }
  }
  const Type inner = dereferenced(type, depth + 1);
  return inner.known() ? field(inner, name, depth + 1) : Type{};
}

Callee Evaluator::callee_of(const Meaning& meaning, const std::vector<Type>& arguments) {
  Callee made;
  made.sure = meaning.sure;
  made.rule = meaning.rule;
  made.doubt = meaning.doubt;
  if (meaning.kind == Meaning::Kind::EXTERNAL) made.kind = Callee::Kind::EXTERNAL;
  const bool variant = meaning.kind == Meaning::Kind::VARIANT;
  if (!variant && meaning.kind != Meaning::Kind::DEFINITION) return made;
  const Definition& found = definition(*meaning.file, meaning.definition);
  if (!variant && found.kind != Kind::FUNCTION && found.kind != Kind::STRUCT &&
      found.kind != Kind::UNION) {
    return made;
  }
  made.kind = Callee::Kind::FOUND;
  made.file = meaning.file;
  made.definition = meaning.definition;
  if (found.kind != Kind::FUNCTION) made.self = named_type(meaning, arguments, 0);
  return made;
}

/// The method `path.back()` of the type that the parts from `first` on lead to from `type`.
Callee Evaluator::member_callee(const Type& type, const std::vector<Segment>& path,
                                std::size_t first) {
  Type at = type;
  for (std::size_t i = first; i + 1 < path.size(); ++i) at = associated(at, path[i].name);
  return method(at, path.back().name);
}

Callee Evaluator::qualified_callee(const File& file, DefinitionIndex scope, const TypeText& path,
                                   int depth) {
  const Type self = type_of_text(file, scope, path.parts.front(), nullptr, depth + 1);
  if (path.path.empty()) return {};
  if (path.path.size() == 1 && path.parts.size() > 1 && self.kind != Type::Kind::NAMED) {
    const Type trait = type_of_text(file, scope, path.parts[1], nullptr, depth + 1);
    if (trait.kind == Type::Kind::EXTERNAL) return {.kind = Callee::Kind::EXTERNAL, .self = self};
    return method_of_traits(trait, path.path.front().name);
  }
  if (path.path.size() > 1 && path.parts.size() > 1) {
    return member_callee(associated(self, path.path.front().name), path.path, 1);
  }
  return member_callee(self, path.path, 0);
}

Callee Evaluator::path_callee(const File& file, DefinitionIndex scope, const TypeText& text,
                              int depth) {
  if (depth > DEEPEST) return {};
  if (text.kind == TypeText::Kind::QUALIFIED) return qualified_callee(file, scope, text, depth);
  if (text.kind == TypeText::Kind::SLICE && !text.path.empty()) return {};
  const std::vector<Segment>& path = text.path;
  if (path.empty()) return {};
  const bool is_self = path.front().name == "Self";
  const std::optional<Type> base =
      is_self ? self_type(file, scope) : parameter(file, scope, path.front().name, nullptr);
  if (base) {
    if (path.size() > 1) {
      if (is_self && path.size() == 2 && base->kind == Type::Kind::NAMED) {
        Meaning variant = variant_of(*base->file, base->definition, path[1].name);
        variant.rule = "self";
        if (variant.kind == Meaning::Kind::VARIANT) return callee_of(variant, base->arguments);
      }
      return member_callee(*base, path, 1);
    }
    if (!is_self || base->kind != Type::Kind::NAMED) return {};
    Callee made = callee_of({.kind = Meaning::Kind::DEFINITION,
                             .file = base->file,
                             .definition = base->definition,
                             .rule = "self"},
                            base->arguments);
    made.self = *base;
    return made;
  }
  std::vector<Type> arguments;
  for (const Segment& segment : path) {
    for (const TypeText& each : segment.arguments) {
      arguments.push_back(type_of_text(file, scope, each, nullptr, depth + 1));
    }
  }
  std::size_t used = 0;
  const Meaning meaning = path_meaning(file, scope, path, Space::VALUE, used);
  if (meaning.kind == Meaning::Kind::UNKNOWN && path.size() == 2 &&
      is_primitive(path.front().name)) {
    Type primitive;
    primitive.kind = Type::Kind::EXTERNAL;
    primitive.name = path.front().name;
    return method(primitive, path.back().name);
  }
  if (meaning.kind == Meaning::Kind::EXTERNAL) {
    Callee made = {.kind = Callee::Kind::EXTERNAL};
    if (path.size() > 1) {
      made.self.kind = Type::Kind::EXTERNAL;
      made.self.name = path[path.size() - 2].name;
      made.self.arguments = std::move(arguments);
    }
    return made;
  }
  if (used == path.size()) return callee_of(meaning, arguments);
  const Type type = named_type(meaning, arguments, depth + 1);
  if (!type.known()) return {};
  Callee made = member_callee(type, path, used);
  if (!meaning.sure && made.sure) {
    made.sure = false;
    made.doubt = meaning.doubt;
  }
  return made;
}

}  // namespace context_delta::indexer::rust
