#include "indexer/languages/go/values.h"

#include <algorithm>
#include <charconv>

#include "indexer/languages/go/builtins.h"
#include "indexer/languages/go/constraints.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::Binder;
using kit::definition_at;

/// How many steps of names, members and calls are followed.
constexpr int DEEPEST = 24;

Value external() { return {.kind = Value::Kind::EXTERNAL}; }

/// Packages of the standard library whose functions return what they are given.
bool passes_values_through(std::string_view package) {
  return package == "slices" || package == "maps" || package == "cmp";
}

/// The length of the first operation in `text`: ".name", "()", "[]", "[:]", "#1", "<-", "~0".
std::size_t operation_size(std::string_view text) {
  std::size_t end = 1;
  if (text.front() == '.' || text.front() == '#') {
    while (end < text.size() && kit::is_identifier_byte(text[end])) ++end;
    return end;
  }
  if (text.starts_with("[:]")) return 3;
  return std::min<std::size_t>(2, text.size());
}

/// The length of the root of an expression: `{T}` or up to the first operation.
std::size_t root_size(std::string_view text) {
  if (!text.starts_with('{')) return std::min(text.find_first_of(".([#<~"), text.size());
  int open = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '{') ++open;
    if (text[i] == '}' && --open == 0) return i + 1;
  }
  return text.size();
}

bool is_plain_name(std::string_view root) { return kit::is_identifier(root) && root != "nil"; }

}  // namespace

Evaluator::Evaluator(const File& file, const Facts& facts, World& world)
    : file_(file), facts_(facts), world_(world), scopes_(facts) {
  outlines_.emplace(file.id, kit::Outline(facts_, scopes_));
  bindings_.resize(facts.bindings.size());
  package_ = origin(file).package;
}

const kit::Outline& Evaluator::outline(const File& file) {
  const auto place = outlines_.find(file.id);
  if (place != outlines_.end()) return place->second;
  return outlines_.emplace(file.id, kit::Outline(file, world_)).first->second;
}

const Evaluator::Origin& Evaluator::origin(const File& file) {
  const auto [place, added] = origins_.try_emplace(file.id);
  if (added) {
    const Interface& clause = file.id == file_.id ? facts_ : clause_of(file, world_);
    place->second.package = go::package_of(file, clause, world_);
    place->second.constraint = constraint_of(file.path, clause);
  }
  return place->second;
}

Value Evaluator::definition_value(const Place& place, int depth) {
  const File& file = *place.in->file;
  const Definition& found = outline(file).definition(place.definition);
  if (found.kind == Kind::VARIABLE) return variable_value(file, found.name, depth + 1);
  Value made;
  made.file = &file;
  made.definition = place.definition;
  if (kit::is_function_kind(found.kind)) {
    made.kind = Value::Kind::FUNCTION;
    made.type = {&file, found.parent, found.type};
  } else {
    made.kind = Value::Kind::TYPE;
    made.type = {&file, found.parent, found.name};
  }
  if ((found.traits & BROKEN) != 0) {
    made.sure = false;
    made.doubt = "the definition's text does not parse";
  }
  return made;
}

/// The definition that `from` sees among namesakes of one package.
Value Evaluator::chosen(const std::vector<Place>& places, const File& from, int depth) {
  if (depth > DEEPEST || places.empty()) return {};
  const File& there = *places.front().in->file;
  const bool own_folder = kit::folder_of(there.path) == kit::folder_of(from.path);
  Choice choice = choose(places, from, origin(from).constraint, own_folder);
  if (choice.places.empty()) return {};
  Value made = definition_value(choice.places.front(), depth);
  if (!choice.sure) {
    made.sure = false;
    made.doubt = "the build chooses between definitions";
    made.choices = std::move(choice.places);
  }
  return made;
}

Value Evaluator::package_member(const Package& package, const File& from, std::string_view name,
                                int depth) {
  const std::vector<Place>* places = members_named(package, name, world_);
  if (places == nullptr) return {};
  Value made = chosen(*places, from, depth + 1);
  if (!made.is_definition()) return made;
  made.rule = made.file->id == from.id           ? "same-file"
              : origin(from).package == &package ? "same-package"
                                                 : "import";
  return made;
}

Value Evaluator::variable_value(const File& file, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  const kit::Outline& known = outline(file);
  for (const Binder& binder : known.find(NOWHERE, name)) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    const Binding& binding = known.binding(binder);
    if (!binding.type.empty()) {
      return {.kind = Value::Kind::INSTANCE,
              .type = {&file, NOWHERE, binding.type},
              .rule = "declared-type"};
    }
    Value made = expression_value(file, NOWHERE, binding.value, depth + 1);
    made.variable = made.kind == Value::Kind::FUNCTION;
    return made;
  }
  return {};
}

