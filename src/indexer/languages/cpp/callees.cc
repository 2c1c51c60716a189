#include <algorithm>

#include "indexer/languages/cpp/lookup.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/guesses.h"

namespace context_delta::indexer::cpp {
namespace {

bool is_function(const Candidate& candidate) {
  return c_family::is_family(candidate.file->language) && kit::is_function_kind(candidate.kind);
}

bool is_declaration(const Candidate& candidate) { return (candidate.traits & DECLARATION) != 0; }

std::string joined(std::string_view scope, std::string_view name) {
  std::string whole(scope);
  if (!whole.empty() && !name.empty()) whole += '.';
  return whole += name;
}

Callees doubtful(std::vector<Candidate> fitting, std::string_view why) {
  Callees made;
  made.found = true;
  made.why = why;
  made.fitting = std::move(fitting);
  return made;
}

}  // namespace

/// Picks among the overloads of one scope. `overloads` holds declarations and definitions of one
/// name; `declared_in` is the file of the class, null for functions.
Callees Lookup::chosen(const std::vector<Candidate>& overloads, std::int16_t arguments,
                       const File* declared_in) {
  std::vector<Candidate> fitting;
  std::vector<std::int16_t> shapes;
  for (const Candidate& each : overloads) {
    const bool seen =
        is_visible(*each.file) || (declared_in != nullptr && each.file == declared_in);
    if (!seen || !kit::accepts_arguments(each, arguments)) continue;
    fitting.push_back(each);
    if (std::find(shapes.begin(), shapes.end(), each.most_arguments) == shapes.end()) {
      shapes.push_back(each.most_arguments);
    }
  }
  std::vector<Candidate> definitions;
  std::size_t declarations = 0;
  for (const Candidate& each : fitting) declarations += is_declaration(each) ? 1 : 0;
  for (const Candidate& each : overloads) {
    const bool same_shape =
        std::find(shapes.begin(), shapes.end(), each.most_arguments) != shapes.end();
    if (is_declaration(each) || !same_shape) continue;
    // What is not seen can only be meant through a declaration that is.
    const bool hidden = !is_visible(*each.file) && declared_in == nullptr &&
                        (declarations == 0 || (each.traits & LOCAL_LINKAGE) != 0);
    if (!hidden) definitions.push_back(each);
  }
  Callees made;
  made.found = !fitting.empty() || !definitions.empty();
  if (!made.found) return made;
  std::vector<Candidate> all = definitions.empty() ? fitting : definitions;
  if (arguments == ANY_NUMBER && overloads.size() > 1) {
    return doubtful(std::move(all), "the number of arguments is not known");
  }
  if (shapes.size() > 1 || declarations > 1 || definitions.size() > 1) {
    return doubtful(std::move(all), "several overloads or definitions fit the call");
  }
  if (fitting.empty()) {
    return doubtful(std::move(all), "no declaration of the function is seen from the call");
  }
  if (std::any_of(all.begin(), all.end(), [](const Candidate& each) {
        return (each.traits & (CONDITIONAL | BROKEN | FROM_MACRO)) != 0;
      })) {
    return doubtful(std::move(all), "the definition stands under a condition");
  }
  made.fitting = std::move(all);
  made.sure = !is_declaration(made.fitting.front());
  if (!made.sure) made.why = "the function is declared only";
  return made;
}

Callees Lookup::method(const Class& owner, std::string_view name, std::int16_t arguments,
                       bool may_dispatch) {
  const Bases& line = bases(owner);
  const std::vector<Candidate>& namesakes = world_.definitions(name);
  for (const Class& each : line.classes) {
    std::vector<Candidate> overloads;
    bool declared = false;
    for (const Candidate& candidate : namesakes) {
      if (!is_function(candidate) || candidate.container != each.name) continue;
      const bool in_class =
          candidate.file->id == each.file->id && definition(candidate).parent == each.definition;
      const bool outside =
          !in_class && !is_declaration(candidate) && linkage_.includes(*candidate.file, *each.file);
      declared = declared || in_class;
      if (in_class || outside) overloads.push_back(candidate);
    }
    if (!declared) {
      if (!outline(*each.file).find(each.definition, name).empty()) {
        Callees made;
        made.found = made.external = true;  // a member variable that is called
        return made;
      }
      continue;
    }
    Callees made = chosen(overloads, arguments, each.file);
    if (!made.found) return doubtful(overloads, "the number of arguments does not fit");
    made.rule = "class";
    if (!may_dispatch || !is_virtual(owner, name)) return made;
    std::vector<Candidate> others = overriders(owner, name);
    if (others.empty() && made.sure) return made;
    made.sure = false;
    made.rule = "dispatch";
    made.why = others.empty() ? "the method is declared only" : "a subclass overrides the method";
    made.fitting.insert(made.fitting.end(), others.begin(), others.end());
    return made;
  }
  Callees made;
  made.external = !line.complete;
  return made;
}

bool Lookup::is_virtual(const Class& owner, std::string_view name) {
  for (const Class& each : bases(owner).classes) {
    for (const kit::Binder& binder : outline(*each.file).find(each.definition, name)) {
      if (binder.kind != kit::Binder::Kind::DEFINITION) continue;
      if ((outline(*each.file).definition(binder.index).traits & VIRTUAL) != 0) return true;
    }
  }
  return false;
}

/// The methods of subclasses that take the place of a virtual one.
std::vector<Candidate> Lookup::overriders(const Class& owner, std::string_view name) {
  std::vector<Candidate> found;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (!is_function(candidate) || candidate.container.empty()) continue;
    if (candidate.container == owner.name) continue;
    const kit::Outline& there = outline(*candidate.file);
    const DefinitionIndex parent = there.definition(candidate.definition).parent;
    if (parent == NOWHERE || !kit::is_class_kind(there.definition(parent).kind)) continue;
    const Bases& line =
        bases({.file = candidate.file, .definition = parent, .name = candidate.container});
    const bool below = std::any_of(line.classes.begin() + 1, line.classes.end(),
                                   [&](const Class& each) { return each == owner; });
    if (below) found.push_back(candidate);
  }
  return found;
}

