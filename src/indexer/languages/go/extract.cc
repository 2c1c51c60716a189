#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/go/builtins.h"
#include "indexer/languages/go/constraints.h"
#include "indexer/languages/go/definitions.h"
#include "indexer/languages/go/expressions.h"
#include "indexer/languages/go/go.h"
#include "indexer/languages/go/locals.h"
#include "indexer/languages/go/syntax.h"
#include "indexer/languages/support/facts_builder.h"
#include "indexer/languages/support/text.h"

namespace context_delta::indexer::go {
namespace {

using support::child;
using support::first_line;
using support::is_null;
using support::text_of;

/// Bits of Frame::state.
enum State : std::uint16_t { IN_INTERFACE = 1 };

class Extractor {
 public:
  explicit Extractor(std::string_view text) : builder_(text) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth);
  Facts finish() { return builder_.finish(); }

 private:
  /// Names that a statement declares: they mean something only behind it.
  struct Pending {
    std::uint32_t depth = 0;
    std::string_view name;
    Binding binding;
    std::uint32_t closure = 0;  // first byte of the function literal that it is bound to; 0: none
  };
  /// A function literal to come that has a name.
  struct Closure {
    std::uint32_t first_byte = 0;
    std::string_view name;
    std::int32_t line = 1;
  };

  bool enter_statement(TSNode node, std::uint32_t depth);
  void enter_comment(TSNode node);
  void enter_import(TSNode node);
  void enter_function(TSNode node, std::uint32_t depth);
  void enter_literal(TSNode node, std::uint32_t depth);
  void enter_type(TSNode node, std::uint32_t depth);
  void enter_struct(TSNode node);
  void enter_method_element(TSNode node, std::uint32_t depth);
  void enter_variables(TSNode node, std::uint32_t depth, std::string_view keyword);
  void repeat_constant(TSNode& value, std::string& type);
  void enter_short_variables(TSNode node, std::uint32_t depth);
  void enter_assignment(TSNode node);
  void enter_range(TSNode node, std::uint32_t depth);
  void enter_type_switch(TSNode node, std::uint32_t depth);
  void enter_type_case(TSNode node, std::uint32_t depth);
  void enter_call(TSNode node);
  void enter_conversion(TSNode node);
  bool enter_type_name(TSNode node);

  void bind_clause(std::string_view name, std::string_view value);
  void bind_parameters(TSNode list, Binding::Kind kind);
  void bind_local(std::string_view name, Binding binding);
  void declare_behind(TSNode node, std::uint32_t depth, const std::vector<TSNode>& left,
                      TSNode right, const std::string& type);
  void refer_to_callee(TSNode callee, std::int16_t arguments);
  void refer_to_type(TSNode type, Role role);
  DefinitionIndex define_local(Definition definition);
  bool may_be_instantiated(TSNode callee) const;
  bool is_type_parameter(std::string_view name) const;

  Names names() { return {builder_.text(), locals_, type_parameters_, structs_}; }
  std::string_view text(TSNode node) const { return text_of(node, builder_.text()); }

