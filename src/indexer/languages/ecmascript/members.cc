#include <algorithm>

#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/ecmascript/values.h"
#include "indexer/languages/kit/facts_builder.h"

/// Members of classes, objects, modules and functions.
namespace context_delta::indexer::ecmascript {
namespace {

using kit::Binder;
using kit::definition_at;

constexpr std::size_t MOST_ANCESTORS = 60;

/// `this.run = this.run.bind(this)` leaves the member what it is.
bool binds_itself(const Binding& binding) {
  return binding.value == "this." + binding.name + ".bind()";
}

bool has_members(Kind kind) {
  return kit::is_class_kind(kind) || kind == Kind::TYPE || kind == Kind::NAMESPACE;
}

}  // namespace

Value Evaluator::member(const Value& owner, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  Value added = added_member(owner, name, depth + 1);
  if (owner.kind == Value::Kind::UNKNOWN || owner.kind == Value::Kind::INSTANCE ||
      owner.kind == Value::Kind::EXTERNAL) {
    // It takes the place of a member that is not known.
    if (added.kind != Value::Kind::UNKNOWN)
      added = unsure(added, "the member is assigned elsewhere");
  }
  const bool is_added = added.kind != Value::Kind::UNKNOWN || !added.sure;
  if (is_added && owner.kind == Value::Kind::UNKNOWN) return added;
  Value found;
  switch (owner.kind) {
    case Value::Kind::MODULE:
      found = exported(*owner.file, name, Space::VALUES, depth + 1);
      if (found.is_definition()) found.rule = "import";
      break;
    case Value::Kind::NAMESPACE:
      found = own_member(owner, name, true, depth + 1);
      break;
    case Value::Kind::CLASS:
    case Value::Kind::INSTANCE:
    case Value::Kind::SUPER:
      found = class_member(owner, name, depth + 1);
      break;
    case Value::Kind::OBJECT:
      found = object_member(owner, name, depth + 1);
      break;
    case Value::Kind::FUNCTION:
      found = own_member(owner, name, true, depth + 1);
      if (found.kind == Value::Kind::UNKNOWN && found.sure && !is_added) {
        return {.kind = Value::Kind::EXTERNAL, .rule = "function"};
      }
      break;
    case Value::Kind::EXTERNAL:
      if (!is_added) return {.kind = Value::Kind::EXTERNAL};
      break;
    default:
      return {};
  }
  if (is_added) {
    const bool alone = found.kind == Value::Kind::UNKNOWN || found.kind == Value::Kind::EXTERNAL;
    found = alone ? added : unsure(found, "the member is assigned elsewhere");
  }
  return owner.sure ? found : unsure(found, owner.doubt);
}

/// `variable.name = ...`, written where the variable is declared or below.
Value Evaluator::added_member(const Value& owner, std::string_view name, int depth) {
  if (owner.home.file == nullptr || owner.home.name.empty()) return {};
  const File& file = *owner.home.file;
  const Binders binders =
      scopes(file).find(owner.home.scope, owner.home.name + "." + std::string(name));
  Value made;
  bool first = true;
  std::size_t looked_at = 0;
  for (const Binder& binder : binders) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    const Value found = binding_value(
        file, facts(file).bindings[static_cast<std::size_t>(binder.index)], depth + 1);
    if (found.kind == Value::Kind::NONE) continue;
    const bool crowded = ++looked_at > MOST_MEANINGS;
    if (crowded || (!first && !same_meaning(made, found))) {
      return unsure(made, "the member is assigned more than once");
    }
    made = found;
    first = false;
  }
  return made;
}

bool Evaluator::names_member(const File& file, const Binder& binder) {
  if (binder.kind != Binder::Kind::BINDING) return false;
  const Binding& binding = facts(file).bindings[static_cast<std::size_t>(binder.index)];
  return binding.kind == Binding::Kind::MEMBER || file.id == file_.id;
}