Callees Lookup::function(const Context& context, std::string_view name, std::int16_t arguments) {
  const std::vector<Candidate>& namesakes = world_.definitions(name);
  for (const std::string& level : levels(context)) {
    std::vector<Candidate> overloads;
    bool seen = false;
    for (const Candidate& candidate : namesakes) {
      if (candidate.kind != Kind::FUNCTION || !is_function(candidate)) continue;
      if (candidate.container != level) continue;
      seen = seen || is_visible(*candidate.file);
      overloads.push_back(candidate);
    }
    if (!seen) continue;
    Callees made = chosen(overloads, arguments, nullptr);
    if (!made.found) return doubtful(overloads, "the number of arguments does not fit");
    const Candidate& first = made.fitting.front();
    made.rule = first.file->id == file_.id ? "same-file" : "namespace";
    if (made.sure && (first.traits & GENERIC) != 0) {
      return doubtful(made.fitting, "the function is a template");
    }
    const bool elsewhere = made.sure && !is_visible(*first.file);
    if (elsewhere) {
      const bool declared =
          std::any_of(overloads.begin(), overloads.end(), [&](const Candidate& each) {
            return is_declaration(each) && is_visible(*each.file) &&
                   linkage_.includes(*first.file, *each.file);
          });
      made.rule = "declaration";
      if (!declared) {
        return doubtful(made.fitting, "no header that both files include declares the function");
      }
    }
    return made;
  }
  return {};
}

Callees Lookup::qualified_function(const Context& context, std::string_view qualifier,
                                   std::string_view name, std::int16_t arguments) {
  const std::string path = dotted(qualifier);
  const bool global = qualifier.starts_with("::");
  if (path == "std" || path.starts_with("std.")) {
    Callees made;
    made.external = true;
    return made;
  }
  if (!path.empty()) {
    const Type owner = type_named(context, qualifier.substr(0, qualifier.rfind("::")));
    if (owner.kind == Type::Kind::CLASS) return method(owner.in, name, arguments, false);
  }
  if (global && path.empty()) return function({.file = context.file}, name, arguments);
  for (const std::string& level : levels(context)) {
    const std::string container = joined(level, path);
    Context inside = {.file = context.file, .scope = container};
    const std::vector<Candidate>& namesakes = world_.definitions(name);
    const bool here = std::any_of(namesakes.begin(), namesakes.end(), [&](const Candidate& each) {
      return is_function(each) && each.container == container && is_visible(*each.file);
    });
    if (!here) continue;
    Callees made = function(inside, name, arguments);
    if (made.rule == "namespace") made.rule = "qualified";
    return made;
  }
  return {};
}

Callees Lookup::constructor(const Class& owner, std::int16_t arguments) {
  const std::string name = outline(*owner.file).definition(owner.definition).name;
  Callees made;
  made.found = true;
  std::vector<Candidate> overloads;
  for (const Candidate& candidate : world_.definitions(name)) {
    if (candidate.kind == Kind::CONSTRUCTOR && candidate.container == owner.name &&
        (candidate.file->id == owner.file->id || linkage_.includes(*candidate.file, *owner.file))) {
      overloads.push_back(candidate);
    }
    const bool is_class =
        candidate.file->id == owner.file->id && candidate.definition == owner.definition;
    if (is_class) {
      made.fitting = {candidate};
      made.sure = true;
      made.rule = "constructor";
    }
  }
  Callees best = chosen(overloads, arguments, owner.file);
  if (!best.found || !best.sure) return made;
  best.rule = "constructor";
  return best;
}

}  // namespace context_delta::indexer::cpp
