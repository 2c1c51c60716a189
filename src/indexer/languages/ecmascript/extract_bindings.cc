#include <algorithm>

#include "indexer/languages/ecmascript/extractor.h"
#include "indexer/languages/ecmascript/parameters.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {

using kit::child;
using kit::first_line;
using kit::is_null;

std::int32_t Extractor::bind(Binding binding, std::int32_t lexical) {
  builder_.bind(std::move(binding));
  binding_scopes_.push_back(lexical);
  return static_cast<std::int32_t>(builder_.facts().bindings.size()) - 1;
}

void Extractor::bind_name(TSNode name, std::string type, std::string value, Binding::Kind kind,
                          std::int32_t lexical) {
  Binding binding;
  const std::string written = text_of(name);
  if (written.empty()) return;
  binding.name = scopes_.spelled(lexical, written);
  binding.scope = scopes_.definition(lexical);
  binding.kind = kind;
  if (binding.scope == NOWHERE && kind == Binding::Kind::LOCAL && scopes_.is_own(lexical)) {
    binding.kind = Binding::Kind::GLOBAL;
  }
  binding.type = std::move(type);
  binding.value = std::move(value);
  binding.line = first_line(name);
  binding.traits = builder_.frame().traits & BROKEN;
  const std::int32_t index = bind(std::move(binding), context().lexical);
  Declaration& declaration = scopes_.declare(lexical, written);
  declaration.more = declaration.binding >= 0 || declaration.definition != NOWHERE;
  declaration.binding = index;
}

/// Binds every name of a pattern; names inside get the part of the value that they stand for.
void Extractor::bind_pattern(TSNode pattern, std::string type, std::string value,
                             Binding::Kind kind, std::int32_t lexical) {
  struct Part {
    TSNode node;
    std::string value;
  };
  if (is_null(pattern)) return;
  if (syntax_.kind(pattern) == Node::IDENTIFIER) {
    return bind_name(pattern, std::move(type), std::move(value), kind, lexical);
  }
  if (!type.empty()) value = type.size() < kit::LONGEST_EXPRESSION ? "<" + type + ">" : "?";
  if (value.empty()) value = "?";
  std::vector<Part> pending = {{pattern, std::move(value)}};
  while (!pending.empty()) {
    const Part part = std::move(pending.back());
    pending.pop_back();
    const auto add = [&](TSNode node, const std::string& suffix) {
      const bool fits = part.value.size() + suffix.size() < kit::LONGEST_EXPRESSION;
      pending.push_back({node, suffix == "?" || !fits ? "?" : part.value + suffix});
    };
    switch (syntax_.kind(part.node)) {
      case Node::IDENTIFIER:
        bind_name(part.node, {}, part.value, kind, lexical);
        break;
      case Node::SHORTHAND_PATTERN:
        bind_name(part.node, {}, part.value + "." + text_of(part.node), kind, lexical);
        break;
      case Node::PAIR_PATTERN:
        add(child(part.node, syntax_.field.value),
            "." + property_name(child(part.node, syntax_.field.key)));
        break;
      case Node::ASSIGNMENT_PATTERN:
      case Node::OBJECT_ASSIGNMENT_PATTERN:
        add(child(part.node, syntax_.field.left), "");
        break;
      case Node::REST:
        add(first_child(syntax_, part.node), "?");
        break;
      case Node::OBJECT_PATTERN:
      case Node::ARRAY_PATTERN: {
        const std::string suffix = syntax_.kind(part.node) == Node::ARRAY_PATTERN ? "[]" : "";
        const std::vector<TSNode> below = kit::named_children(part.node);
        for (auto each = below.rbegin(); each != below.rend(); ++each) add(*each, suffix);
        break;
      }
      default:
        break;
    }
  }
}

void Extractor::bind_member(DefinitionIndex scope, std::string name, std::string type,
                            std::string value, TSNode node, std::uint16_t traits) {
  Binding binding;
  binding.name = std::move(name);
  binding.kind = Binding::Kind::MEMBER;
  binding.scope = scope;
  binding.type = std::move(type);
  binding.value = std::move(value);
  binding.line = first_line(node);
  binding.traits = traits | (builder_.frame().traits & BROKEN);
  bind(std::move(binding), context().lexical);
}

