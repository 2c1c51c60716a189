#include "indexer/languages/ecmascript/values.h"

#include <algorithm>

#include "indexer/languages/ecmascript/builtins.h"
#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

using kit::Binder;
using kit::definition_at;

/// Several meanings of one name: the common one, or the likeliest, unsure.
Value merged(const std::vector<Value>& values) {
  Value first = values.front();
  bool same = true;
  for (const Value& value : values) {
    same = same && same_meaning(first, value);
    first.exact = first.exact && value.exact;
    if (!value.sure) first = unsure(first, value.doubt);
  }
  if (same) return first;
  const auto rank = [](const Value& value) {
    if (value.is_definition()) return 0;
    const bool says_nothing = value.kind == Value::Kind::UNKNOWN ||
                              value.kind == Value::Kind::NONE ||
                              value.kind == Value::Kind::EXTERNAL;
    return says_nothing ? 2 : 1;
  };
  auto useful = std::min_element(values.begin(), values.end(),
                                 [&](const Value& a, const Value& b) { return rank(a) < rank(b); });
  if (rank(*useful) == 2) useful = values.end();
  Value likeliest = useful == values.end() ? Value{} : *useful;
  for (const Value& value : values) {
    if (value.is_definition()) likeliest.choices.emplace_back(value.file, value.definition);
  }
  return unsure(std::move(likeliest), "the name is bound more than once");
}

bool is_local_to_function(const Interface& facts, const Binding& binding) {
  const bool local =
      binding.kind == Binding::Kind::LOCAL || binding.kind == Binding::Kind::PARAMETER;
  return local && binding.scope != NOWHERE &&
         kit::is_function_kind(definition_at(facts, binding.scope).kind);
}

std::string_view name_at_start(std::string_view text) {
  std::size_t end = 0;
  while (end < text.size() && (is_name_byte(text[end]) || text[end] == '\'')) ++end;
  return text.substr(0, end);
}

}  // namespace

Value unsure(Value value, std::string_view doubt) {
  value.sure = false;
  if (value.doubt.empty()) value.doubt = doubt;
  return value;
}

bool same_meaning(const Value& a, const Value& b) {
  return a.kind == b.kind && a.definition == b.definition && a.object == b.object &&
         (a.file == nullptr || b.file == nullptr ? a.file == b.file : a.file->id == b.file->id);
}

Evaluator::Evaluator(const File& file, const Facts& facts, World& world)
    : file_(file), facts_(facts), world_(world), scopes_(facts) {}

const Interface& Evaluator::facts(const File& file) {
  return file.id == file_.id ? facts_ : world_.facts(file);
}

const kit::ScopeIndex& Evaluator::scopes(const File& file) {
  return file.id == file_.id ? scopes_ : kit::scopes_of(file, world_);
}

const Definition& Evaluator::definition(const Value& value) {
  return definition_at(facts(*value.file), value.definition);
}

ModuleAnswer Evaluator::module(const File& importer, std::string_view specifier) {
  const auto [place, added] =
      modules_.try_emplace({importer.id, std::string(specifier)}, ModuleAnswer{});
  if (added) place->second = find_module(importer, specifier, world_);
  return place->second;
}

bool Evaluator::names_value(const File& file, const Binder& binder) {
  const Interface& known = facts(file);
  if (binder.kind == Binder::Kind::IMPORT) return true;
  if (binder.kind == Binder::Kind::BINDING) {
    const Binding& binding = known.bindings[static_cast<std::size_t>(binder.index)];
    // Other files' locals are not theirs to know.
    return binding.kind != Binding::Kind::MEMBER &&
           (file.id == file_.id || !is_local_to_function(known, binding));
  }
  const Definition& each = definition_at(known, binder.index);
  if ((each.traits & LOCAL_LINKAGE) != 0 || !each.scope.empty()) return false;
  return each.kind == Kind::FUNCTION || each.kind == Kind::CLASS || each.kind == Kind::ENUM ||
         each.kind == Kind::NAMESPACE;
}

bool Evaluator::names_type(const File& file, const Binder& binder) {
  const Interface& known = facts(file);
  if (binder.kind == Binder::Kind::IMPORT) return true;
  if (binder.kind == Binder::Kind::BINDING) {
    const Binding& binding = known.bindings[static_cast<std::size_t>(binder.index)];
    return binding.kind != Binding::Kind::MEMBER && !is_local_to_function(known, binding);
  }
  const Kind kind = definition_at(known, binder.index).kind;
  return kind == Kind::CLASS || kind == Kind::INTERFACE || kind == Kind::TYPE ||
         kind == Kind::ENUM || kind == Kind::NAMESPACE;
}

