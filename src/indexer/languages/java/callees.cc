#include <algorithm>

#include "indexer/languages/java/library.h"
#include "indexer/languages/java/values.h"
#include "indexer/languages/kit/facts_builder.h"

namespace context_delta::indexer::java {
namespace {

using kit::definition_at;

/// Picks among the methods of a class; a class with supertypes out of sight may inherit another.
Callee picked(TypeNames& names, const Type& receiver, Methods methods, const Arguments& arguments) {
  Callee made;
  made.receiver = receiver;
  made.choice = choose(names, methods.all, arguments, methods.open || !methods.known);
  if (!made.choice.fitting.empty() || methods.all.empty()) return made;
  const std::size_t count = arguments.types.size();
  const bool counted = std::any_of(methods.all.begin(), methods.all.end(), [&](const Method& each) {
    return each.variadic || each.parameters.size() == count;
  });
  made.outside = methods.open && !counted;
  if (!made.outside) made.choice = {.fitting = methods.all, .sure = false};
  made.doubt = "no method of the name takes these arguments";
  return made;
}

}  // namespace

/// Calls of one name on one class mean the same methods throughout a file.
const Methods& Values::methods(const Type& receiver, std::string_view name) {
  if (!receiver.arguments.empty()) {
    last_methods_ = methods_of(names_, receiver, name);
    return last_methods_;
  }
  std::string key = std::to_string(receiver.file->id) + ":" + std::to_string(receiver.definition) +
                    ":" + std::string(name);
  const auto found = methods_.find(key);
  if (found != methods_.end()) return found->second;
  return methods_.emplace(std::move(key), methods_of(names_, receiver, name)).first->second;
}

Callee Values::on(const Type& receiver, std::string_view name, const Arguments& arguments) {
  Callee made;
  made.receiver = receiver;
  if (receiver.kind == Type::Kind::VARIABLE && receiver.dimensions == 0) {
    return on(names_.bound(receiver), name, arguments);
  }
  if (!receiver.is_class()) {
    const bool unknown = receiver.kind == Type::Kind::UNKNOWN ||
                         receiver.kind == Type::Kind::CHOICE ||
                         receiver.kind == Type::Kind::PACKAGE;
    made.outside = !unknown || receiver.dimensions > 0 || receiver.outside;
    return made;
  }
  const Methods& found = methods(receiver, name);
  if (!found.all.empty()) {
    made = picked(names_, receiver, found, arguments);
    if (!receiver.sure) made.doubt = "several classes have the receiver's name";
    return made;
  }
  // Inherited from outside, or made by the compiler: of a record, an enum, java.lang.Object.
  made.outside = found.known;
  return made;
}

Callee Values::bare(DefinitionIndex scope, std::string_view name, const Arguments& arguments) {
  bool open = false;
  bool known = true;
  Type owner = names_.enclosing_class(file_, scope);
  while (owner.kind == Type::Kind::CLASS) {
    owner.is_this = true;
    const Methods& found = methods(owner, name);
    if (!found.all.empty()) {
      Callee made = picked(names_, owner, found, arguments);
      if (!known || (open && is_common_method(name))) {
        made.doubt = "a class in between may inherit a method of the name";
      }
      return made;
    }
    open = open || found.open;
    known = known && found.known;
    owner = names_.enclosing_class(file_, definition_at(facts_, owner.definition).parent);
  }
  Callee made = statically_imported(name, arguments);
  if (!made.choice.fitting.empty() || made.outside) return made;
  made.outside = known;
  made.receiver = names_.enclosing_class(file_, scope);
  return made;
}

Callee Values::statically_imported(std::string_view name, const Arguments& arguments) {
  Methods methods;
  Type owner;
  bool outside = false;
  bool single = false;  // by name, which goes before imports on demand
  for (const Import& import : facts_.imports) {
    if ((import.traits & STATIC_MEMBER) == 0) continue;
    const bool named = import.name == name;
    if (!named && (import.name != "*" || single)) continue;
    const Type each = names_.imported(file_, NOWHERE, import.module);
    if (each.kind != Type::Kind::CLASS) {
      outside = outside || named;
      methods.open = true;
      continue;
    }
    Methods found = methods_of(names_, each, name);
    if (found.all.empty()) continue;
    if (named && !single) methods.all.clear();
    single = single || named;
    owner = each;
    methods.known = methods.known && each.sure;
    for (Method& method : found.all) methods.all.push_back(std::move(method));
  }
  Callee made;
  if (methods.all.empty()) {
    made.outside = outside;
    return made;
  }
  made = picked(names_, owner, methods, arguments);
  made.imported = true;
  return made;
}

}  // namespace context_delta::indexer::java
