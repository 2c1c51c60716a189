#include <utility>
#include <vector>

#include "indexer/languages/java/definitions.h"
#include "indexer/languages/java/extractor.h"
#include "indexer/languages/java/java.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {

using kit::child;
using kit::first_line;
using kit::is_null;
using kit::text_of;

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  const Node kind = java_.kind(node);
  if (kind == Node::OTHER) return true;
  if (kind == Node::ERROR) {
    builder_.open(depth).traits |= BROKEN;
    return true;
  }
  return enter_declaration(kind, node, depth);
}

bool Extractor::enter_declaration(Node kind, TSNode node, std::uint32_t depth) {
  switch (kind) {
    case Node::PACKAGE:
      package_ = erased_text(text_of(first_child(node), builder_.text()));
      return false;
    case Node::IMPORT:
      enter_import(node);
      return false;
    case Node::CLASS:
    case Node::INTERFACE:
    case Node::ENUM:
    case Node::RECORD:
    case Node::ANNOTATION_TYPE:
      enter_type(node, depth);
      return true;
    case Node::METHOD:
    case Node::CONSTRUCTOR:
    case Node::COMPACT_CONSTRUCTOR:
    case Node::ANNOTATION_ELEMENT:
      enter_function(node, depth);
      return true;
    case Node::CLASS_BODY:
      enter_body(node, depth);
      return true;
    case Node::FIELD:
      enter_fields(node);
      return true;
    case Node::ENUM_CONSTANT:
      enter_enum_constant(node);
      return true;
    default:
      return enter_statement(kind, node, depth);
  }
}

bool Extractor::enter_statement(Node kind, TSNode node, std::uint32_t depth) {
  switch (kind) {
    case Node::BLOCK:
    case Node::FOR:
    case Node::CATCH:
      locals_.open(depth);
      return true;
    case Node::ENHANCED_FOR:
      enter_loop(node, depth);
      return true;
    case Node::LAMBDA:
      enter_lambda(node, depth);
      return true;
    case Node::LOCAL_VARIABLE:
      enter_local_variables(node);
      return true;
    case Node::RESOURCE:
      bind_local(child(node, java_.field.name),
                 type_text(child(node, java_.field.type), {}, builder_.text()),
                 expressions_.of(child(node, java_.field.value)));
      return true;
    case Node::CATCH_PARAMETER:
      enter_catch_parameter(node);
      return true;
    case Node::INSTANCEOF:
      bind_local(child(node, java_.field.name),
                 type_text(child(node, java_.field.right), {}, builder_.text()), {});
      return true;
    case Node::PATTERN:
      enter_pattern(node);
      return true;
    case Node::ASSIGNMENT:
      enter_assignment(child(node, java_.field.left));
      return true;
    case Node::UPDATE:
      enter_assignment(first_child(node));
      return true;
    default:
      return enter_use(kind, node, depth);
  }
}

void Extractor::enter_type(TSNode node, std::uint32_t depth) {
  Definition made = type_definition(node, builder_.text());
  const Node kind = java_.kind(node);
  const bool fixed = kind == Node::RECORD || modifiers_of(node).is_final;
  const bool is_interface = made.kind == Kind::INTERFACE;
  if (builder_.frame().definition == NOWHERE) made.scope = package_;
  const DefinitionIndex index = builder_.define(std::move(made));
  const auto state =
      static_cast<std::uint16_t>((fixed ? IN_FINAL_CLASS : 0) | (is_interface ? IN_INTERFACE : 0));
  open_class(child(node, java_.field.body), index, state, depth);
  if (kind != Node::RECORD) return;
  const TSNode components = child(node, java_.field.parameters);
  components_[index] = components;
  for (Parameter& component : parameters_of(components, builder_.text())) {
    if (component.type.ends_with("...")) component.type.replace(component.type.size() - 3, 3, "[]");
    bind_member(component.name, std::move(component.type), {}, PROPERTY);
  }
}