Value Evaluator::name_value(const File& file, DefinitionIndex scope, std::string_view name,
                            Space space, int depth) {
  if (depth > DEEPEST || !spend()) return {};
  const Interface& known = facts(file);
  for (DefinitionIndex at = scope;; at = definition_at(known, at).parent) {
    const bool is_class = at != NOWHERE && kit::is_class_kind(definition_at(known, at).kind);
    if (space == Space::TYPES) {
      const Binders named = scopes(file).find(at, std::string(TYPE_NAMED) + std::string(name));
      if (!named.empty()) {
        const Binding& binding = known.bindings[static_cast<std::size_t>(named.front().index)];
        if (binding.type.empty() || named.front().kind != Binder::Kind::BINDING) return {};
        return type_value(file, at == NOWHERE ? at : definition_at(known, at).parent, binding.type,
                          depth + 1);
      }
    }
    if (!is_class) {
      const Binders binders = scopes(file).find(at, name);
      if (!binders.empty()) {
        const Value found = combined(file, at, binders, space, depth);
        if (found.kind != Value::Kind::UNKNOWN || !found.sure) return found;
      }
    }
    if (at == NOWHERE) break;
  }
  if (is_global(name)) return {.kind = Value::Kind::EXTERNAL, .rule = "builtin"};
  return {};
}

bool Evaluator::is_meant(const File& file, const Binder& binder, Space space) {
  return space == Space::VALUES ? names_value(file, binder) : names_type(file, binder);
}

/// Of many binders those that are asked for, and no more than must be known to be too many.
Evaluator::Binders Evaluator::meant(const File& file, Binders binders, Space space) {
  if (binders.size() <= MOST_MEANINGS) return binders;
  const auto [place, added] = meant_.try_emplace({binders.data(), space});
  if (!added) return place->second;
  for (const Binder& binder : binders) {
    if (place->second.size() > MOST_MEANINGS) break;
    if (is_meant(file, binder, space)) place->second.push_back(binder);
  }
  return place->second;
}

/// What the binders of one name mean together; UNKNOWN and sure when none of them is asked for.
Value Evaluator::combined(const File& file, DefinitionIndex scope, Binders binders, Space space,
                          int depth) {
  const Interface& known = facts(file);
  binders = meant(file, binders, space);
  const bool crowded = binders.size() > MOST_MEANINGS;
  if (crowded) binders = binders.first(MOST_MEANINGS);
  std::vector<Value> values;
  bool has_body = false;
  bool has_callable = false;
  for (const Binder& binder : binders) {
    if (binder.kind != Binder::Kind::DEFINITION || !names_value(file, binder)) continue;
    const Definition& each = definition_at(known, binder.index);
    has_body = has_body || (each.traits & DECLARATION) == 0;
    has_callable = has_callable || each.kind == Kind::FUNCTION || each.kind == Kind::CLASS;
  }
  bool declared = false;
  bool any = false;
  for (const Binder& binder : binders) {
    if (!is_meant(file, binder, space)) continue;
    any = true;
    if (binder.kind == Binder::Kind::IMPORT) {
      values.push_back(import_value(file, known.imports[static_cast<std::size_t>(binder.index)],
                                    space, depth + 1));
    } else if (binder.kind == Binder::Kind::BINDING) {
      values.push_back(
          binding_value(file, known.bindings[static_cast<std::size_t>(binder.index)], depth + 1));
    } else {
      const Definition& each = definition_at(known, binder.index);
      if (space == Space::VALUES) {
        // Overloads and merged namespaces: the body, or the first signature, is meant.
        const bool signature = (each.traits & DECLARATION) != 0;
        if (signature && (has_body || declared)) continue;
        if (each.kind == Kind::NAMESPACE && has_callable) continue;
        declared = declared || signature;
      } else if (!values.empty()) {
        continue;  // merged declarations: own_member looks into all of them
      }
      values.push_back(definition_value(file, binder.index));
    }
  }
  if (!any) return {};
  if (values.size() > 1) {
    std::erase_if(values, [](const Value& value) { return value.kind == Value::Kind::NONE; });
  }
  if (values.empty()) return unsure({}, "the name is bound to a value");
  Value made = merged(values);
  if (crowded) made = unsure(std::move(made), "the name is bound more than once");
  if (made.kind == Value::Kind::UNKNOWN && made.sure) {
    made = unsure(made, "the name is bound to a value");
  }
  if (made.is_definition() && made.rule == "same-file" && scope != NOWHERE) made.rule = "local";
  return made;
}