Value Evaluator::object_member(const Value& owner, std::string_view name, int depth) {
  const auto members = [&](std::string_view each) {
    const Binders found =
        scopes(*owner.file).find(owner.definition, owner.object + "." + std::string(each));
    // Other files' locals are not theirs to know.
    const bool hidden = !found.empty() && !names_member(*owner.file, found.front());
    return hidden ? Binders() : found;
  };
  Value made;
  bool first = true;
  std::size_t looked_at = 0;
  for (const Binder& binder : members(name)) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    const Value found = binding_value(
        *owner.file, facts(*owner.file).bindings[static_cast<std::size_t>(binder.index)],
        depth + 1);
    const bool crowded = ++looked_at > MOST_MEANINGS;
    if (crowded || (!first && !same_meaning(made, found))) {
      return unsure(made, "the member is assigned more than once");
    }
    made = found;
    first = false;
  }
  if (!first) {
    if (made.is_definition() && made.rule != "import") made.rule = "object";
    return made;
  }
  for (const Binder& binder : members("*")) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    const Value spread = binding_value(
        *owner.file, facts(*owner.file).bindings[static_cast<std::size_t>(binder.index)],
        depth + 1);
    const Value found = member(spread, name, depth + 1);
    if (found.is_definition()) {
      return members("*").size() == 1 ? found
                                      : unsure(found, "several objects may have the member");
    }
  }
  return {};
}

Value Evaluator::class_member(const Value& owner, std::string_view name, int depth) {
  const bool of_class = owner.kind == Value::Kind::CLASS;
  if (reading_bases_ > 0) return own_member(owner, name, of_class, depth + 1);
  Value of = owner;
  of.kind = Value::Kind::CLASS;
  const Ancestry& line = ancestry(of);
  const std::size_t first = owner.kind == Value::Kind::SUPER ? 1 : 0;
  // A static method's `super` is not told apart: both kinds of members are looked for.
  for (std::size_t i = first; i < line.classes.size(); ++i) {
    Value found = own_member(line.classes[i], name, of_class, depth + 1);
    if (owner.kind == Value::Kind::SUPER && found.kind == Value::Kind::UNKNOWN && found.sure) {
      found = own_member(line.classes[i], name, true, depth + 1);
    }
    if (found.kind != Value::Kind::UNKNOWN || !found.sure) return found;
  }
  if (!line.complete) return {.kind = Value::Kind::EXTERNAL, .rule = "base"};
  return {};
}

/// A member that the class itself has; of the class with `of_class`, else of its instances.
Value Evaluator::own_member(const Value& owner, std::string_view name, bool of_class, int depth) {
  const File& file = *owner.file;
  const Interface& known = facts(file);
  if (owner.definition == NOWHERE) return {};
  const Definition& own = definition_at(known, owner.definition);
  std::vector<DefinitionIndex> declarations = {owner.definition};
  if (has_members(own.kind)) {
    for (const Binder& twin : scopes(file).find(own.parent, own.name)) {
      const bool merged = twin.kind == Binder::Kind::DEFINITION && twin.index != owner.definition &&
                          has_members(definition_at(known, twin.index).kind);
      if (merged) declarations.push_back(twin.index);
    }
  }
  std::vector<Value> values;
  bool has_body = false;
  for (const DefinitionIndex at : declarations) {
    const bool is_namespace = definition_at(known, at).kind == Kind::NAMESPACE;
    for (const Binder& binder : scopes(file).find(at, name)) {
      const auto index = static_cast<std::size_t>(binder.index);
      if (binder.kind == Binder::Kind::DEFINITION) {
        const Definition& each = known.definitions[index];
        const bool is_static = is_namespace || (each.traits & STATIC_MEMBER) != 0;
        const bool fits = is_namespace ? names_value(file, binder)
                                       : has_members(definition_at(known, at).kind) &&
                                             each.kind == Kind::METHOD && each.scope.empty();
        if (!fits || is_static != of_class) continue;
        const bool signature = (each.traits & DECLARATION) != 0;
        if (signature && (has_body || !values.empty())) continue;
        if (!signature && !has_body) values.clear();
        has_body = has_body || !signature;
        values.push_back(definition_value(file, binder.index));
        // A getter and its setter are one member.
        if ((each.traits & PROPERTY) != 0) values.resize(1);
      } else if (binder.kind == Binder::Kind::BINDING) {
        const Binding& binding = known.bindings[index];
        const bool is_static = is_namespace || (binding.traits & STATIC_MEMBER) != 0;
        const bool wanted =
            is_namespace ? names_value(file, binder) : binding.kind == Binding::Kind::MEMBER;
        if (!wanted || is_static != of_class || binds_itself(binding)) continue;
        if (!binding.type.empty()) return binding_value(file, binding, depth + 1);
        Value found = binding_value(file, binding, depth + 1);
        const bool field = !is_namespace && own.kind == Kind::CLASS && found.is_definition();
        if (field) found = unsure(found, "the member is a variable");
        if (found.kind != Value::Kind::NONE) values.push_back(std::move(found));
        if (values.size() > MOST_MEANINGS) {
          return unsure(values.front(), "the member is assigned more than once");
        }
      }
    }
  }
  if (values.empty()) return {};
  Value made = values.front();
  for (const Value& value : values) {
    if (!same_meaning(made, value)) made = unsure(made, "the member is assigned elsewhere");
    if (!value.sure) made = unsure(made, value.doubt);
    made.exact = made.exact && value.exact;
  }
  if (made.kind == Value::Kind::UNKNOWN) made = unsure(made, "the member is a variable");
  if (made.is_definition()) made.rule = own.kind == Kind::NAMESPACE ? "namespace" : "class";
  return made;
}