/// Names of fields hide the local variables around the class.
void Extractor::open_class(TSNode body, DefinitionIndex index, std::uint16_t state,
                           std::uint32_t depth) {
  const bool is_local = builder_.in_function();
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = state;
  locals_.open(depth);
  if (!is_local) return;
  for (const TSNode each : kit::named_children(body)) {
    if (java_.kind(each) != Node::FIELD) continue;
    for (const TSNode declarator : kit::children(each, java_.field.declarator)) {
      locals_.bind(text_of(child(declarator, java_.field.name), builder_.text()), NO_LOCAL);
    }
  }
}

void Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const kit::Frame outer = builder_.frame();
  TSNode parameters = child(node, java_.field.parameters);
  if (java_.kind(node) == Node::COMPACT_CONSTRUCTOR) {
    const auto record = components_.find(outer.definition);
    if (record != components_.end()) parameters = record->second;
  }
  Definition made = function_definition(node, parameters, builder_.text());
  if ((outer.state & IN_FINAL_CLASS) != 0) made.traits &= static_cast<std::uint16_t>(~VIRTUAL);
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = 0;
  locals_.open(depth);
  for (Parameter& parameter : parameters_of(parameters, builder_.text())) {
    if (parameter.type.ends_with("...")) parameter.type.replace(parameter.type.size() - 3, 3, "[]");
    bind_local(parameter.name, std::move(parameter.type), {}, Binding::Kind::PARAMETER);
  }
}

void Extractor::enter_body(TSNode node, std::uint32_t depth) {
  const auto found = creations_.find(node.id);
  if (found == creations_.end()) return;
  Creation creation = std::move(found->second);
  creations_.erase(found);
  Definition made = anonymous_definition(creation.node, node, std::move(creation.name),
                                         std::move(creation.base), builder_.text());
  open_class(node, builder_.define(std::move(made)), IN_FINAL_CLASS, depth);
}

void Extractor::enter_fields(TSNode node) {
  const Modifiers words = modifiers_of(node);
  const bool is_constant = (builder_.frame().state & IN_INTERFACE) != 0;
  std::uint16_t traits = 0;
  if (words.is_static || is_constant) traits |= STATIC_MEMBER;
  if (words.is_private) traits |= LOCAL_LINKAGE;
  for (const TSNode each : kit::children(node, java_.field.declarator)) {
    std::string value;
    if (words.is_final || is_constant) {
      value = expressions_.of(child(each, java_.field.value));
      if (!value.starts_with("{new ")) value.clear();
    }
    bind_member(child(each, java_.field.name),
                type_text(child(node, java_.field.type), child(each, java_.field.dimensions),
                          builder_.text()),
                std::move(value), traits);
  }
}

void Extractor::enter_enum_constant(TSNode node) {
  const DefinitionIndex enumeration = builder_.frame().definition;
  if (enumeration == NOWHERE) return;
  const std::string type = builder_.definition(enumeration).name;
  const TSNode name = child(node, java_.field.name);
  const TSNode arguments = child(node, java_.field.arguments);
  bind_member(name, type, {}, STATIC_MEMBER);
  builder_.refer(type, {}, Role::CONSTRUCT, first_line(name), argument_count(arguments)).values =
      expressions_.arguments(arguments);
  const TSNode body = child(node, java_.field.body);
  if (is_null(body)) return;
  creations_[body.id] = {node, kit::one_line(text_of(name, builder_.text())), type};
}