Value Evaluator::definition_value(const File& file, DefinitionIndex index) {
  const Definition& found = definition_at(facts(file), index);
  Value made;
  made.file = &file;
  made.definition = index;
  made.exact = true;
  made.rule = "same-file";
  switch (found.kind) {
    case Kind::CLASS:
    case Kind::ENUM:
      made.kind = Value::Kind::CLASS;
      break;
    case Kind::INTERFACE:
    case Kind::TYPE:
      made.kind = Value::Kind::INSTANCE;
      made.exact = false;
      break;
    case Kind::NAMESPACE:
      made.kind = Value::Kind::NAMESPACE;
      break;
    default:
      made.kind = Value::Kind::FUNCTION;
      break;
  }
  if ((found.traits & CONDITIONAL) != 0) {
    return unsure(made, "the definition stands under a condition");
  }
  if ((found.traits & BROKEN) != 0) return unsure(made, "the definition's text does not parse");
  return made;
}

Value Evaluator::binding_value(const File& file, const Binding& binding, int depth) {
  if (depth > DEEPEST || !spend()) return {};
  Value made;
  if (!binding.type.empty()) made = type_value(file, binding.scope, binding.type, depth + 1);
  // A function's type says nothing of which function it is.
  const bool by_value = made.kind == Value::Kind::UNKNOWN;
  if (by_value && binding.value.empty()) {
    made = unsure({}, "the name is a parameter or local variable");
  } else if (by_value) {
    made = expression_value(file, binding.scope, binding.value, depth + 1);
    if (!binding.type.empty()) made = unsure(made, "the declared type names no definition");
    // What is given in place of a default is another function.
    if (binding.kind == Binding::Kind::PARAMETER && made.is_definition()) {
      made = unsure(made, "the name is a parameter or local variable");
    }
  } else if (made.is_definition()) {
    made = unsure(made, "the declared type names no definition");  // `typeof f`
  }
  if (made.kind == Value::Kind::UNKNOWN) made = unsure(made, "the name is bound to a value");
  if ((binding.traits & REASSIGNED) != 0) made = unsure(made, "the name is bound more than once");
  if ((binding.traits & CONDITIONAL) != 0) {
    made = unsure(made, "the name is bound under a condition");
  }
  const bool variable =
      binding.kind != Binding::Kind::MEMBER && !binding.name.starts_with(EXPORTED);
  if (variable && made.home.file == nullptr) made.home = {&file, binding.scope, binding.name};
  return made;
}

Value Evaluator::import_value(const File& file, const Import& import, Space space, int depth) {
  if (depth > DEEPEST || !spend()) return {};
  const ModuleAnswer answer = module(file, import.module);
  Value made;
  if (answer.file == nullptr) {
    made.kind = answer.external ? Value::Kind::EXTERNAL : Value::Kind::UNKNOWN;
    return made;
  }
  if (!is_in_family(answer.file->language)) return {.kind = Value::Kind::EXTERNAL};
  made = {.kind = Value::Kind::MODULE, .file = answer.file, .rule = "import"};
  if (!import.name.empty()) made = exported(*answer.file, import.name, space, depth + 1);
  made.rule = "import";
  return answer.sure ? made : unsure(made, "the package's entry is built from another file");
}