void Extractor::bind_parameter(TSNode node, DefinitionIndex index,
                               const Documentation& documentation, std::string value) {
  const Parameter parameter = parameter_of(syntax_, node);
  if (parameter.rest)
    return bind_pattern(parameter.pattern, {}, "~Array", Binding::Kind::PARAMETER,
                        context().lexical);
  std::string type = annotated_type(parameter.type, builder_.text());
  if (type.empty()) type = documentation.parameter(text_of(parameter.pattern));
  if (value.empty() && syntax_.typed && !is_null(parameter.value)) {
    value = value_of(parameter.value);
  }
  if (parameter.member && index != NOWHERE) {
    bind_member(builder_.definition(index).parent, text_of(parameter.pattern), type, {}, node);
  }
  bind_pattern(parameter.pattern, std::move(type), std::move(value), Binding::Kind::PARAMETER,
               context().lexical);
}

void Extractor::bind_parameters(TSNode function, DefinitionIndex index,
                                const Documentation& documentation) {
  const auto hint = hints_.find(function.id);
  std::string value = hint == hints_.end() ? std::string() : hint->second;
  const TSNode single = child(function, syntax_.field.parameter);
  const auto given = expected_.find(function.id);
  if (!is_null(single)) {
    if (given != expected_.end() && !given->second.empty()) value = "<" + given->second + ">@0";
    return bind_parameter(single, index, documentation, std::move(value));
  }
  int count = 0;
  for (const TSNode node : kit::named_children(child(function, syntax_.field.parameters))) {
    if (!is_parameter(syntax_, node, builder_.text())) continue;
    if (given != expected_.end() && !given->second.empty()) {
      value = "<" + given->second + ">@" + std::to_string(count);
    }
    ++count;
    bind_parameter(node, index, documentation, std::move(value));
    value.clear();
  }
}

/// `const x = require("m")` and `const { x } = require("m")` are imports.
bool Extractor::bind_module(TSNode pattern, TSNode value) {
  value = unwrapped(syntax_, value);
  const std::string_view module = loaded_module(syntax_, value, builder_.text());
  if (module.empty()) return false;
  const Node kind = syntax_.kind(pattern);
  if (kind == Node::IDENTIFIER) {
    add_import(module, {}, pattern, pattern);
    return true;
  }
  if (kind != Node::OBJECT_PATTERN) return false;
  for (const TSNode part : kit::named_children(pattern)) {
    const Node inner = syntax_.kind(part);
    const TSNode bound = inner == Node::PAIR_PATTERN ? child(part, syntax_.field.value) : part;
    if (inner == Node::SHORTHAND_PATTERN) {
      add_import(module, text_of(part), part, part);
    } else if (inner == Node::PAIR_PATTERN && syntax_.kind(bound) == Node::IDENTIFIER) {
      add_import(module, property_name(child(part, syntax_.field.key)), bound, part);
    } else if (inner != Node::COMMENT) {
      const bool rest = inner == Node::REST;
      bind_pattern(bound, {}, rest ? "?" : module_text(module, value), Binding::Kind::LOCAL,
                   context().lexical);
    }
  }
  return true;
}

void Extractor::enter_declarator(TSNode node) {
  const TSNode pattern = child(node, syntax_.field.name);
  const TSNode value = child(node, syntax_.field.value);
  const std::int32_t lexical =
      context().hoisted ? scopes_.function_scope(context().lexical) : context().lexical;
  if (is_null(value) || !bind_module(pattern, value)) {
    const TSNode inner = unwrapped(syntax_, value);
    const bool named = syntax_.kind(pattern) == Node::IDENTIFIER;
    if (named && is_function_value(syntax_.kind(inner))) {
      const DefinitionIndex index =
          define_function(inner, pattern, text_of(pattern), Kind::FUNCTION);
      if (context().statement_line != 0) {
        builder_.definition(index).first_line =
            std::min(builder_.definition(index).first_line, first_line(node));
      }
      expected_[inner.id] = annotated_type(child(node, syntax_.field.type), builder_.text());
      if (expected_[inner.id].empty()) {
        expected_[inner.id] = documentation_before(pattern).type;
      }
      declare_definition(index);
      return;
    }
    if (named && syntax_.kind(inner) == Node::CLASS_EXPRESSION) {
      const DefinitionIndex index =
          builder_.define(definition_of(inner, pattern, text_of(pattern), Kind::CLASS));
      defined_[inner.id] = index;
      declare_definition(index);
      return;
    }
    std::string type = annotated_type(child(node, syntax_.field.type), builder_.text());
    if (type.empty()) type = documentation_before(pattern).type;
    const bool in_module = builder_.frame().definition == NOWHERE && scopes_.is_own(lexical);
    if (named && in_module) {
      Definition made = definition_of(node, pattern, text_of(pattern), Kind::VARIABLE);
      if (context().statement_line != 0) made.first_line = context().statement_line;
      made.first_line = std::min(made.first_line, made.name_line);
      builder_.define(std::move(made));
    }
    if (syntax_.kind(inner) == Node::OBJECT && named) {
      object_text(inner);
      owners_[inner.id] = text_of(pattern);
    }
    if (named && syntax_.kind(inner) == Node::TERNARY) {
      bind_pattern(pattern, type, value_of(child(inner, syntax_.field.consequence)),
                   Binding::Kind::LOCAL, lexical);
      bind_pattern(pattern, type, value_of(child(inner, syntax_.field.alternative)),
                   Binding::Kind::LOCAL, lexical);
      return;
    }
    bind_pattern(pattern, std::move(type), value_of(value), Binding::Kind::LOCAL, lexical);
  }
}

