#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/go/extractor.h"
#include "indexer/languages/kit/text.h"

// What declares names: functions, types, variables and the statements that bind locals.
namespace context_delta::indexer::go {

using kit::child;
using kit::first_line;
using kit::is_null;

void Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const TSNode receiver = child(node, go_.field.receiver);
  const TSNode generic = child(node, go_.field.type_parameters);
  type_parameters_ = is_null(receiver) ? type_parameters_of(generic, false, builder_.text())
                                       : receiver_parameters(receiver, builder_.text());
  const DefinitionIndex index = builder_.define(function_definition(node, names()));
  builder_.open(depth).definition = index;
  locals_.open_function(depth);
  for (Binding& each : parameter_bindings(generic, index, names())) builder_.bind(std::move(each));
  if (!is_null(receiver)) bind_parameters(receiver, Binding::Kind::PARAMETER);
  bind_parameters(child(node, go_.field.parameters), Binding::Kind::PARAMETER);
  bind_parameters(child(node, go_.field.result), Binding::Kind::LOCAL);
}

void Extractor::enter_literal(TSNode node, std::uint32_t depth) {
  const std::uint32_t start = ts_node_start_byte(node);
  while (!closures_.empty() && closures_.back().first_byte < start) closures_.pop_back();
  if (!closures_.empty() && closures_.back().first_byte == start) {
    const Closure closure = closures_.back();
    closures_.pop_back();
    const DefinitionIndex index =
        define_local(closure_definition(node, closure.name, closure.line, names()));
    literals_[start] = index;
    builder_.open(depth).definition = index;
  }
  locals_.open(depth);
  bind_parameters(child(node, go_.field.parameters), Binding::Kind::LOCAL);
  bind_parameters(child(node, go_.field.result), Binding::Kind::LOCAL);
}

void Extractor::bind_parameters(TSNode list, Binding::Kind kind) {
  if (go_.kind(list) != Node::PARAMETER_LIST) return;
  for (Parameter& each : parameters_of(list, names())) {
    Binding made;
    made.kind = kind;
    made.type = std::move(each.type);
    made.line = first_line(each.name);
    bind_local(text(each.name), std::move(made));
  }
}

void Extractor::bind_local(std::string_view name, Binding binding) {
  if (name.empty() || name == "_") return;
  binding.name = locals_.declare(name);
  binding.scope = builder_.frame().definition;
  binding.traits = builder_.frame().traits & BROKEN;
  bound_[binding.name] = builder_.facts().bindings.size();
  builder_.bind(std::move(binding));
}

void Extractor::enter_type(TSNode node, std::uint32_t depth) {
  const TSNode generic = child(node, go_.field.type_parameters);
  const TSNode type = child(node, go_.field.type);
  if (locals_.is_empty()) {
    type_parameters_ = type_parameters_of(generic, true, builder_.text());
  }
  const DefinitionIndex index = define_local(type_definition(node, names()));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = 0;
  if (builder_.definition(index).kind == Kind::INTERFACE) frame.state = IN_INTERFACE;
  for (Binding& each : parameter_bindings(generic, index, names())) builder_.bind(std::move(each));
  if (builder_.definition(index).kind == Kind::STRUCT) {
    named_struct_ = ts_node_start_byte(type);
    for (Binding& each : field_bindings(type, index, {}, names())) builder_.bind(std::move(each));
  }
  handled_ = ts_node_start_byte(child(node, go_.field.name));
  for (const TSNode base : embedded_types(type)) refer_to_type(base, Role::INHERIT);
  handled_ = ts_node_start_byte(child(node, go_.field.name));
}

/// The fields of a struct without a name belong to the function or file around it.
void Extractor::enter_struct(TSNode node) {
  if (ts_node_start_byte(node) == named_struct_) return;
  DefinitionIndex scope = builder_.frame().definition;
  while (scope != NOWHERE && !kit::is_function_kind(builder_.definition(scope).kind)) {
    scope = builder_.definition(scope).parent;
  }
  const std::string prefix = structs_.name(ts_node_start_byte(node)) + ".";
  for (Binding& each : field_bindings(node, scope, prefix, names())) {
    if (scope != NOWHERE) each.kind = Binding::Kind::LOCAL;
    builder_.bind(std::move(each));
  }
}

void Extractor::enter_method_element(TSNode node, std::uint32_t depth) {
  if ((builder_.frame().state & IN_INTERFACE) == 0) return;
  const DefinitionIndex index = builder_.define(interface_method(node, names()));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = 0;
}

