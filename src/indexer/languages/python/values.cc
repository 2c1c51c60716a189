#include "indexer/languages/python/values.h"

#include <algorithm>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/builtins.h"
#include "indexer/languages/python/definitions.h"

namespace context_delta::indexer::python {
namespace {

using kit::Binder;

/// How many steps of names, members and calls are followed.
constexpr int DEEPEST = 14;

Value unsure(Value value, std::string_view doubt) {
  value.sure = false;
  if (value.doubt.empty()) value.doubt = doubt;
  return value;
}

/// Several meanings of one name: the common one, or the likeliest, unsure.
Value merged(const std::vector<Value>& values) {
  Value first = values.front();
  bool same = true;
  for (const Value& value : values) {
    same = same && same_definition(first, value);
    first.exact = first.exact && value.exact;
    first.sure = first.sure && value.sure;
  }
  if (same) return first;
  const auto definition = std::find_if(values.begin(), values.end(),
                                       [](const Value& value) { return value.is_definition(); });
  Value likeliest = definition == values.end() ? Value{} : *definition;
  return unsure(likeliest, "the name is bound more than once");
}

/// Base classes that bring no methods that code calls by name.
bool has_members(std::string_view base) {
  const std::string_view name = base.substr(base.rfind('.') + 1);
  return name != "object" && name != "Generic" && name != "Protocol" && name != "ABC";
}

/// Functions outside the repository whose result may be of a class inside it.
bool passes_values_through(std::string_view function) {
  for (const std::string_view each :
       {"getattr", "next", "max", "min", "cast", "copy", "deepcopy", "partial", "reduce", "pop",
        "get", "setdefault", "replace", "proxy", "ref"}) {
    if (function == each) return true;
  }
  return false;
}

/// Whether an expression goes on from its first operand.
bool is_step(ExpressionKind kind) {
  return kind == ExpressionKind::MEMBER || kind == ExpressionKind::CALL ||
         kind == ExpressionKind::INDEX;
}

bool makes_class_receiver(const Definition& method) {
  return (method.traits & STATIC_MEMBER) != 0 || method.name == "__new__" ||
         method.name == "__init_subclass__" || method.name == "__class_getitem__";
}

}  // namespace

bool same_definition(const Value& a, const Value& b) {
  return a.kind == b.kind && a.definition == b.definition &&
         (a.file == nullptr || b.file == nullptr ? a.file == b.file : a.file->id == b.file->id);
}

Evaluator::Evaluator(const File& file, const kit::Outline& own, World& world)
    : file_(file), world_(world) {
  outlines_.emplace(file.id, own);
}

const kit::Outline& Evaluator::outline(const File& file) {
  const auto place = outlines_.find(file.id);
  if (place != outlines_.end()) return place->second;
  return outlines_.emplace(file.id, kit::Outline(file, world_)).first->second;
}

const Definition& Evaluator::definition(const Value& value) {
  return outline(*value.file).definition(value.definition);
}

const ModuleAnswer& Evaluator::module(const File& importer, std::string_view dotted) {
  auto& answers = modules_[importer.id];
  const auto place = answers.find(dotted);
  if (place != answers.end()) return place->second;
  return answers.emplace(std::string(dotted), find_module(importer, dotted, world_)).first->second;
}

Value Evaluator::name_value(const File& file, DefinitionIndex scope, std::string_view name,
                            int depth) {
  if (depth > DEEPEST) return {};
  const kit::Outline& known = outline(file);
  DefinitionIndex at = scope;
  while (true) {
    const bool is_class = at != NOWHERE && kit::is_class_kind(known.definition(at).kind);
    if (!is_class || at == scope) {
      const Binders binders = known.find(at, name);
      if (!binders.empty()) return combined(file, at, binders, depth);
    }
    if (at == NOWHERE) break;
    at = known.definition(at).parent;
  }
  const Value wild = wildcard_value(file, name, depth);
  if (wild.kind != Value::Kind::UNKNOWN) return wild;
  if (is_builtin(name)) return {.kind = Value::Kind::EXTERNAL, .rule = "builtin"};
  return {};
}

const Value& Evaluator::combined(const File& file, DefinitionIndex scope, Binders binders,
                                 int depth) {
  const std::pair key(binders.data(), depth);
  const auto place = combined_.find(key);
  if (place != combined_.end()) return place->second;
  return combined_.emplace(key, combine(file, scope, binders, depth)).first->second;
}

Value Evaluator::combine(const File& file, DefinitionIndex scope, Binders binders, int depth) {
  const kit::Outline& known = outline(file);
  std::vector<Value> values;
  bool has_definition = false;
  const bool overloaded = std::any_of(binders.begin(), binders.end(), [&](const Binder& binder) {
    if (binder.kind != Binder::Kind::DEFINITION) return false;
    const Definition& each = known.definition(binder.index);
    return kit::is_function_kind(each.kind) && (each.traits & DECLARATION) == 0;
  });
  for (const Binder& binder : binders) {
    if (binder.kind == Binder::Kind::DEFINITION) {
      const Definition& each = known.definition(binder.index);
      if (each.kind == Kind::VARIABLE) continue;
      if (overloaded && (each.traits & (DECLARATION | VIRTUAL)) == DECLARATION) continue;
      values.push_back(definition_value(file, binder.index));
      has_definition = true;
    } else if (binder.kind == Binder::Kind::BINDING) {
      const Binding& binding = known.binding(binder);
      if (!binding.type.empty()) return binding_value(file, binding, depth + 1);
      values.push_back(binding_value(file, binding, depth + 1));
    } else {
      values.push_back(import_value(file, known.import(binder), depth + 1));
    }
  }
  const std::size_t all = values.size();
  std::erase_if(values, [](const Value& value) { return value.kind == Value::Kind::NONE; });
  if (values.empty()) return unsure({}, "the name is bound to a value");
  Value made = merged(values);
  if (has_definition && all > values.size()) {
    made = unsure(made, "the name is bound more than once");
  }
  if (made.is_definition() && made.rule == "same-file" && scope != NOWHERE) made.rule = "local";
  return made;
}

Value Evaluator::definition_value(const File& file, DefinitionIndex index) {
  const Definition& found = outline(file).definition(index);
  Value made;
  made.kind = kit::is_class_kind(found.kind) ? Value::Kind::CLASS : Value::Kind::FUNCTION;
  made.file = &file;
  made.definition = index;
  made.exact = true;
  made.rule = "same-file";
  if ((found.traits & CONDITIONAL) != 0) {
    return unsure(made, "the definition stands under a condition");
  }
  if ((found.traits & BROKEN) != 0) return unsure(made, "the definition's text does not parse");
  return made;
}

Value Evaluator::binding_value(const File& file, const Binding& binding, int depth) {
  if (depth > DEEPEST) return {};
  const ExpressionIndex value = binding.value_expression;
  const bool is_self =
      value != NO_EXPRESSION && outline(file).expression(value).kind == ExpressionKind::SELF;
  if (is_self) {
    const Definition& method = outline(file).definition(binding.scope);
    Value made;
    made.kind = makes_class_receiver(method) ? Value::Kind::CLASS : Value::Kind::INSTANCE;
    made.file = &file;
    made.definition = method.parent;
    made.rule = "self";
    return made;
  }
  if (!binding.type.empty()) return annotation_value(file, binding.scope, binding.type, depth + 1);
  if (value == NO_EXPRESSION) return unsure({}, "the name is a parameter or local variable");
  Value made = expression_value(file, binding.scope, value, depth + 1);
  if (made.is_definition()) return unsure(made, "the name is a variable");
  if (made.kind == Value::Kind::UNKNOWN) return unsure(made, "the name is bound to a value");
  if ((binding.traits & REASSIGNED) != 0) return unsure(made, "the name is bound more than once");
  return made;
}

Value Evaluator::import_value(const File& file, const Import& import, int depth) {
  if (depth > DEEPEST) return {};
  const bool relative = import.module.starts_with('.');
  std::string_view module = import.module;
  if (import.name.empty() && import.alias.empty()) module = module.substr(0, module.find('.'));
  const ModuleAnswer& answer = this->module(file, module);
  Value made;
  if (answer.file != nullptr) {
    made = {.kind = Value::Kind::MODULE, .file = answer.file, .rule = "import"};
    if (!import.name.empty()) made = module_member(*answer.file, import.name, depth + 1);
  } else if (relative && !import.name.empty()) {
    const std::string inner =
        import.module + (import.module.ends_with('.') ? "" : ".") + import.name;
    const ModuleAnswer& sibling = this->module(file, inner);
    if (sibling.file != nullptr) made = {.kind = Value::Kind::MODULE, .file = sibling.file};
  } else {
    made.kind = Value::Kind::EXTERNAL;
  }
  if (made.is_definition() || made.kind == Value::Kind::MODULE) made.rule = "import";
  return answer.sure ? made : unsure(made, "several modules have this name");
}

Value Evaluator::module_member(const File& module, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  const Binders binders = outline(module).find(NOWHERE, name);
  if (!binders.empty()) return combined(module, NOWHERE, binders, depth + 1);
  const File* inner = submodule(module, name, world_);
  if (inner != nullptr) return {.kind = Value::Kind::MODULE, .file = inner, .rule = "import"};
  return wildcard_value(module, name, depth + 1);
}

Value Evaluator::wildcard_value(const File& file, std::string_view name, int depth) {
  if (depth > DEEPEST || name.starts_with('_')) return {};
  Value made;
  outline(file).each_import("*", [&](const Import& import) {
    const ModuleAnswer& answer = module(file, import.module);
    if (answer.file == nullptr || answer.file->id == file.id) return false;
    const Value found = module_member(*answer.file, name, depth + 1);
    const bool known = found.is_definition() || found.kind == Value::Kind::MODULE ||
                       found.kind == Value::Kind::INSTANCE;
    if (known)
      made = found.is_definition() ? unsure(found, "the name comes from a wildcard import") : found;
    return known;
  });
  return made;
}

Value Evaluator::enclosing_class(const File& file, DefinitionIndex scope) {
  const kit::Outline& known = outline(file);
  for (DefinitionIndex at = scope; at != NOWHERE; at = known.definition(at).parent) {
    if (kit::is_class_kind(known.definition(at).kind)) {
      return {.kind = Value::Kind::CLASS, .file = &file, .definition = at};
    }
  }
  return {};
}

Value Evaluator::expression_value(const File& file, DefinitionIndex scope,
                                  ExpressionIndex expression, int depth) {
  if (depth > DEEPEST) return {};
  const kit::Outline& known = outline(file);
  std::vector<const Expression*> steps;  // from the outside in
  const Expression* at = &known.expression(expression);
  for (; is_step(at->kind); at = &known.expression(at->operands.front())) {
    if (steps.size() == DEEPEST) return {};
    steps.push_back(at);
  }
  Value value = head_value(file, scope, *at, depth);
  Value receiver;
  std::string_view name = at->name;  // of what is called
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    ++depth;
    if ((*step)->kind == ExpressionKind::MEMBER) {
      receiver = value;
      value = attribute(value, (*step)->name, depth);
    } else if ((*step)->kind == ExpressionKind::INDEX) {
      value = subscripted(value, depth);
    } else {
      const bool unknown = value.kind == Value::Kind::EXTERNAL && passes_values_through(name);
      value = unknown ? Value{} : called(value, receiver, depth);
    }
    name = (*step)->name;
  }
  return value;
}