/// The names of a target that is assigned to, not declared.
void Extractor::reassign(TSNode target) {
  std::vector<TSNode> pending = {target};
  while (!pending.empty()) {
    const TSNode node = pending.back();
    pending.pop_back();
    const Node kind = syntax_.kind(node);
    if (kind == Node::IDENTIFIER || kind == Node::SHORTHAND_PATTERN) {
      assignments_.push_back({text_of(node), "?", context().lexical, first_line(node)});
    } else if (kind == Node::OBJECT_PATTERN || kind == Node::ARRAY_PATTERN || kind == Node::REST ||
               kind == Node::PAIR_PATTERN || kind == Node::ASSIGNMENT_PATTERN ||
               kind == Node::OBJECT_ASSIGNMENT_PATTERN) {
      for (const TSNode below : kit::named_children(node)) pending.push_back(below);
    }
  }
}

void Extractor::enter_assignment(TSNode node) {
  const TSNode left = child(node, syntax_.field.left);
  const TSNode right = unwrapped(syntax_, child(node, syntax_.field.right));
  const Node kind = syntax_.kind(left);
  if (kind == Node::MEMBER) return assign_member(left, right);
  if (kind != Node::IDENTIFIER) return reassign(left);
  const std::string name = text_of(left);
  if (name == "exports" && scopes_.find(context().lexical, name) < 0) return;
  assignments_.push_back(
      {name, value_of(child(node, syntax_.field.right)), context().lexical, first_line(left)});
}

/// `X.name = value`: exports, members of `this`, methods of prototypes, and what is added to
/// variables, functions and classes.
void Extractor::assign_member(TSNode left, TSNode right) {
  const TSNode property = child(left, syntax_.field.property);
  const std::string name = text_of(property);
  std::string owner = value_of(child(left, syntax_.field.object));
  const bool undeclared = scopes_.find(context().lexical, owner.substr(0, owner.find('.'))) < 0;
  const bool exports = undeclared && (owner == "exports" || owner == "module.exports");
  const bool all_exports = undeclared && owner == "module" && name == "exports";
  const bool prototype = owner.ends_with(".prototype");
  if (prototype) owner.resize(owner.size() - std::string_view(".prototype").size());
  const bool named = is_name(owner) && owner != "this" && !exports && !all_exports;
  const std::string scope = named ? owner : std::string();
  const Node kind = syntax_.kind(right);
  if (is_function_value(kind)) {
    const bool method = prototype || owner == "this";
    const DefinitionIndex index =
        define_function(right, property, name, method ? Kind::METHOD : Kind::FUNCTION, scope);
    builder_.definition(index).first_line =
        std::min(builder_.definition(index).first_line, first_line(left));
    receivers_[right.id] = exports || all_exports ? "?" : owner;
    if (prototype) receivers_[right.id] = instance_of(owner);
  } else if (kind == Node::CLASS_EXPRESSION && is_null(child(right, syntax_.field.name))) {
    defined_[right.id] = builder_.define(definition_of(right, property, name, Kind::CLASS));
  } else if (kind == Node::CLASS_EXPRESSION) {
    const TSNode own = child(right, syntax_.field.name);
    defined_[right.id] = builder_.define(definition_of(right, own, text_of(own), Kind::CLASS));
  } else if (kind == Node::OBJECT) {
    object_text(right);
    owners_[right.id] = scope;
  }
  std::string value = value_of(right);
  if (exports || all_exports) {
    return bind_export(all_exports ? "=" : name, std::move(value), left,
                       documentation_before(left).type);
  }
  if (owner == "this") {
    for (DefinitionIndex i = builder_.frame().definition; i != NOWHERE;
         i = builder_.definition(i).parent) {
      if (!kit::is_class_kind(builder_.definition(i).kind)) continue;
      return bind_member(i, name, documentation_before(left).type, std::move(value), left);
    }
    return;
  }
  if (owner.starts_with('{')) {
    return bind_member(builder_.frame().definition, owner + "." + name, {}, std::move(value), left);
  }
  if (owner.starts_with('=') && owner.ends_with('!')) {
    const DefinitionIndex function = number_in(std::string_view(owner).substr(1));
    return bind_member(function, name, documentation_before(left).type, std::move(value), left);
  }
  if (!is_name(owner)) return;
  const std::int32_t declared = scopes_.find(context().lexical, owner);
  if (declared < 0) return;
  const Declaration* declaration = scopes_.declaration(declared, owner);
  const bool defined = declaration->definition != NOWHERE;
  if (!is_function_value(kind)) add_patch(left, owner, name);
  if (defined) {
    bind_member(declaration->definition, name, {}, std::move(value), left,
                prototype ? std::uint16_t{0} : static_cast<std::uint16_t>(STATIC_MEMBER));
  } else if (!prototype) {
    bind_member(scopes_.definition(declared), scopes_.spelled(declared, owner) + "." + name, {},
                std::move(value), left);
  }
}

