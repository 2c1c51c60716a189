#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/definitions.h"
#include "indexer/languages/python/python.h"
#include "indexer/languages/python/syntax.h"

namespace context_delta::indexer::python {
namespace {

using kit::child;
using kit::first_line;
using kit::is_null;
using kit::text_of;

/// Whether a string's quotes follow a letter: only then may expressions stand in it.
bool has_prefix(std::string_view literal) {
  return !literal.starts_with('"') && !literal.starts_with('\'');
}

/// Bits of Frame::state.
enum State : std::uint16_t { IN_TYPE = 1 };

class Extractor {
 public:
  explicit Extractor(std::string_view text) : builder_(text) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth) { builder_.close(depth); }
  Facts finish();

 private:
  void enter_error(std::uint32_t depth);
  void enter_conditional(std::uint32_t depth);
  bool enter_function(TSNode node, std::uint32_t depth);
  bool enter_class(TSNode node, std::uint32_t depth);
  void enter_decorator(TSNode node);
  void refer_to_dotted(std::string_view dotted, Role role, std::int32_t line);
  void enter_call(TSNode node);
  void enter_assignment(TSNode node);
  void enter_import(TSNode node);
  void enter_import_from(TSNode node);
  void enter_except(TSNode node);
  bool enter_name_in_type(TSNode node);
  void enter_lambda(TSNode node);

  void add_variables(TSNode statement, TSNode left, const std::string& type);
  ExpressionIndex expression(TSNode node) {
    return expression_of(node, builder_.text(), builder_.expressions());
  }
  ExpressionIndex unknown() { return builder_.expressions().unknown(); }
  void bind_target(TSNode target, std::string type, ExpressionIndex value);
  void bind_name(TSNode name, std::string type, ExpressionIndex value, std::uint16_t traits = 0);
  void bind_attribute(TSNode attribute, std::string type, ExpressionIndex value);
  void rebind_outer_names(TSNode statement, bool global);
  void add_exports(TSNode right);
  DefinitionIndex self_class(std::string_view name);
  std::string_view parameter_type(std::string_view name);

  const Syntax& python_ = syntax();
  kit::FactsBuilder builder_;
  /// Of a function: its bindings in Facts::bindings, and the name of `self`.
  struct Parameters {
    std::size_t first_binding = 0;
    std::size_t last_binding = 0;
    std::string receiver;
  };
  std::unordered_map<DefinitionIndex, Parameters> parameters_;
  std::vector<std::pair<DefinitionIndex, std::string>> globals_;  // declared in which function
  std::unordered_set<std::string> variables_;                     // of the module, already defined
  TSNode decorated_ = {};
};

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  switch (python_.kind(node)) {
    case Node::ERROR:
      enter_error(depth);
      return true;
    case Node::DECORATED:
      builder_.open(depth).start = first_line(node);
      decorated_ = node;
      return true;
    case Node::FUNCTION:
      return enter_function(node, depth);
    case Node::CLASS:
      return enter_class(node, depth);
    case Node::IF:
    case Node::TRY:
    case Node::WHILE:
      enter_conditional(depth);
      return true;
    case Node::FOR:
      enter_conditional(depth);
      bind_target(child(node, python_.field.left), {}, NO_EXPRESSION);
      return true;
    case Node::FOR_IN:
      bind_target(child(node, python_.field.left), {}, NO_EXPRESSION);
      return true;
    case Node::DECORATOR:
      enter_decorator(node);
      return true;
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::ASSIGNMENT:
      enter_assignment(node);
      return true;
    case Node::AUGMENTED_ASSIGNMENT: {
      const TSNode left = child(node, python_.field.left);
      if (text_of(left, builder_.text()) == "__all__") {
        add_exports(child(node, python_.field.right));
      }
      if (python_.kind(left) == Node::IDENTIFIER) bind_name(left, {}, unknown(), REASSIGNED);
      return true;
    }
    case Node::NAMED_EXPRESSION:
      bind_name(child(node, python_.field.name), {}, expression(child(node, python_.field.value)));
      return true;
    case Node::AS_PATTERN_TARGET:
    case Node::CASE_PATTERN:
      bind_target(node, {}, NO_EXPRESSION);
      return true;
    case Node::EXCEPT:
      enter_except(node);
      return true;
    case Node::DELETE:
      for (const TSNode below : kit::named_children(node)) bind_target(below, {}, unknown());
      return true;
    case Node::LAMBDA:
      enter_lambda(node);
      return true;
    case Node::GLOBAL:
      rebind_outer_names(node, true);
      return false;
    case Node::NONLOCAL:
      rebind_outer_names(node, false);
      return false;
    case Node::IMPORT:
      enter_import(node);
      return false;
    case Node::IMPORT_FROM:
      enter_import_from(node);
      return false;
    case Node::FUTURE_IMPORT:
      return false;
    case Node::TYPE:
      builder_.open(depth).state |= IN_TYPE;
      return true;
    case Node::STRING:
      return enter_name_in_type(node) && has_prefix(text_of(node, builder_.text()));
    case Node::IDENTIFIER:
    case Node::ATTRIBUTE:
      return enter_name_in_type(node);
    default:
      return true;
  }
}