Value Evaluator::local_type(const File& file, DefinitionIndex scope, std::string_view name) {
  const kit::Outline& known = outline(file);
  for (DefinitionIndex at = scope; at != NOWHERE; at = known.definition(at).parent) {
    for (const Binder& binder : known.find(at, name)) {
      if (binder.kind != Binder::Kind::DEFINITION) continue;
      const Definition& found = known.definition(binder.index);
      if (kit::is_function_kind(found.kind)) continue;
      return {.kind = Value::Kind::TYPE,
              .type = {&file, found.parent, found.name},
              .file = &file,
              .definition = binder.index,
              .rule = "local"};
    }
  }
  return {};
}

Value Evaluator::import_value(const File& file, std::string_view name) {
  for (const Imported& each : imports_of(file, world_)) {
    if (each.name != name) continue;
    if (each.package == nullptr) return passes_values_through(name) ? Value{} : external();
    Value made;
    made.kind = Value::Kind::PACKAGE;
    made.package = each.package;
    made.sure = each.sure;
    if (!each.sure) made.doubt = "the module files do not settle which package is imported";
    return made;
  }
  return {};
}

Value Evaluator::dot_import_value(const File& file, std::string_view name, int depth) {
  for (const Imported& each : imports_of(file, world_)) {
    if (each.name != "*" || each.package == nullptr) continue;
    Value made = package_member(*each.package, file, name, depth + 1);
    if (!made.is_definition()) continue;
    made.sure = false;
    if (made.doubt.empty()) made.doubt = "the name comes from a dot import";
    return made;
  }
  return {};
}

Value Evaluator::name_value(const File& file, DefinitionIndex scope, std::string_view name,
                            int depth) {
  if (depth > DEEPEST) return {};
  if (Value local = local_type(file, scope, name); local.is_definition()) return local;
  if (const Package* package = origin(file).package;
      package != nullptr && members_named(*package, name, world_) != nullptr) {
    return package_member(*package, file, name, depth + 1);
  }
  Value imported = import_value(file, name);
  if (imported.kind != Value::Kind::UNKNOWN) return imported;
  Value dotted = dot_import_value(file, name, depth);
  if (dotted.is_definition()) return dotted;
  return is_predeclared(name) ? external() : Value{};
}

const Binding* Evaluator::local_binding(DefinitionIndex scope, std::string_view name) {
  DefinitionIndex at = scope;
  while (true) {
    for (const Binder& binder : scopes_.find(at, name)) {
      if (binder.kind != Binder::Kind::BINDING) continue;
      return &facts_.bindings[static_cast<std::size_t>(binder.index)];
    }
    if (at == NOWHERE) return nullptr;
    at = definition_at(facts_, at).parent;
  }
}

Value Evaluator::local_value(DefinitionIndex scope, std::string_view name, int depth) {
  const Binding* binding = local_binding(scope, name);
  if (binding == nullptr || depth > DEEPEST) return {};
  std::optional<Value>& known =
      bindings_[static_cast<std::size_t>(binding - facts_.bindings.data())];
  if (known) return *known;
  known.emplace();  // what asks for itself is not known
  Value made;
  if (binding->type.empty()) {
    made = expression_value(file_, binding->scope, binding->value, depth + 1);
  } else {
    made = {.kind = Value::Kind::INSTANCE,
            .type = {&file_, binding->scope, binding->type},
            .rule = "declared-type"};
    const bool of_method = binding->kind == Binding::Kind::PARAMETER && binding->scope != NOWHERE &&
                           definition_at(facts_, binding->scope).kind == Kind::METHOD;
    const std::string_view type = go::named_type_of(binding->type).name;
    if (of_method && definition_at(facts_, binding->scope).scope == type) made.rule = "receiver";
  }
  if (made.kind == Value::Kind::FUNCTION) {
    made.variable = made.variable || !binding->value.starts_with('@');
    if ((binding->traits & REASSIGNED) != 0) {
      made.variable = true;
      made.doubt = "the name is bound more than once";
    }
  }
  // A place in the list stays where it is: the list has its final size.
  return *(known = std::move(made));
}

Value Evaluator::root_value(const File& file, DefinitionIndex scope, std::string_view root,
                            int depth) {
  if (root.starts_with('{')) {
    return {.kind = Value::Kind::INSTANCE,
            .type = {&file, scope, std::string(root.substr(1, root.size() - 2))},
            .rule = "constructed"};
  }
  if (root.starts_with('@')) {
    DefinitionIndex closure = NOWHERE;
    std::from_chars(root.data() + 1, root.data() + root.size(), closure);
    const Definition* made = outline(file).definition_if(closure);
    if (made == nullptr) return {};
    return {.kind = Value::Kind::FUNCTION,
            .type = {&file, scope, made->type},
            .file = &file,
            .definition = closure,
            .rule = "local"};
  }
  if (root == "?" || root == "nil") return {};
  if (root.find('\'') == std::string_view::npos) return name_value(file, scope, root, depth + 1);
  return file.id == file_.id ? local_value(scope, root, depth + 1) : Value{};
}