/// An instance of the class or constructor function that a name means here.
std::string Extractor::instance_of(std::string_view name) {
  const std::int32_t declared = scopes_.find(context().lexical, name);
  if (declared < 0) return "?";
  const DefinitionIndex definition = scopes_.declaration(declared, name)->definition;
  return definition == NOWHERE ? "?" : "=" + std::to_string(definition) + "!";
}

/// A class or import whose member is replaced: a variable with the written scope, so that rules see
/// it from other files.
void Extractor::add_patch(TSNode left, std::string_view owner, std::string_view name) {
  const std::int32_t declared = scopes_.find(context().lexical, owner);
  const Declaration* declaration = scopes_.declaration(declared, owner);
  const bool imported = declaration->definition == NOWHERE && declaration->binding < 0;
  const bool is_class = declaration->definition != NOWHERE &&
                        builder_.definition(declaration->definition).kind == Kind::CLASS;
  if (!imported && !is_class) return;
  Definition made;
  made.name = name;
  made.kind = Kind::VARIABLE;
  made.scope = owner;
  made.first_line = first_line(left);
  made.last_line = kit::last_line(left);
  made.name_line = made.first_line;
  made.signature = text_of(left);
  made.traits = REASSIGNED;
  builder_.define(std::move(made));
}

std::string Extractor::object_text(TSNode literal) {
  const auto known = objects_.find(literal.id);
  if (known != objects_.end()) return known->second;
  const DefinitionIndex around = builder_.frame().definition;
  std::string made =
      "{" + std::to_string(around) + ":" + std::to_string(object_counts_[around]++) + "}";
  objects_[literal.id] = made;
  return made;
}

void Extractor::enter_object(TSNode node, std::uint32_t depth) {
  const auto held = objects_.find(node.id);
  const auto owner = owners_.find(node.id);
  Context& made = open(depth);
  made.object = held == objects_.end() ? std::string() : held->second;
  made.owner = owner == owners_.end() ? std::string() : owner->second;
  made.type_members = false;
  if (made.object.empty()) return;
  for (const TSNode part : kit::named_children(node)) {
    if (syntax_.kind(part) == Node::SPREAD) {
      bind_object_member("*", first_child(syntax_, part));
    }
  }
}

void Extractor::bind_object_member(const std::string& name, TSNode value) {
  if (context().object.empty()) return;
  std::string text = value_of(value);
  const bool literal = text.starts_with('~') || text == "null" || text == "?";
  // Data has no members that code calls.
  if (literal && !is_name(name)) return;
  bind_member(builder_.frame().definition, context().object + "." + name, {}, std::move(text),
              value);
}

bool Extractor::enter_object_member(TSNode node) {
  const Node kind = syntax_.kind(node);
  if (kind == Node::SHORTHAND) {
    bind_object_member(text_of(node), node);
    return false;
  }
  const TSNode key = child(node, syntax_.field.key);
  const TSNode value = unwrapped(syntax_, child(node, syntax_.field.value));
  const std::string name = property_name(key);
  if (is_function_value(syntax_.kind(value))) {
    define_function(value, key, name, Kind::METHOD, context().owner);
  } else if (syntax_.kind(value) == Node::OBJECT && !context().object.empty()) {
    object_text(value);
    owners_[value.id] = context().owner.empty() ? context().owner : context().owner + "." + name;
  }
  bind_object_member(name, child(node, syntax_.field.value));
  return true;
}

}  // namespace context_delta::indexer::ecmascript