std::optional<Value> Evaluator::constructor(const Value& type) {
  for (const Value& each : ancestry(type).classes) {
    const Interface& known = facts(*each.file);
    std::optional<DefinitionIndex> found;  // the body, else the first signature
    for (const Binder& binder : scopes(*each.file).find(each.definition, "constructor")) {
      if (binder.kind != Binder::Kind::DEFINITION) continue;
      const Definition& member = definition_at(known, binder.index);
      if (member.kind != Kind::CONSTRUCTOR) continue;
      if (!found || (member.traits & DECLARATION) == 0) found = binder.index;
    }
    if (found) return definition_value(*each.file, *found);
  }
  return {};
}

std::vector<Value> Evaluator::bases(const Value& of, bool& complete) {
  const Definition& own = definition(of);
  std::vector<Value> found;
  ++reading_bases_;
  for (const std::string& base : own.bases) {
    const bool implemented = base.starts_with(IMPLEMENTED);
    Value value;
    if (implemented || own.kind == Kind::INTERFACE) {
      const std::string_view name =
          std::string_view(base).substr(implemented ? IMPLEMENTED.size() : 0);
      value = type_value(*of.file, own.parent, name);
    } else {
      value = as_whole(expression_value(*of.file, own.parent, base), Space::VALUES);
    }
    const bool is_class = value.kind == Value::Kind::CLASS || value.kind == Value::Kind::INSTANCE ||
                          value.kind == Value::Kind::FUNCTION;
    if (!implemented) complete = complete && is_class && value.sure;
    if (!is_class || value.definition == NOWHERE) continue;
    value.kind = Value::Kind::CLASS;
    found.push_back(value);
  }
  --reading_bases_;
  return found;
}

const Ancestry& Evaluator::ancestry(const Value& of) {
  const auto [place, added] = ancestries_.try_emplace({of.file->id, of.definition});
  if (added) {
    Ancestry line;
    add_ancestors(line, of, 0);
    place->second = std::move(line);
  }
  return place->second;
}

void Evaluator::add_ancestors(Ancestry& line, const Value& of, int depth) {
  const bool repeated =
      std::any_of(line.classes.begin(), line.classes.end(), [&](const Value& other) {
        return other.file->id == of.file->id && other.definition == of.definition;
      });
  if (repeated || depth > DEEPEST || line.classes.size() > MOST_ANCESTORS) return;
  line.classes.push_back(
      {.kind = Value::Kind::CLASS, .file = of.file, .definition = of.definition});
  for (const Value& base : bases(of, line.complete)) add_ancestors(line, base, depth + 1);
}

bool Evaluator::is_below(const Value& of, const Value& base) {
  const Ancestry& line = ancestry(of);
  return std::any_of(line.classes.begin() + 1, line.classes.end(), [&](const Value& each) {
    return each.file->id == base.file->id && each.definition == base.definition;
  });
}

}  // namespace context_delta::indexer::ecmascript