/// What a chain of attributes, calls and subscripts starts with.
Value Evaluator::head_value(const File& file, DefinitionIndex scope, const Expression& head,
                            int depth) {
  switch (head.kind) {
    case ExpressionKind::NAME:
      return name_value(file, scope, head.name, depth + 1);
    case ExpressionKind::NONE:
      return {.kind = Value::Kind::NONE};
    case ExpressionKind::LITERAL:
      return {.kind = Value::Kind::EXTERNAL, .rule = "builtin"};
    case ExpressionKind::SUPER: {
      Value value = enclosing_class(file, scope);
      if (value.kind == Value::Kind::CLASS) value.kind = Value::Kind::SUPER;
      return value;
    }
    default:
      return {};
  }
}

Value Evaluator::dotted_value(const File& file, DefinitionIndex scope, std::string_view dotted,
                              int depth) {
  const std::vector<std::string_view> names = kit::split(dotted, '.');
  const bool plain = std::all_of(names.begin(), names.end(), kit::is_identifier);
  if (depth > DEEPEST || names.empty() || names.size() > DEEPEST || !plain) return {};
  if (dotted == "None") return {.kind = Value::Kind::NONE};
  Value value = name_value(file, scope, names.front(), depth + 1);
  for (std::size_t i = 1; i < names.size(); ++i) value = attribute(value, names[i], ++depth);
  return value;
}

