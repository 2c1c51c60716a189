#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/java/definitions.h"
#include "indexer/languages/java/expressions.h"
#include "indexer/languages/java/java.h"
#include "indexer/languages/java/locals.h"
#include "indexer/languages/java/syntax.h"
#include "indexer/languages/support/facts_builder.h"
#include "indexer/languages/support/text.h"

namespace context_delta::indexer::java {
namespace {

using support::child;
using support::first_line;
using support::is_null;
using support::text_of;

/// Bits of Frame::state.
enum State : std::uint16_t {
  IN_BASES = 1,        ///< inside `extends` or `implements`
  IN_FINAL_CLASS = 2,  ///< nothing can extend the class around
  IN_INTERFACE = 4,
};

class Extractor {
 public:
  explicit Extractor(std::string_view text) : builder_(text), expressions_(text, locals_) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth) {
    builder_.close(depth);
    locals_.close(depth);
  }
  Facts finish() { return builder_.finish(); }

 private:
  bool enter_declaration(Node kind, TSNode node, std::uint32_t depth);
  bool enter_statement(Node kind, TSNode node, std::uint32_t depth);
  bool enter_use(Node kind, TSNode node, std::uint32_t depth);
  void enter_type(TSNode node, std::uint32_t depth);
  void enter_function(TSNode node, std::uint32_t depth);
  void enter_body(TSNode node, std::uint32_t depth);
  void enter_fields(TSNode node);
  void enter_enum_constant(TSNode node);
  void enter_import(TSNode node);
  void enter_call(TSNode node);
  void enter_creation(TSNode node);
  void enter_explicit_constructor(TSNode node);
  void enter_method_reference(TSNode node);
  void enter_named_type(TSNode node);
  void enter_lambda(TSNode node, std::uint32_t depth);
  void enter_loop(TSNode node, std::uint32_t depth);
  void enter_local_variables(TSNode node);
  void enter_pattern(TSNode node);
  void enter_catch_parameter(TSNode node);
  void enter_assignment(TSNode target);
  void refer_to_type(std::string_view written, Role role, std::int32_t line);
  void open_class(TSNode body, DefinitionIndex index, std::uint16_t state, std::uint32_t depth);
  void bind_member(TSNode name, std::string type, std::string value, std::uint16_t traits);
  void bind_local(TSNode name, std::string type, std::string value,
                  Binding::Kind kind = Binding::Kind::LOCAL);