Facts Extractor::finish() { return builder_.finish(); }

void Extractor::enter_error(std::uint32_t depth) { builder_.open(depth).traits |= BROKEN; }

void Extractor::enter_conditional(std::uint32_t depth) {
  builder_.open(depth).traits |= CONDITIONAL;
}

bool Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const bool in_class = kit::is_class_kind(builder_.scope_kind());
  const Decorators decorators =
      builder_.frame().start == 0 ? Decorators{} : decorators_of(decorated_, builder_.text());
  Definition made = function_definition(node, builder_.text(), in_class, decorators);
  const bool has_receiver = in_class && !decorators.is_static;
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  frame.start = 0;
  Parameters& known = parameters_[index];
  known.first_binding = builder_.facts().bindings.size();
  for (Binding& binding :
       parameter_bindings(child(node, python_.field.parameters), builder_, index, has_receiver)) {
    const ExpressionIndex value = binding.value_expression;
    const bool is_self =
        value != NO_EXPRESSION && builder_.expressions().at(value).kind == ExpressionKind::SELF;
    if (is_self) known.receiver = binding.name;
    builder_.bind(std::move(binding));
  }
  known.last_binding = builder_.facts().bindings.size();
  return true;
}

bool Extractor::enter_class(TSNode node, std::uint32_t depth) {
  const TSNode superclasses = child(node, python_.field.superclasses);
  Definition made = class_definition(node, builder_.text());
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  frame.start = 0;
  for (const TSNode base : base_nodes(superclasses)) {
    refer_to_dotted(dotted_name(base, builder_.text()), Role::INHERIT, first_line(base));
  }
  return true;
}

/// A reference to the last name of `a.b.c`; none for an empty text.
void Extractor::refer_to_dotted(std::string_view dotted, Role role, std::int32_t line) {
  if (dotted.empty()) return;
  const std::size_t dot = dotted.rfind('.');
  const bool is_member = dot != std::string_view::npos;
  builder_.refer_to(
      is_member ? dotted.substr(dot + 1) : dotted,
      is_member ? dotted_expression(dotted.substr(0, dot), builder_.expressions()) : NO_EXPRESSION,
      role, line);
}

void Extractor::enter_decorator(TSNode node) {
  const TSNode expression = ts_node_named_child(node, 0);
  const Node kind = python_.kind(expression);
  if (kind == Node::IDENTIFIER) {
    builder_.refer(text_of(expression, builder_.text()), {}, Role::DECORATE, first_line(expression),
                   1);
  } else if (kind == Node::ATTRIBUTE) {
    const TSNode name = child(expression, python_.field.attribute);
    builder_.refer_to(text_of(name, builder_.text()),
                      this->expression(child(expression, python_.field.object)), Role::DECORATE,
                      first_line(name), 1);
  }
}

void Extractor::enter_call(TSNode node) {
  const TSNode function = child(node, python_.field.function);
  const std::int16_t count = call_arguments(child(node, python_.field.arguments), builder_.text());
  const Node kind = python_.kind(function);
  if (kind == Node::IDENTIFIER) {
    builder_.refer(text_of(function, builder_.text()), {}, Role::CALL, first_line(function), count);
  } else if (kind == Node::ATTRIBUTE) {
    const TSNode name = child(function, python_.field.attribute);
    builder_.refer_to(text_of(name, builder_.text()),
                      expression(child(function, python_.field.object)), Role::CALL,
                      first_line(name), count);
  }
}

void Extractor::enter_assignment(TSNode node) {
  const TSNode left = child(node, python_.field.left);
  const TSNode right = child(node, python_.field.right);
  TSNode value = right;
  while (python_.kind(value) == Node::ASSIGNMENT) value = child(value, python_.field.right);
  std::string type = kit::one_line(text_of(child(node, python_.field.type), builder_.text()));
  const ExpressionIndex bound = is_null(value) ? NO_EXPRESSION : expression(value);
  if (text_of(left, builder_.text()) == "__all__") add_exports(right);
  if (builder_.frame().definition == NOWHERE) add_variables(node, left, type);
  bind_target(left, std::move(type), bound);
}