Value Evaluator::expression_value(const File& file, DefinitionIndex scope, std::string_view text,
                                  int depth) {
  if (depth > DEEPEST || text.empty()) return {};
  const std::size_t size = root_size(text);
  const std::string_view root = text.substr(0, size);
  Value value = root_value(file, scope, root, depth);
  text.remove_prefix(size);
  // What nothing declares may be a package from outside that is not named like its path's end.
  if (value.kind == Value::Kind::UNKNOWN && text.starts_with('.') && is_plain_name(root) &&
      may_be_imported(file, root)) {
    return external();
  }
  while (!text.empty() && value.kind != Value::Kind::UNKNOWN) {
    const std::size_t length = operation_size(text);
    value = apply(value, text.substr(0, length), depth);
    text.remove_prefix(length);
  }
  return value;
}

Value Evaluator::receiver_value(DefinitionIndex scope, std::string_view text) {
  Value value = expression_value(file_, scope, text);
  const bool outside =
      value.kind == Value::Kind::UNKNOWN && is_plain_name(text) && may_be_imported(file_, text);
  return outside ? external() : value;
}

bool Evaluator::may_be_imported(const File& file, std::string_view name) {
  const std::vector<Imported>& imports = imports_of(file, world_);
  return std::any_of(imports.begin(), imports.end(), [&](const Imported& each) {
    return each.path.find(name) != std::string::npos;
  });
}

Value Evaluator::apply(const Value& value, std::string_view operation, int depth) {
  if (operation.starts_with('.')) return member(value, operation.substr(1), depth + 1);
  if (value.kind == Value::Kind::EXTERNAL) return value;
  if (operation == "()") return called(value, depth + 1);
  if (operation == "[:]") return value;
  if (operation == "[]" && value.kind != Value::Kind::INSTANCE) return value;
  if (value.kind != Value::Kind::INSTANCE) return {};
  if (operation == "~0" || operation == "~1") return ranged(value, operation == "~0", depth + 1);
  Value made = value;
  std::optional<std::string_view> type;
  if (operation.starts_with('#')) {
    std::size_t number = 0;
    std::from_chars(operation.data() + 1, operation.data() + operation.size(), number);
    type = result_type(value.type.text, number);
    if (!type) return {};
    made.type = value.type.with(*type);
    return made;
  }
  const Type whole = underlying(value.type, depth + 1);
  type = operation == "<-" ? channel_element(whole.text) : element_type(whole.text);
  if (!type) return without_element(value, depth + 1);
  made.type = whole.with(*type);
  made.rule = "element-type";
  return made;
}

/// Of a value that cannot be taken apart: what comes from outside stays outside.
Value Evaluator::without_element(const Value& value, int depth) {
  const bool outside = named_type(value.type, depth).kind == Value::Kind::EXTERNAL;
  return outside ? external() : Value{};
}

Value Evaluator::called(const Value& value, int depth) {
  Value made;
  made.kind = Value::Kind::INSTANCE;
  made.sure = value.sure;
  made.doubt = value.doubt;
  switch (value.kind) {
    case Value::Kind::FUNCTION:
      made.type = value.type;
      made.rule = "result-type";
      break;
    case Value::Kind::TYPE:
      made.type = value.type;
      made.rule = "constructed";
      break;
    case Value::Kind::INSTANCE: {
      const Type whole = underlying(value.type, depth + 1);
      const auto results = function_results(whole.text);
      if (!results) return without_element(value, depth + 1);
      made.type = whole.with(*results);
      made.rule = "result-type";
      break;
    }
    default:
      return {};
  }
  return made.type.text.empty() ? Value{} : made;
}

Value Evaluator::ranged(const Value& value, bool key, int depth) {
  const Type whole = underlying(value.type, depth + 1);
  Value made = value;
  made.rule = "element-type";
  std::optional<std::string_view> type;
  if (const auto parameters = function_parameters(whole.text)) {
    const std::string iterator = "(" + std::string(*parameters) + ")";
    const auto yield = result_type(iterator, 0);
    const auto yielded = yield ? function_parameters(*yield) : std::nullopt;
    if (!yielded) return {};
    const std::string list = "(" + std::string(*yielded) + ")";
    const auto found = result_type(list, key ? 0 : 1);
    if (!found) return {};
    made.type = whole.with(*found);
    return made;
  }
  if (const auto element = channel_element(whole.text)) {
    type = element;
  } else if (key) {
    type = map_key(whole.text);
    if (!type) return external();
  } else {
    type = element_type(whole.text);
  }
  if (!type) return {};
  made.type = whole.with(*type);
  return made;
}

}  // namespace context_delta::indexer::go
