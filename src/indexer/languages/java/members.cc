#include "indexer/languages/java/members.h"

#include <algorithm>

#include "indexer/languages/java/headers.h"
#include "indexer/languages/kit/facts_builder.h"

namespace context_delta::indexer::java {
namespace {

using kit::Binder;

/// What a parameter or result mentions of the receiver's own type parameters is not known when
/// the receiver's type arguments are not written.
Type seen_from(TypeNames& names, const Type& type, const Type& owner, const Type& receiver) {
  Type made = names.substituted(type, owner);
  if (!receiver.arguments.empty()) made = names.substituted(made, receiver);
  return made;
}

Method method_at(TypeNames& names, const Type& owner, const Type& receiver, DefinitionIndex index) {
  const Definition& definition = names.definition(*owner.file, index);
  Method made;
  made.file = owner.file;
  made.definition = index;
  made.owner = owner;
  if (!receiver.arguments.empty()) {
    for (Type& each : made.owner.arguments) each = names.substituted(each, receiver);
    if (same_class(owner, receiver)) made.owner.arguments = receiver.arguments;
  }
  for (const std::string& written : definition.parameters) {
    made.parameters.push_back(
        seen_from(names, names.read(*owner.file, index, written), owner, receiver));
  }
  made.variadic = !definition.parameters.empty() && definition.parameters.back().ends_with("...");
  return made;
}

/// Whether two parameter lists are the same to the compiler; a type that is not known is.
bool same_parameters(TypeNames& names, const Method& a, const Method& b) {
  if (a.parameters.size() != b.parameters.size()) return false;
  for (std::size_t i = 0; i < a.parameters.size(); ++i) {
    const Type left = names.erased(a.parameters[i]);
    const Type right = names.erased(b.parameters[i]);
    const bool unknown = left.kind == Type::Kind::UNKNOWN || right.kind == Type::Kind::UNKNOWN;
    if (!unknown && !same_type(left, right)) return false;
  }
  return true;
}

/// Private methods of superclasses are not inherited, but classes of one file reach each other's.
bool is_inherited(TypeNames& names, const Definition& method, const Type& owner) {
  return (method.traits & LOCAL_LINKAGE) == 0 || owner.file->id == names.file().id;
}

const Definition* first_abstract(const kit::Outline& outline, DefinitionIndex owner,
                                 std::string_view name) {
  for (const Binder& binder : outline.find(owner, name)) {
    if (binder.kind != Binder::Kind::DEFINITION) continue;
    const Definition& each = outline.definition(binder.index);
    if (each.kind == Kind::METHOD && (each.traits & DECLARATION) != 0) return &each;
  }
  return nullptr;
}

bool is_named(const Type& external, std::string_view name) {
  return external.name == name || simple_name(external.name) == simple_name(name);
}

}  // namespace

Methods methods_of(TypeNames& names, const Type& receiver, std::string_view name) {
  Methods found;
  const Ancestry& line = names.ancestry(receiver);
  found.known = line.known;
  for (const Type& each : line.externals) {
    found.open = found.open || !is_named(each, "java.lang.Object");
  }
  std::size_t position = 0;
  for (const Type& owner : line.classes) {
    const bool own = position++ == 0;
    const kit::Outline& outline = names.outline(*owner.file);
    for (const Binder& binder : outline.find(owner.definition, name)) {
      if (binder.kind != Binder::Kind::DEFINITION) continue;
      const Definition& definition = outline.definition(binder.index);
      if (definition.kind != Kind::METHOD) continue;
      if (!own && !is_inherited(names, definition, owner)) continue;
      Method method = method_at(names, owner, receiver, binder.index);
      const bool overridden =
          !own && std::any_of(found.all.begin(), found.all.end(), [&](const Method& other) {
            return !same_class(other.owner, owner) && same_parameters(names, other, method);
          });
      if (!overridden) found.all.push_back(std::move(method));
    }
  }
  return found;
}

std::vector<Method> constructors_of(TypeNames& names, const Type& type) {
  std::vector<Method> found;
  const kit::Outline& outline = names.outline(*type.file);
  Type owner = type;
  owner.names_type = owner.exact = false;
  const std::string name = names.definition(type).name;
  for (const Binder& binder : outline.find(type.definition, name)) {
    if (binder.kind != Binder::Kind::DEFINITION) continue;
    if (outline.definition(binder.index).kind != Kind::CONSTRUCTOR) continue;
    found.push_back(method_at(names, owner, type, binder.index));
  }
  return found;
}

Type declared_result(TypeNames& names, const Method& method) {
  const Definition& definition = names.definition(*method.file, method.definition);
  if (definition.kind == Kind::CONSTRUCTOR) return method.owner;
  const Type written = names.read(*method.file, method.definition, definition.type);
  return names.substituted(written, method.owner);
}

Type field_of(TypeNames& names, const Type& receiver, std::string_view name, bool& found) {
  found = false;
  for (const Type& owner : names.ancestry(receiver).classes) {
    const kit::Outline& outline = names.outline(*owner.file);
    for (const Binder& binder : outline.find(owner.definition, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      const Binding& binding = outline.binding(binder);
      if (binding.kind != Binding::Kind::MEMBER) continue;
      found = true;
      Type made = seen_from(names, names.read(*owner.file, owner.definition, binding.type), owner,
                            receiver);
      if (binding.value.starts_with("{new ") && binding.value.ends_with('}')) {
        const std::string_view constructed =
            std::string_view(binding.value).substr(5, binding.value.size() - 6);
        made.exact = same_type(names.read(*owner.file, owner.definition, constructed), made);
      }
      return made;
    }
  }
  return {};
}

std::vector<Candidate> overrides_of(TypeNames& names, const Type& owner, const Method& method) {
  std::vector<Candidate> found;
  const Definition& base = names.definition(*method.file, method.definition);
  if ((base.traits & VIRTUAL) == 0) return found;
  for (const Candidate& candidate : names.world().definitions(base.name)) {
    if (candidate.kind != Kind::METHOD || candidate.file->language != owner.file->language)
      continue;
    if ((candidate.traits & STATIC_MEMBER) != 0) continue;
    if (candidate.least_arguments != base.least_arguments) continue;
    const kit::Outline& there = names.outline(*candidate.file);
    const DefinitionIndex parent = there.definition(candidate.definition).parent;
    if (parent == NOWHERE || !kit::is_class_kind(there.definition(parent).kind)) continue;
    Type other;
    other.kind = Type::Kind::CLASS;
    other.file = candidate.file;
    other.definition = parent;
    if (!names.is_below(other, owner)) continue;
    const Method overriding = method_at(names, other, other, candidate.definition);
    for (const Type& line : names.ancestry(other).classes) {
      if (!same_class(line, method.owner)) continue;
      const Method seen = method_at(names, line, line, method.definition);
      if (same_parameters(names, overriding, seen)) found.push_back(candidate);
    }
  }
  return found;
}

const Definition* abstract_method(TypeNames& names, const Type& type) {
  const Definition* found = nullptr;
  for (const Type& owner : names.ancestry(type).classes) {
    if (names.definition(owner).kind != Kind::INTERFACE) return nullptr;
    const kit::Outline& outline = names.outline(*owner.file);
    for (const std::string_view name : outline.members_of_interface(owner.definition)) {
      const Definition* each = first_abstract(outline, owner.definition, name);
      if (each == nullptr) continue;
      if (found != nullptr && found->name != name) return nullptr;
      if (found == nullptr) found = each;
    }
  }
  return found;
}

}  // namespace context_delta::indexer::java