/// The parameters of a lambda get their types from the call that it is an argument of.
void Extractor::enter_lambda(TSNode node, std::uint32_t depth) {
  locals_.open(depth);
  std::string argument;
  std::string call;
  if (const auto found = lambdas_.find(node.id); found != lambdas_.end()) {
    const std::size_t end = found->second.find('\n');
    argument = found->second.substr(0, end);
    call = found->second.substr(end + 1);
    lambdas_.erase(found);
  }
  std::size_t position = 0;
  for (Parameter& parameter : parameters_of(child(node, java_.field.parameters), builder_.text())) {
    if (parameter.type == "var") parameter.type.clear();
    std::string value = "?";
    if (!call.empty() && parameter.type.empty()) {
      value = "^" + argument + "." + std::to_string(position) + ":" + call;
    }
    ++position;
    bind_local(parameter.name, std::move(parameter.type), std::move(value));
  }
}

void Extractor::enter_loop(TSNode node, std::uint32_t depth) {
  locals_.open(depth);
  std::string type = type_text(child(node, java_.field.type), child(node, java_.field.dimensions),
                               builder_.text());
  std::string value;
  if (type == "var") value = expressions_.of(child(node, java_.field.value)) + "[]";
  bind_local(child(node, java_.field.name), std::move(type), std::move(value));
}

void Extractor::enter_local_variables(TSNode node) {
  const TSNode type = child(node, java_.field.type);
  for (const TSNode each : kit::children(node, java_.field.declarator)) {
    std::string written = type_text(type, child(each, java_.field.dimensions), builder_.text());
    std::string value = expressions_.of(child(each, java_.field.value));
    if (written != "var" && !value.starts_with("{new ")) value.clear();
    bind_local(child(each, java_.field.name), std::move(written), std::move(value));
  }
}

/// `Type name` inside a pattern: the name is the last identifier, the type stands before it.
void Extractor::enter_pattern(TSNode node) {
  TSNode type = {};
  TSNode name = {};
  for (const TSNode each : kit::named_children(node)) {
    if (java_.kind(each) == Node::IDENTIFIER) {
      name = each;
    } else if (is_null(type) && java_.kind(each) != Node::MODIFIERS) {
      type = each;
    }
  }
  if (!is_null(type)) bind_local(name, type_text(type, {}, builder_.text()), {});
}

void Extractor::enter_catch_parameter(TSNode node) {
  const TSNode types = child_of_kind(node, Node::CATCH_TYPE);
  const std::vector<TSNode> each = kit::named_children(types);
  bind_local(child(node, java_.field.name),
             each.size() == 1 ? type_text(each.front(), {}, builder_.text()) : "", "?");
}

void Extractor::enter_assignment(TSNode target) {
  if (java_.kind(target) != Node::IDENTIFIER) return;
  const std::int32_t local = locals_.find(text_of(target, builder_.text()));
  if (local == NO_LOCAL) return;
  builder_.facts().bindings[static_cast<std::size_t>(local)].traits |= REASSIGNED;
}

void Extractor::bind_member(TSNode name, std::string type, std::string value,
                            std::uint16_t traits) {
  if (is_null(name) || builder_.frame().definition == NOWHERE) return;
  Binding made;
  made.name = kit::one_line(text_of(name, builder_.text()), kit::LONGEST_EXPRESSION);
  made.kind = Binding::Kind::MEMBER;
  made.scope = builder_.frame().definition;
  made.type = std::move(type);
  made.value = std::move(value);
  made.line = first_line(name);
  made.traits = static_cast<std::uint16_t>(traits | (builder_.frame().traits & BROKEN));
  builder_.bind(std::move(made));
}

void Extractor::bind_local(TSNode name, std::string type, std::string value, Binding::Kind kind) {
  if (is_null(name)) return;
  Binding made;
  made.name = kit::one_line(text_of(name, builder_.text()), kit::LONGEST_EXPRESSION);
  made.kind = kind;
  made.scope = builder_.frame().definition;
  made.type = std::move(type);
  made.value = std::move(value);
  made.line = first_line(name);
  made.traits = builder_.frame().traits & BROKEN;
  locals_.bind(text_of(name, builder_.text()),
               static_cast<std::int32_t>(builder_.facts().bindings.size()));
  builder_.bind(std::move(made));
}

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  kit::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::java