/// A member; of a property, what it gives.
Value Evaluator::attribute(const Value& value, std::string_view name, int depth) {
  const Value found = member(value, name, depth);
  const bool is_property =
      found.kind == Value::Kind::FUNCTION && (definition(found).traits & PROPERTY) != 0;
  return is_property ? called(found, value, depth) : found;
}

Value Evaluator::member(const Value& owner, std::string_view name, int depth) {
  if (depth > DEEPEST) return {};
  switch (owner.kind) {
    case Value::Kind::MODULE: {
      Value found = module_member(*owner.file, name, depth + 1);
      if (found.is_definition() && found.rule != "local") found.rule = "import";
      return owner.sure ? found : unsure(found, owner.doubt);
    }
    case Value::Kind::CLASS:
    case Value::Kind::INSTANCE:
    case Value::Kind::SUPER:
      return class_member(owner, name, depth + 1);
    case Value::Kind::EXTERNAL:
      if (!owner.element.empty() && (name == "__enter__" || name == "__iter__")) {
        return owner;
      }
      return {.kind = Value::Kind::EXTERNAL};
    default:
      return {};
  }
}

Value Evaluator::class_member(const Value& owner, std::string_view name, int depth) {
  if (own_members_only_) {
    if (owner.kind == Value::Kind::SUPER) return {};
    const Value found = own_member(owner, name, depth + 1);
    return owner.sure ? found : unsure(found, owner.doubt);
  }
  const Ancestry& line = ancestry(owner);
  const std::size_t first = owner.kind == Value::Kind::SUPER ? 1 : 0;
  for (std::size_t i = first; i < line.classes.size(); ++i) {
    Value found = own_member(line.classes[i], name, depth + 1);
    if (found.kind == Value::Kind::UNKNOWN && found.sure) continue;
    if (i >= line.known) found = unsure(found, "a base class is not known");
    if (i > 0 && !line.linear) {
      for (std::size_t later = i + 1; later < line.classes.size(); ++later) {
        const Value& other = line.classes[later];
        if (!outline(*other.file).find(other.definition, name).empty()) {
          found = unsure(found, "several base classes have the member");
        }
      }
    }
    return owner.sure ? found : unsure(found, owner.doubt);
  }
  if (!line.complete) return {.kind = Value::Kind::EXTERNAL, .rule = "base"};
  return {};
}