/// A module's variable is defined where it is first assigned.
void Extractor::add_variables(TSNode statement, TSNode left, const std::string& type) {
  for (const TSNode name : bound_names(left)) {
    if (!variables_.emplace(text_of(name, builder_.text())).second) continue;
    Definition made = variable_definition(statement, name, builder_.text());
    made.type = type;
    builder_.define(std::move(made));
  }
}

/// A target of several names says nothing of the type of each.
void Extractor::bind_target(TSNode target, std::string type, ExpressionIndex value) {
  const Node kind = python_.kind(target);
  if (kind == Node::IDENTIFIER) {
    bind_name(target, std::move(type), value);
  } else if (kind == Node::ATTRIBUTE) {
    bind_attribute(target, std::move(type), value);
  } else if (kind == Node::CASE_PATTERN) {
    const std::string_view text = kit::trimmed(text_of(target, builder_.text()));
    if (kit::is_identifier(text)) bind_name(target, {}, unknown());
  } else {
    for (const TSNode name : bound_names(target)) bind_name(name, {}, unknown());
  }
}

void Extractor::bind_name(TSNode name, std::string type, ExpressionIndex value,
                          std::uint16_t traits) {
  const kit::Frame& frame = builder_.frame();
  Binding binding;
  binding.name = kit::one_line(text_of(name, builder_.text()));
  if (binding.name.empty()) return;
  binding.scope = frame.definition;
  binding.type = std::move(type);
  binding.value_expression = value;
  binding.line = first_line(name);
  binding.traits = traits | (frame.traits & (CONDITIONAL | BROKEN));
  const Kind scope = builder_.scope_kind();
  const bool declared_global =
      std::find(globals_.begin(), globals_.end(), std::pair(frame.definition, binding.name)) !=
      globals_.end();
  if (frame.definition == NOWHERE || declared_global) {
    binding.kind = Binding::Kind::GLOBAL;
    binding.scope = NOWHERE;
    if (declared_global) binding.traits |= REASSIGNED;
  } else {
    binding.kind = kit::is_class_kind(scope) ? Binding::Kind::MEMBER : Binding::Kind::LOCAL;
  }
  builder_.bind(std::move(binding));
}

/// `self.x = ...` binds a member of the class; other attributes are not followed.
void Extractor::bind_attribute(TSNode attribute, std::string type, ExpressionIndex value) {
  const TSNode object = child(attribute, python_.field.object);
  if (python_.kind(object) != Node::IDENTIFIER) return;
  const std::string_view owner = text_of(object, builder_.text());
  const TSNode name = child(attribute, python_.field.attribute);
  const DefinitionIndex scope = self_class(owner);
  if (scope == NOWHERE) {
    if (builder_.frame().definition == NOWHERE) add_patch(builder_, attribute, name, owner);
    return;
  }
  Binding binding;
  binding.name = kit::one_line(text_of(name, builder_.text()));
  binding.kind = Binding::Kind::MEMBER;
  binding.scope = scope;
  binding.type = std::move(type);
  if (binding.type.empty() && value != NO_EXPRESSION) {
    const Expression& bound = builder_.expressions().at(value);
    if (bound.kind == ExpressionKind::NAME) binding.type = parameter_type(bound.name);
  }
  binding.value_expression = value;
  binding.line = first_line(name);
  binding.traits = builder_.frame().traits & BROKEN;
  builder_.bind(std::move(binding));
}

/// The class whose instance or self `name` is by being the first parameter of a method.
DefinitionIndex Extractor::self_class(std::string_view name) {
  for (DefinitionIndex i = builder_.frame().definition; i != NOWHERE;
       i = builder_.definition(i).parent) {
    const Definition& definition = builder_.definition(i);
    if (!kit::is_function_kind(definition.kind)) return NOWHERE;
    if (definition.kind == Kind::FUNCTION) continue;
    return parameters_[i].receiver == name ? definition.parent : NOWHERE;
  }
  return NOWHERE;
}

std::string_view Extractor::parameter_type(std::string_view name) {
  const auto function = parameters_.find(builder_.frame().definition);
  if (function == parameters_.end()) return {};
  const std::vector<Binding>& bindings = builder_.facts().bindings;
  for (std::size_t i = function->second.first_binding; i < function->second.last_binding; ++i) {
    if (bindings[i].name == name) return bindings[i].type;
  }
  return {};
}