  const Syntax& go_ = syntax();
  support::FactsBuilder builder_;
  Locals locals_;
  TypeParameters type_parameters_;
  AnonymousStructs structs_;
  std::vector<Pending> pending_;
  std::vector<Closure> closures_;
  std::unordered_map<std::string, std::size_t> bound_;           // locals of the function
  std::unordered_map<std::uint32_t, DefinitionIndex> literals_;  // named ones, by first byte
  std::vector<std::pair<std::uint32_t, TSNode>> switches_;       // depth and node of type switches
  std::uint32_t named_struct_ = UINT32_MAX;  // first byte of a struct whose fields are bound
  std::uint32_t handled_ = UINT32_MAX;  // first byte of a type name that was referred to already
  TSNode constant_value_ = {};          // of the constant before
  std::string constant_type_;
  bool in_package_ = false;  // the package clause was seen
};

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  switch (go_.kind(node)) {
    case Node::ERROR:
      builder_.open(depth).traits |= BROKEN;
      return true;
    case Node::COMMENT:
      enter_comment(node);
      return false;
    case Node::PACKAGE_CLAUSE:
      in_package_ = true;
      bind_clause(PACKAGE_NAME, text(ts_node_named_child(node, 0)));
      return false;
    case Node::IMPORT_SPEC:
      enter_import(node);
      return false;
    case Node::FUNCTION:
    case Node::METHOD:
      enter_function(node, depth);
      return true;
    case Node::FUNCTION_LITERAL:
      enter_literal(node, depth);
      return true;
    case Node::TYPE_SPEC:
    case Node::TYPE_ALIAS:
      enter_type(node, depth);
      return true;
    case Node::METHOD_ELEMENT:
      enter_method_element(node, depth);
      return true;
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::CONVERSION:
      enter_conversion(node);
      return true;
    case Node::COMPOSITE_LITERAL:
      refer_to_type(child(node, go_.field.type), Role::CONSTRUCT);
      return true;
    case Node::STRUCT_TYPE:
      enter_struct(node);
      return true;
    case Node::TYPE_IDENTIFIER:
    case Node::QUALIFIED_TYPE:
      return enter_type_name(node);
    default:
      return enter_statement(node, depth);
  }
}

bool Extractor::enter_statement(TSNode node, std::uint32_t depth) {
  switch (go_.kind(node)) {
    case Node::BLOCK:
    case Node::IF:
    case Node::FOR:
    case Node::SWITCH:
    case Node::CASE:
      locals_.open(depth);
      break;
    case Node::TYPE_SWITCH:
      enter_type_switch(node, depth);
      break;
    case Node::TYPE_CASE:
      enter_type_case(node, depth);
      break;
    case Node::VARIABLE_SPEC:
      enter_variables(node, depth, "var");
      break;
    case Node::CONST_SPEC:
      enter_variables(node, depth, "const");
      break;
    case Node::SHORT_VARIABLES:
      enter_short_variables(node, depth);
      break;
    case Node::ASSIGNMENT:
      enter_assignment(node);
      break;
    case Node::RANGE:
    case Node::RECEIVE:
      enter_range(node, depth);
      break;
    default:
      break;
  }
  return true;
}

void Extractor::leave(std::uint32_t depth) {
  builder_.close(depth);
  locals_.close(depth);
  while (!switches_.empty() && switches_.back().first == depth) switches_.pop_back();
  std::size_t first = pending_.size();
  while (first > 0 && pending_[first - 1].depth == depth) --first;
  for (std::size_t i = first; i < pending_.size(); ++i) {
    const auto literal = literals_.find(pending_[i].closure);
    if (pending_[i].closure != 0 && literal != literals_.end()) {
      pending_[i].binding.value = "@" + std::to_string(literal->second);
    }
    bind_local(pending_[i].name, std::move(pending_[i].binding));
  }
  pending_.erase(pending_.begin() + static_cast<std::ptrdiff_t>(first), pending_.end());
  if (locals_.is_empty() && !bound_.empty()) bound_.clear();
}

/// Build constraints stand in comments above the package clause.
void Extractor::enter_comment(TSNode node) {
  if (in_package_) return;
  const std::string_view comment = support::trimmed(text(node));
  const std::string_view modern = "//go:build ";
  const std::string_view old = "// +build ";
  if (comment.starts_with(modern)) bind_clause(BUILD_CONSTRAINT, comment.substr(modern.size()));
  if (comment.starts_with(old)) {
    bind_clause(BUILD_CONSTRAINT, modern_constraint(comment.substr(old.size())));
  }
}

void Extractor::bind_clause(std::string_view name, std::string_view value) {
  Binding made;
  made.name = name;
  made.kind = Binding::Kind::GLOBAL;
  made.value = support::one_line(value);
  builder_.bind(std::move(made));
}

void Extractor::enter_import(TSNode node) {
  Import made;
  std::string_view path = text(child(node, go_.field.path));
  if (path.size() < 2) return;
  path = path.substr(1, path.size() - 2);
  made.module = support::one_line(path);
  const TSNode name = child(node, go_.field.name);
  if (go_.kind(name) == Node::DOT) {
    made.name = "*";
  } else if (!is_null(name)) {
    made.alias = support::one_line(text(name));
  }
  made.line = first_line(node);
  made.traits = builder_.frame().traits & BROKEN;
  builder_.facts().imports.push_back(std::move(made));
}

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
  support::Frame& frame = builder_.open(depth);
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
  while (scope != NOWHERE && !support::is_function_kind(builder_.definition(scope).kind)) {
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
  support::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.state = 0;
}