Value Evaluator::exported(const File& module, std::string_view name, Space space, int depth) {
  if (depth > DEEPEST || !spend()) return {};
  const Interface& known = facts(module);
  const Binders binders = scopes(module).find(NOWHERE, std::string(EXPORTED) + std::string(name));
  std::vector<Value> values;
  for (const Binder& binder : binders) {
    const auto index = static_cast<std::size_t>(binder.index);
    Value found;
    if (binder.kind == Binder::Kind::IMPORT) {
      found = import_value(module, known.imports[index], space, depth + 1);
    } else if (space == Space::TYPES && is_name(known.bindings[index].value)) {
      found = name_value(module, NOWHERE, known.bindings[index].value, space, depth + 1);
    } else {
      found = binding_value(module, known.bindings[index], depth + 1);
    }
    if (found.kind != Value::Kind::NONE) values.push_back(std::move(found));
  }
  if (!values.empty()) return merged(values);
  const Binders whole = scopes(module).find(NOWHERE, std::string(EXPORTED) + "=");
  for (const Binder& binder : whole) {
    if (binder.kind != Binder::Kind::BINDING) continue;
    values.push_back(
        binding_value(module, known.bindings[static_cast<std::size_t>(binder.index)], depth + 1));
  }
  if (!values.empty() && name != "=") {
    const Value all = merged(values);
    return name == "default" ? all : member(all, name, depth + 1);
  }
  return exported_from_all(module, name, space, depth + 1);
}

/// `export * from`: at most one of the modules may export the name.
Value Evaluator::exported_from_all(const File& module, std::string_view name, Space space,
                                   int depth) {
  Value made;
  if (name == "default" || name == "=" || depth > DEEPEST) return made;
  const Interface& known = facts(module);
  for (const Binder& binder : scopes(module).find(NOWHERE, std::string(EXPORTED) + "*")) {
    if (binder.kind != Binder::Kind::IMPORT) continue;
    const Import& import = known.imports[static_cast<std::size_t>(binder.index)];
    const ModuleAnswer answer = this->module(module, import.module);
    if (answer.file == nullptr || !is_in_family(answer.file->language)) continue;
    Value found = exported(*answer.file, name, space, depth + 1);
    const bool nothing = found.kind == Value::Kind::UNKNOWN && found.sure;
    if (nothing || (found.kind == Value::Kind::EXTERNAL && !found.sure)) continue;
    if (!answer.sure) found = unsure(found, "the package's entry is built from another file");
    if (made.kind == Value::Kind::UNKNOWN) {
      made = found;
    } else if (!same_meaning(made, found)) {
      made = unsure(made, "several modules export the name");
    }
  }
  return made;
}

Value Evaluator::enclosing_class(const File& file, DefinitionIndex scope) {
  const Interface& known = facts(file);
  bool in_static = false;
  for (DefinitionIndex at = scope; at != NOWHERE; at = definition_at(known, at).parent) {
    const Definition& each = definition_at(known, at);
    if (each.kind == Kind::CLASS) {
      return {.kind = in_static ? Value::Kind::CLASS : Value::Kind::INSTANCE,
              .file = &file,
              .definition = at,
              .rule = "self"};
    }
    in_static = each.kind == Kind::METHOD && (each.traits & STATIC_MEMBER) != 0;
  }
  return {};
}

/// The first part of an expression, which is taken from `text`.
Value Evaluator::head_value(const File& file, DefinitionIndex scope, std::string_view& text,
                            int depth) {
  if (text.starts_with('{')) {
    const std::size_t end = std::min(text.find('}'), text.size() - 1) + 1;
    Value made = {.kind = Value::Kind::OBJECT, .file = &file};
    made.object = text.substr(0, end);
    made.definition = number_in(text.substr(1));
    made.exact = true;
    text.remove_prefix(end);
    return is_in_range(facts(file), made.definition) ? made : Value{};
  }
  if (text.starts_with('=')) {
    const DefinitionIndex index = number_in(text.substr(1));
    std::size_t end = 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    text.remove_prefix(end);
    const bool known = index != NOWHERE && is_in_range(facts(file), index);
    return known ? definition_value(file, index) : Value{};
  }
  if (text.starts_with('<')) {
    const std::size_t end = end_of_brackets(text);
    const std::string_view type = text.substr(1, end < 2 ? 0 : end - 2);
    text.remove_prefix(end);
    if (!text.starts_with('@')) return type_value(file, scope, type, depth + 1);
    const DefinitionIndex parameter = number_in(text.substr(1));
    text.remove_prefix(std::min(text.size(), text.find_first_not_of("0123456789", 1)));
    if (parameter == NOWHERE) return {};
    return parameter_of_type(file, scope, type, static_cast<std::size_t>(parameter), depth + 1);
  }
  const bool literal = text.starts_with('~');
  if (literal) text.remove_prefix(1);
  const std::string_view head = name_at_start(text);
  text.remove_prefix(head.size());
  // ECMAScript 13.2: literals are made by the language's own classes, whatever their names mean.
  if (literal) return {.kind = Value::Kind::EXTERNAL, .rule = "builtin"};
  if (head == "null" || head == "undefined") return {.kind = Value::Kind::NONE};
  if (head == "this") return enclosing_class(file, scope);
  if (head == "super") {
    Value made = enclosing_class(file, scope);
    if (made.definition != NOWHERE) made.kind = Value::Kind::SUPER;
    return made;
  }
  if (head.empty()) {
    text = "?";
    return {};
  }
  Value made = name_value(file, scope, head, Space::VALUES, depth + 1);
  const bool unbound = made.kind == Value::Kind::EXTERNAL && made.rule == "builtin";
  if (unbound && (head == "exports" || (head == "module" && text.starts_with(".exports")))) {
    if (head == "module") text.remove_prefix(std::string_view(".exports").size());
    return {.kind = Value::Kind::MODULE, .file = &file, .rule = "same-file"};
  }
  return made;
}