void Extractor::rebind_outer_names(TSNode statement, bool global) {
  const DefinitionIndex here = builder_.frame().definition;
  if (here == NOWHERE) return;
  for (const TSNode name : kit::named_children(statement)) {
    const std::string text = kit::one_line(text_of(name, builder_.text()));
    if (global) {
      globals_.emplace_back(here, text);
      continue;
    }
    Binding binding;
    binding.name = text;
    binding.scope = builder_.definition(here).parent;
    binding.line = first_line(name);
    binding.value_expression = unknown();
    binding.traits = REASSIGNED;
    builder_.bind(std::move(binding));
  }
}

void Extractor::add_exports(TSNode right) {
  if (is_null(right)) return;
  for (const TSNode item : kit::named_children(right)) {
    if (python_.kind(item) != Node::STRING) continue;
    std::string_view text = text_of(item, builder_.text());
    while (!text.empty() && text.back() != '"' && text.back() != '\'') text.remove_suffix(1);
    const std::size_t start = text.find_first_of("\"'");
    if (start == std::string_view::npos || text.size() < start + 2) continue;
    text = text.substr(start + 1, text.size() - start - 2);
    if (kit::is_identifier(text)) builder_.facts().exports.emplace_back(text);
  }
}

void Extractor::enter_import(TSNode node) {
  for (const TSNode item : kit::children(node, python_.field.name)) {
    const bool aliased = python_.kind(item) == Node::ALIASED_IMPORT;
    const TSNode module = aliased ? child(item, python_.field.name) : item;
    Import made;
    made.module = kit::one_line(text_of(module, builder_.text()));
    if (aliased) {
      made.alias = kit::one_line(text_of(child(item, python_.field.alias), builder_.text()));
    }
    made.scope = builder_.frame().definition;
    made.line = first_line(item);
    made.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
    builder_.facts().imports.push_back(std::move(made));
  }
}

void Extractor::enter_import_from(TSNode node) {
  Import common;
  common.module = kit::one_line(text_of(child(node, python_.field.module_name), builder_.text()));
  std::erase(common.module, ' ');
  common.scope = builder_.frame().definition;
  common.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
  for (const TSNode item : kit::named_children(node)) {
    Import made = common;
    made.line = first_line(item);
    if (python_.kind(item) == Node::WILDCARD) {
      made.name = "*";
      builder_.facts().imports.push_back(std::move(made));
    }
  }
  for (const TSNode item : kit::children(node, python_.field.name)) {
    const bool aliased = python_.kind(item) == Node::ALIASED_IMPORT;
    const TSNode name = aliased ? child(item, python_.field.name) : item;
    Import made = common;
    made.line = first_line(item);
    made.name = kit::one_line(text_of(name, builder_.text()));
    made.alias = aliased ? kit::one_line(text_of(child(item, python_.field.alias), builder_.text()))
                         : made.name;
    builder_.refer_to(made.name, builder_.expressions().add(ExpressionKind::MODULE, made.module),
                      Role::IMPORT, made.line);
    builder_.facts().imports.push_back(std::move(made));
  }
}

void Extractor::enter_except(TSNode node) {
  const TSNode alias = child(node, python_.field.alias);
  if (!is_null(alias)) bind_target(alias, {}, unknown());
}

bool Extractor::enter_name_in_type(TSNode node) {
  if ((builder_.frame().state & IN_TYPE) == 0) return true;
  const Node kind = python_.kind(node);
  if (kind == Node::IDENTIFIER) {
    builder_.refer(text_of(node, builder_.text()), {}, Role::TYPE, first_line(node));
  } else if (kind == Node::ATTRIBUTE) {
    const TSNode name = child(node, python_.field.attribute);
    builder_.refer_to(text_of(name, builder_.text()), expression(child(node, python_.field.object)),
                      Role::TYPE, first_line(name));
  } else {
    for (const std::string_view name : names_in_type(text_of(node, builder_.text()))) {
      refer_to_dotted(name, Role::TYPE, first_line(node));
    }
  }
  return false;
}

void Extractor::enter_lambda(TSNode node) {
  for (Binding& binding : parameter_bindings(child(node, python_.field.parameters), builder_,
                                             builder_.frame().definition, false)) {
    binding.kind = Binding::Kind::LOCAL;
    builder_.bind(std::move(binding));
  }
}

}  // namespace

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  kit::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::python
