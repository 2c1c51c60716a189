#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/go/builtins.h"
#include "indexer/languages/go/constraints.h"
#include "indexer/languages/go/extractor.h"
#include "indexer/languages/go/go.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {

using kit::child;
using kit::first_line;
using kit::is_null;

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
  const std::string_view comment = kit::trimmed(text(node));
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
  made.value = kit::one_line(value);
  builder_.bind(std::move(made));
}

void Extractor::enter_import(TSNode node) {
  Import made;
  std::string_view path = text(child(node, go_.field.path));
  if (path.size() < 2) return;
  path = path.substr(1, path.size() - 2);
  made.module = kit::one_line(path);
  const TSNode name = child(node, go_.field.name);
  if (go_.kind(name) == Node::DOT) {
    made.name = "*";
  } else if (!is_null(name)) {
    made.alias = kit::one_line(text(name));
  }
  made.line = first_line(node);
  made.traits = builder_.frame().traits & BROKEN;
  builder_.facts().imports.push_back(std::move(made));
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
    builder_.refer(text(name), kit::one_line(text(child(named, go_.field.package))), role,
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

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  kit::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::go
