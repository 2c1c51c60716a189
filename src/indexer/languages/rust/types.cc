#include <algorithm>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/rust/evaluator.h"
#include "indexer/languages/rust/library.h"

namespace context_delta::indexer::rust {
namespace {

using kit::Binder;

constexpr int DEEPEST = 16;

Type external(std::string_view name, std::vector<Type> arguments = {}) {
  Type made;
  made.kind = Type::Kind::EXTERNAL;
  made.name = name;
  made.arguments = std::move(arguments);
  return made;
}

bool is_type_kind(Kind kind) {
  return kind == Kind::STRUCT || kind == Kind::ENUM || kind == Kind::UNION || kind == Kind::TRAIT;
}

}  // namespace

bool same_definition(const Type& a, const Type& b) {
  if (a.kind != b.kind) return false;
  if (a.kind == Type::Kind::EXTERNAL) return a.name == b.name;
  if (a.kind != Type::Kind::NAMED && a.kind != Type::Kind::PARAMETER) return false;
  return a.file->id == b.file->id && a.definition == b.definition && a.name == b.name;
}

/// The type parameter that a name means; what the environment says of it first.
std::optional<Type> Evaluator::parameter(const File& file, DefinitionIndex scope,
                                         std::string_view name, const Environment* environment) {
  const kit::Outline& known = outline(file);
  for (DefinitionIndex at = scope; at != NOWHERE; at = known.definition(at).parent) {
    if (is_module(known.definition(at))) break;
    for (const Binder& binder : known.find(at, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      if ((known.binding(binder).traits & GENERIC) == 0) continue;
      if (environment != nullptr) {
        for (const auto& [parameter, type] : environment->parameters) {
          if (parameter == name) return type;
        }
      }
      Type made;
      made.kind = Type::Kind::PARAMETER;
      made.file = &file;
      made.definition = at;
      made.name = name;
      return made;
    }
  }
  return std::nullopt;
}

Type Evaluator::type_of_text(const File& file, DefinitionIndex scope, std::string_view text,
                             const Environment* environment, int depth) {
  return type_of_text(file, scope, parse_type(text), environment, depth);
}

Type Evaluator::type_of_text(const File& file, DefinitionIndex scope, const TypeText& text,
                             const Environment* environment, int depth) {
  if (depth > DEEPEST) return {};
  const auto inner = [&](const TypeText& part) {
    return type_of_text(file, scope, part, environment, depth + 1);
  };
  Type made;
  switch (text.kind) {
    case TypeText::Kind::PATH:
      return path_type(file, scope, text, environment, depth);
    case TypeText::Kind::QUALIFIED: {
      made = inner(text.parts.front());
      if (text.path.size() != 1) return {};
      return associated(made, text.path.front().name, depth + 1);
    }
    case TypeText::Kind::TUPLE:
      if (text.parts.empty()) return external("()");
      made.kind = Type::Kind::TUPLE;
      for (const TypeText& part : text.parts) made.arguments.push_back(inner(part));
      return made;
    case TypeText::Kind::SLICE:
      return external("[]", {inner(text.parts.front())});
    case TypeText::Kind::FUNCTION:
      return external("fn", text.parts.empty() ? std::vector<Type>()
                                               : std::vector<Type>{inner(text.parts.front())});
    case TypeText::Kind::BOUNDS:
      made.kind = Type::Kind::BOUNDED;
      for (const TypeText& part : text.parts) {
        Type trait = inner(part);
        // A trait by itself reads as any type that has it.
        if (trait.kind == Type::Kind::BOUNDED && !trait.arguments.empty()) {
          trait = Type(trait.arguments.front());
        }
        made.arguments.push_back(std::move(trait));
      }
      return made;
    default:
      return {};
  }
}

Type Evaluator::path_type(const File& file, DefinitionIndex scope, const TypeText& text,
                          const Environment* environment, int depth) {
  const std::vector<Segment>& path = text.path;
  if (path.empty() || path.front().name == "_") return {};
  std::optional<Type> base;
  if (path.front().name == "Self") {
    base = environment != nullptr && environment->self != nullptr ? *environment->self
                                                                  : self_type(file, scope);
  } else {
    base = parameter(file, scope, path.front().name, environment);
  }
  std::size_t used = 1;
  std::vector<Type> arguments;
  std::vector<NamedType> bindings;
  if (!base) {
    const Meaning meaning = path_meaning(file, scope, path, Space::TYPE, used);
    for (const Segment& segment : path) {
      for (const TypeText& each : segment.arguments) {
        arguments.push_back(type_of_text(file, scope, each, environment, depth + 1));
      }
      for (const auto& [name, each] : segment.bindings) {
        bindings.push_back(
            {std::string(name), type_of_text(file, scope, each, environment, depth + 1)});
      }
    }
    if (meaning.kind == Meaning::Kind::EXTERNAL) {
      Type made = external(path.back().name, std::move(arguments));
      made.bindings = std::move(bindings);
      return made;
    }
    if (meaning.kind == Meaning::Kind::UNKNOWN && path.size() == 1 &&
        is_primitive(path.front().name)) {
      return external(path.front().name);
    }
    base = named_type(meaning, arguments, depth + 1);
    if (!meaning.sure) base->doubt = meaning.doubt;
    if (base->kind == Type::Kind::BOUNDED && !base->arguments.empty()) {
      base->arguments.front().bindings = std::move(bindings);
    }
  }
  Type made = *base;
  for (; used < path.size(); ++used) made = associated(made, path[used].name, depth + 1);
  return made;
}

Type Evaluator::named_type(const Meaning& meaning, const std::vector<Type>& arguments, int depth) {
  if (depth > DEEPEST) return {};
  if (meaning.kind != Meaning::Kind::DEFINITION && meaning.kind != Meaning::Kind::VARIANT) {
    return {};
  }
  const Definition& found = definition(*meaning.file, meaning.definition);
  if (found.kind == Kind::TYPE) {
    Environment environment;
    std::size_t index = 0;
    for (const std::string_view name : generics(*meaning.file, meaning.definition)) {
      environment.parameters.push_back(
          {std::string(name), index < arguments.size() ? arguments[index] : Type{}});
      ++index;
    }
    return type_of_text(*meaning.file, meaning.definition, found.type, &environment, depth + 1);
  }
  if (!is_type_kind(found.kind)) return {};
  Type made;
  made.kind = Type::Kind::NAMED;
  made.file = meaning.file;
  made.definition = meaning.definition;
  made.arguments = arguments;
  if (found.kind != Kind::TRAIT) return made;
  Type bounded;
  bounded.kind = Type::Kind::BOUNDED;
  bounded.arguments.push_back(std::move(made));
  return bounded;
}

Type Evaluator::self_type(const File& file, DefinitionIndex scope) {
  for (DefinitionIndex at = scope; at != NOWHERE; at = definition(file, at).parent) {
    const Definition& each = definition(file, at);
    if (is_impl(each)) {
      if (!without_impls_) return impl_self(file, at);
      return type_of_text(file, at, each.type);
    }
    if (is_type_kind(each.kind)) {
      Type made =
          named_type({.kind = Meaning::Kind::DEFINITION, .file = &file, .definition = at}, {}, 0);
      if (made.kind != Type::Kind::NAMED) return made;
      for (const std::string_view name : generics(file, at)) {
        made.arguments.push_back(parameter(file, at, name, nullptr).value_or(Type{}));
      }
      return made;
    }
    if (is_module(each)) break;
  }
  return {};
}

std::vector<Type> Evaluator::direct_traits(const Type& type, int depth) {
  std::vector<Type> found;
  const auto add = [&](const File& file, DefinitionIndex scope, std::string_view bounds) {
    const Type read = type_of_text(file, scope, parse_bounds(bounds), nullptr, depth + 1);
    found.insert(found.end(), read.arguments.begin(), read.arguments.end());
  };
  if (type.kind == Type::Kind::BOUNDED) return type.arguments;
  if (type.kind == Type::Kind::PARAMETER) {
    // A function may ask more of the parameters of its impl.
    for (DefinitionIndex at = type.definition; at != NOWHERE;
         at = definition(*type.file, at).parent) {
      for (const Binder& binder : outline(*type.file).find(at, type.name)) {
        if (binder.kind != Binder::Kind::BINDING) continue;
        add(*type.file, at, outline(*type.file).binding(binder).type);
      }
    }
  } else if (type.kind == Type::Kind::NAMED) {
    for (const std::string& base : definition(*type.file, type.definition).bases) {
      add(*type.file, type.definition, base);
    }
  }
  return found;
}

std::vector<Type> Evaluator::traits_of(const Type& type, int depth) {
  const bool is_parameter = type.kind == Type::Kind::PARAMETER;
  Place place;
  if (is_parameter) {
    place = {type.file->id, type.definition, type.name};
    const auto [known, added] = traits_.try_emplace(place);
    if (!added) return known->second;
  }
  std::vector<Type> found = direct_traits(type, depth);
  constexpr std::size_t MOST = 40;
  for (std::size_t i = 0; i < found.size() && found.size() < MOST; ++i) {
    if (found[i].kind != Type::Kind::NAMED) continue;
    const Type trait = found[i];
    for (Type& above : direct_traits(trait, depth + 1)) {
      const bool repeated = std::any_of(found.begin(), found.end(), [&](const Type& other) {
        return same_definition(other, above);
      });
      if (!repeated) found.push_back(std::move(above));
    }
  }
  if (is_parameter) traits_[place] = found;
  return found;
}

/// What the impls of a type say of an associated type or, as `value` says, constant.
Type Evaluator::impl_member(const Type& base, std::string_view name, std::string_view value,
                            int depth) {
  if (without_impls_ || base.kind != Type::Kind::NAMED) return {};
  for (const Candidate& candidate :
       world_.definitions(definition(*base.file, base.definition).name)) {
    if (candidate.kind != Kind::NAMESPACE || candidate.file->language != file_.language) continue;
    if (!is_impl(definition(*candidate.file, candidate.definition))) continue;
    if (!same_definition(impl_self(*candidate.file, candidate.definition), base)) continue;
    for (const Binder& binder : outline(*candidate.file).find(candidate.definition, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      const Binding& each = outline(*candidate.file).binding(binder);
      if (each.value != value) continue;
      const Environment environment = environment_of(*candidate.file, candidate.definition, base);
      return type_of_text(*candidate.file, candidate.definition, each.type, &environment,
                          depth + 1);
    }
  }
  return {};
}

Type Evaluator::associated(const Type& base, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  if (base.kind == Type::Kind::EXTERNAL) {
    return name == "Item" || name == "Output" || name == "Target" ? element(base) : Type{};
  }
  if (base.kind == Type::Kind::NAMED) return impl_member(base, name, "type", depth + 1);
  const std::vector<Type> traits = traits_of(base, depth + 1);
  for (const Type& trait : traits) {
    for (const auto& [bound, type] : trait.bindings) {
      if (bound == name) return type;
    }
  }
  for (const Type& trait : traits) {
    if (trait.kind != Type::Kind::NAMED) continue;
    for (const Binder& binder : outline(*trait.file).find(trait.definition, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      Type made;
      made.kind = Type::Kind::PARAMETER;
      made.file = trait.file;
      made.definition = trait.definition;
      made.name = name;
      return made;
    }
  }
  return {};
}

void Evaluator::unify(const Type& pattern, const Type& actual, Environment& environment,
                      int depth) {
  if (depth > DEEPEST || !actual.known()) return;
  if (pattern.kind == Type::Kind::PARAMETER) {
    environment.parameters.push_back({pattern.name, actual});
    return;
  }
  if (pattern.kind != actual.kind) return;
  const std::size_t shared = std::min(pattern.arguments.size(), actual.arguments.size());
  for (std::size_t i = 0; i < shared; ++i) {
    unify(pattern.arguments[i], actual.arguments[i], environment, depth + 1);
  }
}

std::vector<std::string_view> Evaluator::generics(const File& file, DefinitionIndex index) {
  std::vector<std::string_view> names = outline(file).type_parameters(index);
  std::erase_if(names, [](std::string_view name) {
    return name.find_first_of("<:&( ") != std::string_view::npos;
  });
  return names;
}

Environment Evaluator::environment_of(const File& file, DefinitionIndex index, const Type& self) {
  Environment made;
  made.self = &self;
  const kit::Outline& known = outline(file);
  DefinitionIndex owner = index;
  while (owner != NOWHERE && !is_impl(known.definition(owner)) &&
         !is_type_kind(known.definition(owner).kind)) {
    owner = known.definition(owner).parent;
  }
  if (owner == NOWHERE || known.definition(owner).kind == Kind::TRAIT) return made;
  const std::vector<std::string_view> names = generics(file, owner);
  if (is_impl(known.definition(owner))) {
    unify(impl_self(file, owner), self, made, 0);
  } else {
    const std::size_t shared = std::min(names.size(), self.arguments.size());
    for (std::size_t i = 0; i < shared; ++i) {
      made.parameters.push_back({std::string(names[i]), self.arguments[i]});
    }
  }
  // What is not said stays open: another place's parameters mean nothing here.
  for (const std::string_view name : names) {
    made.parameters.push_back({std::string(name), Type{}});
  }
  return made;
}

}  // namespace context_delta::indexer::rust