void Extractor::enter_variables(TSNode node, std::uint32_t depth, std::string_view keyword) {
  std::vector<TSNode> left;
  for (const TSNode name : kit::children(node, go_.field.name)) {
    if (go_.kind(name) == Node::IDENTIFIER) left.push_back(name);
  }
  TSNode right = child(node, go_.field.value);
  std::string type = type_text(child(node, go_.field.type), names());
  if (go_.kind(node) == Node::CONST_SPEC) repeat_constant(right, type);
  if (!locals_.is_empty()) return declare_behind(node, depth, left, right, type);
  const std::vector<std::string> values = assigned_values(right, left.size(), names());
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (text(left[i]) == "_") continue;
    Binding made;
    made.name = kit::one_line(text(left[i]));
    made.kind = Binding::Kind::GLOBAL;
    made.type = type;
    made.value = values[i];
    made.line = first_line(left[i]);
    builder_.bind(std::move(made));
    builder_.define(variable_definition(node, left[i], keyword, names()));
  }
}

/// A constant without a value has the type and value of the one before.
void Extractor::repeat_constant(TSNode& value, std::string& type) {
  if (is_null(value)) {
    value = constant_value_;
    type = constant_type_;
  }
  constant_value_ = value;
  constant_type_ = type;
}

void Extractor::enter_short_variables(TSNode node, std::uint32_t depth) {
  declare_behind(node, depth, parts(child(node, go_.field.left)), child(node, go_.field.right), {});
}

/// The names of `left` are bound when the statement at `depth` ends.
void Extractor::declare_behind(TSNode node, std::uint32_t depth, const std::vector<TSNode>& left,
                               TSNode right, const std::string& type) {
  const std::vector<TSNode> nodes = parts(right);
  const std::vector<std::string> values = assigned_values(right, left.size(), names());
  std::vector<Closure> closures;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (go_.kind(left[i]) != Node::IDENTIFIER) continue;
    Pending made;
    made.depth = depth;
    made.name = text(left[i]);
    made.binding.type = type;
    made.binding.value = values[i];
    made.binding.line = first_line(left[i]);
    if (nodes.size() == left.size() && go_.kind(nodes[i]) == Node::FUNCTION_LITERAL) {
      made.closure = ts_node_start_byte(nodes[i]);
      if (made.name != "_") closures.push_back({made.closure, made.name, first_line(node)});
    }
    pending_.push_back(std::move(made));
  }
  closures_.insert(closures_.end(), closures.rbegin(), closures.rend());
}

/// What is defined inside a function literal outside functions is no member of the package.
DefinitionIndex Extractor::define_local(Definition definition) {
  if (!locals_.is_empty()) definition.traits |= LOCAL_LINKAGE;
  return builder_.define(std::move(definition));
}

/// What a closure's name means may change.
void Extractor::enter_assignment(TSNode node) {
  for (const TSNode each : parts(child(node, go_.field.left))) {
    if (go_.kind(each) != Node::IDENTIFIER) continue;
    const auto found = bound_.find(locals_.find(text(each)));
    if (found != bound_.end()) builder_.facts().bindings[found->second].traits |= REASSIGNED;
  }
}

void Extractor::enter_range(TSNode node, std::uint32_t depth) {
  if (!has_token(node, ":=")) return;
  const bool is_range = go_.kind(node) == Node::RANGE;
  const std::vector<TSNode> left = parts(child(node, go_.field.left));
  const std::string right = expression_text(child(node, go_.field.right), names());
  for (std::size_t i = 0; i < left.size() && i < 2; ++i) {
    if (go_.kind(left[i]) != Node::IDENTIFIER) continue;
    Pending made;
    made.depth = depth;
    made.name = text(left[i]);
    made.binding.line = first_line(left[i]);
    made.binding.value = right;
    if (is_range && right != "?") made.binding.value += i == 0 ? "~0" : "~1";
    if (!is_range && i == 1) made.binding.value = "{bool}";
    pending_.push_back(std::move(made));
  }
}

void Extractor::enter_type_switch(TSNode node, std::uint32_t depth) {
  locals_.open(depth);
  switches_.emplace_back(depth, node);
}

/// In a case of one type, the name of the switch has that type.
void Extractor::enter_type_case(TSNode node, std::uint32_t depth) {
  locals_.open(depth);
  if (switches_.empty()) return;
  const TSNode head = switches_.back().second;
  const std::vector<TSNode> alias = parts(child(head, go_.field.alias));
  if (alias.empty()) return;
  Binding made;
  made.line = first_line(node);
  std::vector<TSNode> types = kit::children(node, go_.field.type);
  std::erase_if(types, [](TSNode each) { return !ts_node_is_named(each); });
  if (types.size() == 1 && text(types.front()) != "nil") {
    made.type = type_text(types.front(), names());
  } else {
    made.value = expression_text(child(head, go_.field.value), names());
  }
  bind_local(text(alias.front()), std::move(made));
}

}  // namespace context_delta::indexer::go