Value Evaluator::own_member(const Value& owner, std::string_view name, int depth) {
  const Binders binders = outline(*owner.file).find(owner.definition, name);
  if (binders.empty()) return {};
  Value found = combined(*owner.file, owner.definition, binders, depth + 1);
  if (found.is_definition()) found.rule = "class";
  if (found.kind == Value::Kind::UNKNOWN) return unsure(found, "the member is a variable");
  return found;
}

Value Evaluator::called(const Value& value, const Value& receiver, int depth) {
  if (depth > DEEPEST) return {};
  if (value.kind == Value::Kind::CLASS) {
    Value made = value;
    made.kind = Value::Kind::INSTANCE;
    return made;
  }
  if (value.kind == Value::Kind::EXTERNAL) return value;
  if (value.kind != Value::Kind::FUNCTION) return {};
  const Definition& function = definition(value);
  if (function.type.empty()) return {};
  const bool own_type =
      function.type == "Self" || function.type.ends_with(".Self") || function.type == "te.Self";
  if (own_type) {
    Value made = receiver;
    if (made.kind == Value::Kind::CLASS) made.kind = Value::Kind::INSTANCE;
    if (made.kind == Value::Kind::SUPER) return {};
    return made;
  }
  Value made = annotation_value(*value.file, function.parent, function.type, depth + 1);
  return value.sure ? made : unsure(made, value.doubt);
}