  const Syntax& java_ = syntax();
  support::FactsBuilder builder_;
  Locals locals_;
  Expressions expressions_;
  std::string package_;
  /// A class body that is still to come, by its node: what makes it.
  struct Creation {
    TSNode node = {};
    std::string name, base;
  };
  std::unordered_map<const void*, Creation> creations_;
  std::unordered_map<DefinitionIndex, TSNode> components_;  // of records
  const void* constructed_ = nullptr;  // a type that is no reference of its own
};

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

bool Extractor::enter_use(Node kind, TSNode node, std::uint32_t depth) {
  switch (kind) {
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::OBJECT_CREATION:
      enter_creation(node);
      return true;
    case Node::EXPLICIT_CONSTRUCTOR:
      enter_explicit_constructor(node);
      return true;
    case Node::METHOD_REFERENCE:
      enter_method_reference(node);
      return true;
    case Node::BASES:
      builder_.open(depth).state |= IN_BASES;
      return true;
    case Node::TYPE_ARGUMENTS:
    case Node::TYPE_PARAMETERS:
      builder_.open(depth).state &= static_cast<std::uint16_t>(~IN_BASES);
      return true;
    case Node::ANNOTATION:
      refer_to_type(text_of(child(node, java_.field.name), builder_.text()), Role::TYPE,
                    first_line(node));
      return true;
    case Node::MODULE_TYPES:
      for (const TSNode each : support::named_children(node)) {
        refer_to_type(text_of(each, builder_.text()), Role::TYPE, first_line(each));
      }
      return false;
    case Node::TYPE_PARAMETER:
      // Its name is no use of a type; its bounds are.
      constructed_ = child_of_kind(node, Node::TYPE_IDENTIFIER).id;
      return true;
    case Node::TYPE_IDENTIFIER:
    case Node::SCOPED_TYPE:
      enter_named_type(node);
      return kind == Node::SCOPED_TYPE ? false : true;
    default:
      return true;
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
  support::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = state;
  locals_.open(depth);
  if (!is_local) return;
  for (const TSNode each : support::named_children(body)) {
    if (java_.kind(each) != Node::FIELD) continue;
    for (const TSNode declarator : support::children(each, java_.field.declarator)) {
      locals_.bind(text_of(child(declarator, java_.field.name), builder_.text()), NO_LOCAL);
    }
  }
}

void Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const support::Frame outer = builder_.frame();
  TSNode parameters = child(node, java_.field.parameters);
  if (java_.kind(node) == Node::COMPACT_CONSTRUCTOR) {
    const auto record = components_.find(outer.definition);
    if (record != components_.end()) parameters = record->second;
  }
  Definition made = function_definition(node, parameters, builder_.text());
  if ((outer.state & IN_FINAL_CLASS) != 0) made.traits &= static_cast<std::uint16_t>(~VIRTUAL);
  const DefinitionIndex index = builder_.define(std::move(made));
  support::Frame& frame = builder_.open(depth);
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
  for (const TSNode each : support::children(node, java_.field.declarator)) {
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
  creations_[body.id] = {node, support::one_line(text_of(name, builder_.text())), type};
}

void Extractor::enter_import(TSNode node) {
  const std::string_view written = text_of(node, builder_.text());
  const TSNode path = first_child(node);
  std::string module = erased_text(text_of(path, builder_.text()));
  Import made;
  made.line = first_line(node);
  made.traits = builder_.frame().traits & BROKEN;
  const std::string_view after =
      support::trimmed(written.substr(std::min<std::size_t>(6, written.size())));
  const bool is_static = after.starts_with("static") && after.size() > 6 &&
                         !support::is_identifier_byte(after[6]) && after[6] != '.';
  if (is_static) made.traits |= STATIC_MEMBER;
  if (!is_null(child_of_kind(node, Node::ASTERISK))) {
    made.module = std::move(module);
    made.name = "*";
  } else {
    const std::size_t dot = module.rfind('.');
    if (dot == std::string::npos) return;
    made.name = module.substr(dot + 1);
    made.module = module.substr(0, dot);
    builder_.refer(made.name, made.module, Role::IMPORT, made.line).traits |=
        static_cast<std::uint16_t>(is_static ? STATIC_MEMBER : 0);
  }
  builder_.facts().imports.push_back(std::move(made));
}

void Extractor::enter_call(TSNode node) {
  const TSNode object = child(node, java_.field.object);
  const TSNode name = child(node, java_.field.name);
  const TSNode arguments = child(node, java_.field.arguments);
  std::string receiver;
  if (!is_null(object)) {
    receiver = expressions_.of(object);
    const bool outer_super =
        java_.kind(object) != Node::SUPER && !is_null(child_of_kind(node, Node::SUPER));
    if (outer_super) receiver += ".super";
  }
  builder_
      .refer(text_of(name, builder_.text()), std::move(receiver), Role::CALL, first_line(name),
             argument_count(arguments))
      .values = expressions_.arguments(arguments);
}

void Extractor::enter_creation(TSNode node) {
  const TSNode type = child(node, java_.field.type);
  const TSNode arguments = child(node, java_.field.arguments);
  const std::string written = erased_text(text_of(type, builder_.text()));
  const std::size_t dot = written.rfind('.');
  const bool dotted = dot != std::string::npos;
  const std::string name = dotted ? written.substr(dot + 1) : written;
  const TSNode outer = first_child(node);
  std::string receiver = dotted ? written.substr(0, dot) : "";
  // `outer.new Inner()`: the class is looked for in the type of the expression.
  const bool qualified = !is_null(outer) && outer.id != type.id &&
                         java_.kind(outer) != Node::ANNOTATION &&
                         java_.kind(outer) != Node::TYPE_ARGUMENTS;
  if (qualified) receiver = expressions_.of(outer) + ".new";
  const TSNode body = child_of_kind(node, Node::CLASS_BODY);
  Reference& made = builder_.refer(name, std::move(receiver), Role::CONSTRUCT, first_line(type),
                                   argument_count(arguments));
  made.values = expressions_.arguments(arguments);
  if (!is_null(body)) made.traits |= DECLARATION;
  constructed_ = java_.kind(type) == Node::GENERIC_TYPE ? first_child(type).id : type.id;
  if (!is_null(body)) creations_[body.id] = {node, "<anonymous " + name + ">", written};
}

void Extractor::enter_explicit_constructor(TSNode node) {
  const TSNode which = child(node, java_.field.constructor);
  const TSNode arguments = child(node, java_.field.arguments);
  builder_
      .refer(text_of(which, builder_.text()), {}, Role::CONSTRUCT, first_line(which),
             argument_count(arguments))
      .values = expressions_.arguments(arguments);
}

void Extractor::enter_method_reference(TSNode node) {
  const std::uint32_t count = ts_node_child_count(node);
  const TSNode target = first_child(node);
  if (count < 3 || is_null(target)) return;
  const TSNode last = ts_node_child(node, count - 1);
  const Node kind = java_.kind(target);
  const bool is_type =
      kind == Node::GENERIC_TYPE || kind == Node::TYPE_IDENTIFIER || kind == Node::SCOPED_TYPE;
  if (kind == Node::ARRAY_TYPE || kind == Node::PRIMITIVE_TYPE) return;
  std::string receiver =
      is_type ? erased_text(text_of(target, builder_.text())) : expressions_.of(target);
  if (java_.kind(last) == Node::IDENTIFIER) {
    builder_
        .refer(text_of(last, builder_.text()), std::move(receiver), Role::CALL, first_line(last))
        .values = "::";
    return;
  }
  if (text_of(last, builder_.text()) != "new") return;
  const std::size_t dot = receiver.rfind('.');
  const bool dotted = dot != std::string::npos;
  const std::string name = dotted ? receiver.substr(dot + 1) : receiver;
  if (!support::is_identifier(name)) return;
  builder_.refer(name, dotted ? receiver.substr(0, dot) : "", Role::CONSTRUCT, first_line(last))
      .values = "::";
}

void Extractor::enter_named_type(TSNode node) {
  if (node.id == constructed_) return;
  const bool in_bases = (builder_.frame().state & IN_BASES) != 0;
  refer_to_type(text_of(node, builder_.text()), in_bases ? Role::INHERIT : Role::TYPE,
                first_line(node));
}

void Extractor::refer_to_type(std::string_view written, Role role, std::int32_t line) {
  const std::string name = erased_text(written);
  const std::size_t dot = name.rfind('.');
  if (name.empty() || name == "var") return;
  if (dot == std::string::npos) {
    builder_.refer(name, {}, role, line);
  } else {
    builder_.refer(std::string_view(name).substr(dot + 1), name.substr(0, dot), role, line);
  }
}

void Extractor::enter_lambda(TSNode node, std::uint32_t depth) {
  locals_.open(depth);
  for (Parameter& parameter : parameters_of(child(node, java_.field.parameters), builder_.text())) {
    if (parameter.type == "var") parameter.type.clear();
    bind_local(parameter.name, std::move(parameter.type), "?");
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
  for (const TSNode each : support::children(node, java_.field.declarator)) {
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
  for (const TSNode each : support::named_children(node)) {
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
  const std::vector<TSNode> each = support::named_children(types);
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
  made.name = support::one_line(text_of(name, builder_.text()), support::LONGEST_EXPRESSION);
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
  made.name = support::one_line(text_of(name, builder_.text()), support::LONGEST_EXPRESSION);
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

}  // namespace

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  support::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::java
