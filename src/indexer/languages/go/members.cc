#include <algorithm>
#include <charconv>
#include <set>

#include "indexer/languages/go/builtins.h"
#include "indexer/languages/go/values.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

// Types, their fields and their methods.
namespace context_delta::indexer::go {
namespace {

using kit::Binder;

constexpr int DEEPEST = 24;
/// How many types may be embedded in one another.
constexpr int DEEPEST_EMBEDDING = 8;
constexpr int LONGEST_ALIASES = 8;

Value external() { return {.kind = Value::Kind::EXTERNAL}; }

std::string_view last_name(std::string_view dotted) { return dotted.substr(dotted.rfind('.') + 1); }

/// Types that are no names have no members that can be called by name, but for those that list
/// them.
Value unnamed_type(std::string_view type) {
  type = without_pointers(type);
  const bool has_members = type.starts_with("struct") || type.starts_with("interface");
  return has_members || type.empty() ? Value{} : external();
}

std::shared_ptr<const std::vector<Type>> arguments_of(const Type& type, std::string_view list) {
  if (list.empty()) return {};
  std::vector<Type> arguments;
  for (const std::string_view each : split_list(list)) arguments.push_back(type.with(each));
  return std::make_shared<const std::vector<Type>>(std::move(arguments));
}

}  // namespace

Value Evaluator::named_type(const Type& type, int depth) {
  Type at = type;
  bool sure = true;
  for (int step = 0; step < LONGEST_ALIASES && depth <= DEEPEST; ++step) {
    if (at.file == nullptr) return {};
    const NamedType named = named_type_of(at.text);
    if (named.name.empty()) return unnamed_type(at.text);
    if (named.name.starts_with('$')) return type_parameter(at, named.name, depth + 1);
    Value found;
    const std::size_t dot = named.name.find('.');
    if (dot == std::string_view::npos) {
      found = name_value(*at.file, at.scope, named.name, depth + 1);
    } else {
      found = import_value(*at.file, named.name.substr(0, dot));
      if (found.kind != Value::Kind::PACKAGE) return named.arguments.empty() ? external() : Value{};
      found = member(found, named.name.substr(dot + 1), depth + 1);
    }
    if (found.kind == Value::Kind::EXTERNAL) return named.arguments.empty() ? found : Value{};
    if (found.kind != Value::Kind::TYPE) return {};
    sure = sure && found.sure;
    const Definition& made = definition(found);
    if (made.type.starts_with('=')) {
      at = {found.file, made.parent, made.type.substr(1)};
      continue;
    }
    found.type.arguments = arguments_of(at, named.arguments);
    found.sure = sure;
    return found;
  }
  return {};
}

/// What stands for `$0`, or the interface that constrains the parameter.
Value Evaluator::type_parameter(const Type& type, std::string_view name, int depth) {
  std::size_t number = 0;
  const auto read = std::from_chars(name.data() + 1, name.data() + name.size(), number);
  const bool of_type = read.ec == std::errc();
  if (of_type && type.arguments != nullptr) {
    if (number >= type.arguments->size()) return {};
    const Type& argument = (*type.arguments)[number];
    return argument.text == name ? Value{} : named_type(argument, depth + 1);
  }
  return constrained_by(type, name, depth + 1);
}

Value Evaluator::constrained_by(const Type& type, std::string_view parameter, int depth) {
  const kit::Outline& known = outline(*type.file);
  for (DefinitionIndex at = type.scope; at != NOWHERE; at = known.definition(at).parent) {
    const File* file = type.file;
    DefinitionIndex scope = at;
    const Definition& made = known.definition(at);
    if (made.kind == Kind::METHOD && !made.scope.empty()) {
      const Value receiver = name_value(*type.file, NOWHERE, made.scope, depth + 1);
      if (!receiver.is_definition()) continue;
      file = receiver.file;
      scope = receiver.definition;
    }
    const kit::Outline& there = outline(*file);
    for (const Binder& binder : there.find(scope, parameter)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      return named_type({file, scope, there.binding(binder).type}, depth + 1);
    }
  }
  return {};
}

Type Evaluator::underlying(const Type& type, int depth) {
  Type at = type;
  for (int step = 0; step < LONGEST_ALIASES; ++step) {
    if (named_type_of(at.text).name.empty()) return at;
    if (named_type_of(at.text).name.starts_with('$') && at.arguments != nullptr) {
      std::size_t number = 0;
      const std::string_view name = named_type_of(at.text).name;
      const auto read = std::from_chars(name.data() + 1, name.data() + name.size(), number);
      if (read.ec != std::errc() || number >= at.arguments->size()) return {};
      const Type argument = (*at.arguments)[number];
      at = argument;
      continue;
    }
    const Value named = named_type(at, depth + 1);
    if (!named.is_definition() || definition(named).kind != Kind::TYPE) return {};
    at = {named.file, definition(named).parent, definition(named).type, named.type.arguments};
  }
  return {};
}

/// The field of a struct without a name, whose fields are bound in the scope around it.
Value Evaluator::anonymous_member(const Type& type, std::string_view name) {
  std::string field(without_pointers(type.text));
  (field += '.') += name;
  const kit::Outline& known = outline(*type.file);
  for (DefinitionIndex at = type.scope;; at = known.definition(at).parent) {
    for (const Binder& binder : known.find(at, field)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      return {.kind = Value::Kind::INSTANCE,
              .type = type.with(known.binding(binder).type),
              .rule = "field-type"};
    }
    if (at == NOWHERE) return {};
  }
}

Value Evaluator::member(const Value& owner, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  switch (owner.kind) {
    case Value::Kind::EXTERNAL:
      return owner;
    case Value::Kind::PACKAGE: {
      Value made = package_member(*owner.package, file_, name, depth + 1);
      made.sure = made.sure && owner.sure;
      if (made.doubt.empty()) made.doubt = owner.doubt;
      return made;
    }
    case Value::Kind::TYPE:
    case Value::Kind::INSTANCE: {
      const Type whole = underlying(owner.type, depth + 1);
      if (without_pointers(whole.text).starts_with("struct'")) return anonymous_member(whole, name);
      const Value type = named_type(owner.type, depth + 1);
      if (type.kind != Value::Kind::TYPE) return type;
      Value made = field_or_method(type, name, depth + 1);
      made.sure = made.sure && owner.sure && type.sure;
      if (made.doubt.empty()) made.doubt = owner.sure ? type.doubt : owner.doubt;
      if (made.kind == Value::Kind::FUNCTION) made.rule = owner.rule;
      return made;
    }
    default:
      return {};
  }
}

Value Evaluator::field_or_method(const Value& type, std::string_view name, int depth) {
  std::set<std::pair<std::int64_t, DefinitionIndex>> seen;
  std::vector<Value> level = {type};
  bool outside = false;
  for (int step = 0; step < DEEPEST_EMBEDDING && !level.empty() && depth <= DEEPEST; ++step) {
    std::vector<Value> found;
    std::vector<Value> next;
    for (const Value& each : level) {
      if (!each.is_definition()) {
        outside = true;
        continue;
      }
      if (!seen.emplace(each.file->id, each.definition).second) continue;
      Value made = own_member(each, name, depth + 1);
      if (made.kind != Value::Kind::UNKNOWN) found.push_back(std::move(made));
      for (Value& below : embedded(each, depth + 1)) next.push_back(std::move(below));
    }
    if (!found.empty()) {
      Value made = std::move(found.front());
      made.promoted = step > 0 && made.kind == Value::Kind::FUNCTION && !made.abstract;
      if (found.size() > 1 || outside) {
        made.sure = false;
        made.doubt = "several embedded types may have the member";
      }
      return made;
    }
    level = std::move(next);
  }
  return outside ? external() : Value{};
}

Value Evaluator::own_member(const Value& type, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  const Definition& owner = definition(type);
  if (const Package* package = origin(*type.file).package;
      package != nullptr && owner.parent == NOWHERE) {
    const std::vector<Place>* places = methods_named(*package, owner.name, name, world_);
    if (places != nullptr) {
      Value made = chosen(*places, file_, depth + 1);
      made.type.arguments = type.type.arguments;
      if (made.is_definition()) return made;
    }
  }
  const kit::Outline& there = outline(*type.file);
  for (const Binder& binder : there.find(type.definition, name)) {
    if (binder.kind == Binder::Kind::BINDING) {
      return {.kind = Value::Kind::INSTANCE,
              .type = {type.file, owner.parent, there.binding(binder).type, type.type.arguments},
              .rule = "field-type"};
    }
    const Definition& method = there.definition(binder.index);
    return {.kind = Value::Kind::FUNCTION,
            .type = {type.file, type.definition, method.type, type.type.arguments},
            .file = type.file,
            .definition = binder.index,
            .abstract = true};
  }
  if (owner.kind != Kind::TYPE) return {};
  const Value below =
      named_type({type.file, owner.parent, owner.type, type.type.arguments}, depth + 1);
  if (!below.is_definition()) return {};
  Value made = own_member(below, name, depth + 1);
  const bool is_method = made.kind == Value::Kind::FUNCTION && !made.abstract;
  return is_method ? Value{} : made;
}

std::vector<Value> Evaluator::embedded(const Value& type, int depth) {
  std::vector<Value> found;
  const Definition& owner = definition(type);
  if (depth > DEEPEST) return found;
  if (owner.kind == Kind::TYPE) {
    const Value below =
        named_type({type.file, owner.parent, owner.type, type.type.arguments}, depth + 1);
    return below.is_definition() ? embedded(below, depth + 1) : found;
  }
  const kit::Outline& there = outline(*type.file);
  for (const std::string& base : owner.bases) {
    Type written = {type.file, owner.parent, base, type.type.arguments};
    for (const Binder& binder : there.find(type.definition, last_name(base))) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      written.text = there.binding(binder).type;
    }
    found.push_back(named_type(written, depth + 1));
  }
  return found;
}

std::vector<std::string_view> Evaluator::method_names(const Value& interface) {
  std::vector<std::string_view> names;
  std::vector<Value> pending = {interface};
  std::set<std::pair<std::int64_t, DefinitionIndex>> seen;
  while (!pending.empty()) {
    const Value each = std::move(pending.back());
    pending.pop_back();
    if (!each.is_definition() || !seen.emplace(each.file->id, each.definition).second) continue;
    for (const std::string_view name : outline(*each.file).members_of_interface(each.definition)) {
      names.push_back(name);
    }
    for (Value& below : embedded(each, 0)) pending.push_back(std::move(below));
  }
  return names;
}

}  // namespace context_delta::indexer::go