Value Evaluator::expression_value(const File& file, DefinitionIndex scope, std::string_view text,
                                  int depth) {
  if (depth > DEEPEST || text.empty() || text.front() == '?') return {};
  Value value = head_value(file, scope, text, depth);
  Value receiver;
  for (int step = 0; step < DEEPEST && !text.empty(); ++step) {
    std::size_t end = 1;
    if (text.starts_with("()") || text.starts_with("[]")) {
      end = 2;
    } else if (text.front() == '.') {
      while (end < text.size() && text[end] != '.' && text[end] != '(' && text[end] != '[' &&
             text[end] != '~' && text[end] != '!') {
        ++end;
      }
    }
    value = apply(value, text.substr(0, end), receiver, depth + step + 1);
    text.remove_prefix(end);
  }
  return text.empty() ? value : Value{};
}

Value Evaluator::apply(const Value& value, std::string_view operation, Value& receiver, int depth) {
  if (operation == "()") return called(value, receiver, depth);
  if (operation == "[]") return subscripted(value, depth);
  if (operation == "~") return constructed(value, depth);
  if (operation == "!") {
    Value made = constructed(value, depth);
    made.exact = false;
    made.rule = "self";
    return made;
  }
  if (!operation.starts_with('.')) return {};
  receiver = value;
  Value found = member(value, operation.substr(1), depth);
  const bool is_property =
      found.kind == Value::Kind::FUNCTION && (definition(found).traits & PROPERTY) != 0;
  return is_property ? called(found, value, depth) : found;
}

Value Evaluator::as_whole(const Value& value, Space space, int depth) {
  if (value.kind != Value::Kind::MODULE || depth > DEEPEST) return value;
  Value made = exported(*value.file, "default", space, depth + 1);
  made.rule = "import";
  return value.sure ? made : unsure(made, value.doubt);
}

Value Evaluator::constructed(const Value& given, int depth) {
  const Value value = as_whole(given, Space::VALUES, depth);
  if (value.kind == Value::Kind::EXTERNAL) return value;
  if (!value.is_definition()) return {};
  Value made = value;
  made.kind = Value::Kind::INSTANCE;
  made.exact = true;
  made.home = {};
  return made;
}

Value Evaluator::called(const Value& given, const Value& receiver, int depth) {
  if (depth > DEEPEST || !spend()) return {};
  const Value value = as_whole(given, Space::VALUES, depth);
  if (value.kind == Value::Kind::EXTERNAL) return value;
  if (value.kind != Value::Kind::FUNCTION) return {};
  const Definition& function = definition(value);
  if (function.type.empty()) return {};
  Value made;
  if (function.type == "this" || function.type == "=this") {
    made = receiver;
  } else if (function.type.starts_with('=')) {
    made = expression_value(*value.file, value.definition,
                            std::string_view(function.type).substr(1), depth + 1);
    made.home = {};
  } else {
    made = type_value(*value.file, value.definition, function.type, depth + 1);
  }
  return value.sure ? made : unsure(made, value.doubt);
}

Value Evaluator::subscripted(const Value& value, int depth) {
  if (value.element.empty() || value.file == nullptr) return {};
  return type_value(*value.file, value.definition, value.element, depth + 1);
}

}  // namespace context_delta::indexer::ecmascript