Value Evaluator::subscripted(const Value& value, int depth) {
  if (depth > DEEPEST) return {};
  if (value.kind == Value::Kind::CLASS) return value;
  if (!value.element.empty() && value.file != nullptr) {
    return annotation_value(*value.file, value.definition, value.element, depth + 1);
  }
  if (value.kind == Value::Kind::INSTANCE) {
    return called(class_member(value, "__getitem__", depth + 1), value, depth + 1);
  }
  return {};
}

const std::vector<Value>& Evaluator::bases(const File& file, DefinitionIndex definition) {
  if (file.id == file_.id) {
    // Only here may a base be what a function around the class binds.
    const auto [place, added] = own_bases_.try_emplace(definition);
    if (added) place->second = read_bases(file, outline(file), definition);
    return place->second;
  }
  return world_.remember<std::vector<Value>>("python:bases", file, definition, [&] {
    return read_bases(file, kit::Outline(file, world_), definition);
  });
}

std::vector<Value> Evaluator::read_bases(const File& file, const kit::Outline& known,
                                         DefinitionIndex definition) {
  Evaluator there(file, known, world_);
  there.own_members_only_ = true;
  const Definition& of = known.definition(definition);
  std::vector<Value> answer;
  for (const std::string& base : of.bases) {
    if (has_members(base)) answer.push_back(there.dotted_value(file, of.parent, base));
  }
  return answer;
}

const Ancestry& Evaluator::ancestry(const Value& of) {
  const auto [place, added] = ancestries_.try_emplace({of.file->id, of.definition});
  if (added) add_ancestors(place->second, of, 0);
  return place->second;
}

void Evaluator::add_ancestors(Ancestry& line, const Value& of, int depth) {
  const bool repeated =
      std::any_of(line.classes.begin(), line.classes.end(), [&](const Value& other) {
        return other.file->id == of.file->id && other.definition == of.definition;
      });
  if (repeated || depth > DEEPEST) return;
  line.classes.push_back(
      {.kind = Value::Kind::CLASS, .file = of.file, .definition = of.definition});
  if (line.complete) line.known = line.classes.size();
  const std::vector<Value>& direct = bases(*of.file, of.definition);
  line.linear = line.linear && direct.size() < 2;
  for (const Value& base : direct) {
    line.complete = line.complete && base.kind == Value::Kind::CLASS && base.sure;
    if (base.kind == Value::Kind::CLASS) add_ancestors(line, base, depth + 1);
  }
}

bool Evaluator::is_below(const Value& of, const Value& base) {
  if (same_definition(of, base)) return false;
  const Ancestry& line = ancestry(of);
  return std::any_of(line.classes.begin() + 1, line.classes.end(), [&](const Value& each) {
    return each.file->id == base.file->id && each.definition == base.definition;
  });
}

}  // namespace context_delta::indexer::python