void Extractor::enter_variables(TSNode node, std::uint32_t depth, std::string_view keyword) {
  std::vector<TSNode> left;
  for (const TSNode name : support::children(node, go_.field.name)) {
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
    made.name = support::one_line(text(left[i]));
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
  std::vector<TSNode> types = support::children(node, go_.field.type);
  std::erase_if(types, [](TSNode each) { return !ts_node_is_named(each); });
  if (types.size() == 1 && text(types.front()) != "nil") {
    made.type = type_text(types.front(), names());
  } else {
    made.value = expression_text(child(head, go_.field.value), names());
  }
  bind_local(text(alias.front()), std::move(made));
}

void Extractor::enter_call(TSNode node) {
  refer_to_callee(child(node, go_.field.function),
                  call_arguments(child(node, go_.field.arguments)));
}

/// `f[T](x)` reads like a conversion; only resolution knows.
void Extractor::enter_conversion(TSNode node) {
  TSNode type = child(node, go_.field.type);
  if (go_.kind(type) == Node::GENERIC_TYPE) refer_to_type(type, Role::CALL);
}

void Extractor::refer_to_callee(TSNode callee, std::int16_t arguments) {
  for (int step = 0; step < 8; ++step) {
    switch (go_.kind(callee)) {
      case Node::PARENTHESIZED:
        callee = ts_node_named_child(callee, 0);
        continue;
      case Node::INDEX:
        callee = child(callee, go_.field.operand);
        if (!may_be_instantiated(callee)) return;
        continue;
      case Node::IDENTIFIER: {
        const std::string local = locals_.find(text(callee));
        const std::size_t mark = local.rfind('\'');
        if (local.empty() && is_predeclared(text(callee))) return;
        builder_.refer(text(callee), local.empty() ? std::string() : local.substr(mark), Role::CALL,
                       first_line(callee), arguments);
        return;
      }
      case Node::SELECTOR: {
        const TSNode name = child(callee, go_.field.field);
        builder_.refer(text(name), expression_text(child(callee, go_.field.operand), names()),
                       Role::CALL, first_line(name), arguments);
        return;
      }
      case Node::TYPE_INSTANTIATION:
      case Node::GENERIC_TYPE:
        refer_to_type(callee, Role::CALL);
        return;
      default:
        return;
    }
  }
}

void Extractor::refer_to_type(TSNode type, Role role) {
  const TSNode named = named_type(type);
  if (is_null(named)) return;
  handled_ = ts_node_start_byte(named);
  if (go_.kind(named) == Node::QUALIFIED_TYPE) {
    const TSNode name = child(named, go_.field.name);
    builder_.refer(text(name), support::one_line(text(child(named, go_.field.package))), role,
                   first_line(name));
  } else if (!is_predeclared(text(named)) && !is_type_parameter(text(named))) {
    builder_.refer(text(named), {}, role, first_line(named));
  }
}

/// Whether an index behind the expression may be type arguments of a function.
bool Extractor::may_be_instantiated(TSNode callee) const {
  if (go_.kind(callee) == Node::IDENTIFIER) return !locals_.has(text(callee));
  if (go_.kind(callee) != Node::SELECTOR) return false;
  const TSNode package = child(callee, go_.field.operand);
  return go_.kind(package) == Node::IDENTIFIER && !locals_.has(text(package));
}

bool Extractor::is_type_parameter(std::string_view name) const {
  return std::any_of(type_parameters_.begin(), type_parameters_.end(),
                     [&](const auto& each) { return each.first == name; });
}

bool Extractor::enter_type_name(TSNode node) {
  if (ts_node_start_byte(node) != handled_) refer_to_type(node, Role::TYPE);
  return false;
}

}  // namespace

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  support::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::go
