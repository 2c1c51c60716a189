#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/extractor.h"
#include "indexer/languages/rust/rust.h"

namespace context_delta::indexer::rust {
namespace {

using kit::child;
using kit::first_line;

/// A path as the name it ends with and what stands before, `::` included; type arguments of the
/// last part are left out.
struct Path {
  std::string receiver;
  std::string name;
};

Path path_of(std::string_view text) {
  std::string path = kit::one_line(text, kit::LONGEST_EXPRESSION);
  if (path.ends_with('>')) {
    int brackets = 0;
    std::size_t at = path.size();
    while (at > 0) {
      --at;
      const bool arrow = path[at] == '>' && at > 0 && path[at - 1] == '-';
      if (path[at] == '>' && !arrow) ++brackets;
      if (path[at] == '<' && --brackets == 0) break;
    }
    path.resize(at);
    if (path.ends_with("::")) path.resize(path.size() - 2);
  }
  const std::size_t colons = path.rfind("::");
  if (colons == std::string::npos) return {{}, std::string(kit::trimmed(path))};
  return {path.substr(0, colons + 2), std::string(kit::trimmed(path.substr(colons + 2)))};
}

std::int16_t count_arguments(TSNode arguments) {
  std::size_t count = 0;
  for (const TSNode each : kit::named_children(arguments)) {
    const Node kind = syntax().kind(each);
    if (kind != Node::COMMENT && kind != Node::ATTRIBUTE) ++count;
  }
  return kit::argument_count(count);
}

}  // namespace

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  const Node kind = rust_.kind(node);
  switch (kind) {
    case Node::ERROR:
      builder_.open(depth).traits |= BROKEN;
      return true;
    case Node::ATTRIBUTE:
      read_attribute(node, depth);
      return false;
    case Node::COMMENT:
      pass_comment(node, depth);
      return false;
    case Node::INNER_ATTRIBUTE:
    case Node::VISIBILITY:
    case Node::LIFETIME:
      return false;
    default:
      break;
  }
  const Attributes attributes = take_attributes(depth);
  switch (kind) {
    case Node::STRUCT:
    case Node::UNION:
    case Node::ENUM:
    case Node::TRAIT:
    case Node::TYPE_ITEM:
    case Node::ASSOCIATED_TYPE:
      consumed_ = child(node, rust_.field.name).id;
      return enter_item(node, kind, depth, attributes);
    case Node::FUNCTION:
    case Node::FUNCTION_SIGNATURE:
    case Node::IMPL:
    case Node::MOD:
    case Node::CONST:
    case Node::STATIC:
    case Node::MACRO_DEFINITION:
    case Node::ENUM_VARIANT:
    case Node::USE:
    case Node::EXTERN_CRATE:
      return enter_item(node, kind, depth, attributes);
    case Node::TYPE_PARAMETER:
    case Node::TYPE_BINDING:
      consumed_ = child(node, rust_.field.name).id;
      return true;
    case Node::TYPE_IDENTIFIER:
    case Node::SCOPED_TYPE:
      refer_to_type(node);
      return false;
    case Node::TUPLE_STRUCT_PATTERN:
    case Node::STRUCT_PATTERN:
    case Node::TUPLE_PATTERN:
    case Node::CAPTURED_PATTERN:
    case Node::OR_PATTERN:
    case Node::SLICE_PATTERN:
      return false;
    default:
      return enter_expression(node, kind, depth);
  }
}

bool Extractor::enter_expression(TSNode node, Node kind, std::uint32_t depth) {
  switch (kind) {
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::ARGUMENTS:
      enter_arguments(node);
      return true;
    case Node::STRUCT_EXPRESSION: {
      const TSNode name = child(node, rust_.field.name);
      refer_to_path(name, Role::CONSTRUCT);
      consumed_ = name.id;
      return true;
    }
    case Node::SCOPED_IDENTIFIER:
      if (consumed_ != node.id) refer_to_path(node, Role::OTHER);
      return false;
    case Node::MACRO_INVOCATION:
      enter_macro(node);
      return true;
    case Node::TOKEN_TREE:
      scan_tokens(node);
      return true;
    case Node::CLOSURE:
      enter_closure(node, depth);
      return true;
    case Node::BLOCK:
      open_block(node, depth);
      return true;
    case Node::FOR: {
      const TSNode body = child(node, rust_.field.body);
      loops_.push_back({body.id, child(node, rust_.field.pattern), child(node, rust_.field.value)});
      return true;
    }
    case Node::MATCH:
      matches_.push_back({depth, node, {}});
      return true;
    case Node::MATCH_BLOCK:
      if (!matches_.empty()) {
        matches_.back().value = expression_text(child(matches_.back().node, rust_.field.value));
      }
      return true;
    case Node::MATCH_ARM:
      enter_match_arm(node, depth);
      return true;
    case Node::IF:
    case Node::WHILE:
      locals_.open(depth, false);
      open_.push_back({depth, node});
      return true;
    case Node::LET:
    case Node::LET_CONDITION:
    case Node::ELSE:
    case Node::UNSAFE_BLOCK:
    case Node::ASYNC_BLOCK:
      open_.push_back({depth, node});
      return true;
    default:
      return true;
  }
}

void Extractor::leave(std::uint32_t depth) {
  while (!open_.empty() && open_.back().depth == depth) {
    leave_node(open_.back().node);
    open_.pop_back();
  }
  while (!matches_.empty() && matches_.back().depth == depth) matches_.pop_back();
  locals_.close(depth);
  builder_.close(depth);
}

/// Notes the value of what has one, while its variables are still visible, and binds the variables
/// of what binds them only for what follows.
void Extractor::leave_node(TSNode node) {
  switch (rust_.kind(node)) {
    case Node::LET:
    case Node::LET_CONDITION:
      bind_pattern(child(node, rust_.field.pattern),
                   expression_text(child(node, rust_.field.value)),
                   kit::one_line(text_of(child(node, rust_.field.type))), Binding::Kind::LOCAL);
      break;
    case Node::BLOCK:
      values_[node.id] = block_value(node);
      break;
    case Node::CLOSURE:
      values_[node.id] = expression_text(child(node, rust_.field.body));
      break;
    case Node::MATCH_ARM:
      leave_match_arm(node);
      break;
    case Node::IF: {
      const std::string value = expression_text(child(node, rust_.field.consequence));
      values_[node.id] = value == "!" || value == "?"
                             ? expression_text(child(node, rust_.field.alternative))
                             : value;
      break;
    }
    case Node::ELSE:
    case Node::UNSAFE_BLOCK:
    case Node::ASYNC_BLOCK:
      values_[node.id] = expression_text(ts_node_named_child(node, 0));
      break;
    default:
      break;
  }
}

/// A match has the value of its first arm that has a known one.
void Extractor::leave_match_arm(TSNode arm) {
  if (matches_.empty()) return;
  const std::string value = expression_text(child(arm, rust_.field.value));
  if (value == "!" || value == "?") return;
  values_.emplace(matches_.back().node.id, value);
}

void Extractor::open_block(TSNode node, std::uint32_t depth) {
  const bool is_loop = !loops_.empty() && loops_.back().body == node.id;
  std::string value;
  if (is_loop) value = expression_text(loops_.back().value) + "%";
  locals_.open(depth, false);
  open_.push_back({depth, node});
  if (!is_loop) return;
  bind_pattern(loops_.back().pattern, value, {}, Binding::Kind::LOCAL);
  loops_.pop_back();
}

void Extractor::enter_match_arm(TSNode node, std::uint32_t depth) {
  locals_.open(depth, false);
  open_.push_back({depth, node});
  bind_pattern(child(node, rust_.field.pattern), matches_.empty() ? "?" : matches_.back().value, {},
               Binding::Kind::LOCAL);
}

void Extractor::enter_closure(TSNode node, std::uint32_t depth) {
  const auto known = arguments_.find(node.id);
  const std::string value = known == arguments_.end() ? "?" : known->second;
  locals_.open(depth, false);
  open_.push_back({depth, node});
  int index = 0;
  for (const TSNode each : kit::named_children(child(node, rust_.field.parameters))) {
    const Node kind = rust_.kind(each);
    if (kind == Node::COMMENT) continue;
    if (kind == Node::PARAMETER) {
      bind_pattern(child(each, rust_.field.pattern), {},
                   kit::one_line(text_of(child(each, rust_.field.type))), Binding::Kind::LOCAL);
    } else {
      const bool folds = value.ends_with("fold");
      bind_pattern(each, index == (folds ? 1 : 0) ? value : "?", {}, Binding::Kind::LOCAL);
    }
    ++index;
  }
}

void Extractor::enter_call(TSNode node) {
  TSNode function = child(node, rust_.field.function);
  const TSNode arguments = child(node, rust_.field.arguments);
  calls_.push_back({arguments.id, node});
  const std::int16_t count = count_arguments(arguments);
  if (rust_.kind(function) == Node::GENERIC_FUNCTION) {
    const TSNode inner = child(function, rust_.field.function);
    consumed_ = inner.id;
    if (rust_.kind(inner) == Node::FIELD_EXPRESSION) function = inner;
  }
  switch (rust_.kind(function)) {
    case Node::IDENTIFIER: {
      const bool is_local = !locals_.find(text_of(function)).empty();
      builder_.refer(text_of(function), is_local ? "let" : "", Role::CALL, first_line(function),
                     count);
      break;
    }
    case Node::SCOPED_IDENTIFIER:
      consumed_ = function.id;
      refer_to_path(function, Role::CALL, count);
      break;
    case Node::GENERIC_FUNCTION:
      refer_to_path(function, Role::CALL, count);
      break;
    case Node::FIELD_EXPRESSION: {
      const TSNode name = child(function, rust_.field.field);
      if (rust_.kind(name) == Node::INTEGER) break;
      // The receiver's closures are not read yet: leave it to the arguments, which come last.
      break;
    }
    default:
      break;
  }
}

void Extractor::enter_arguments(TSNode node) {
  TSNode call = {};
  if (!calls_.empty() && calls_.back().arguments == node.id) {
    call = calls_.back().node;
    calls_.pop_back();
  }
  TSNode function = child(call, rust_.field.function);
  if (rust_.kind(function) == Node::GENERIC_FUNCTION) {
    function = child(function, rust_.field.function);
  }
  std::string given;
  if (rust_.kind(function) == Node::FIELD_EXPRESSION) {
    const TSNode name = child(function, rust_.field.field);
    std::string receiver = expression_text(child(function, rust_.field.value));
    given = receiver + "@" + path_text(name);
    if (rust_.kind(name) != Node::INTEGER) {
      builder_.refer(text_of(name), std::move(receiver), Role::CALL, first_line(name),
                     count_arguments(node));
    }
  }
  for (const TSNode each : kit::named_children(node)) {
    const Node kind = rust_.kind(each);
    if (kind == Node::CLOSURE && !given.empty()) arguments_[each.id] = given;
    if (kind == Node::IDENTIFIER && locals_.find(text_of(each)).empty()) {
      builder_.refer(text_of(each), {}, Role::OTHER, first_line(each));
    }
  }
}

void Extractor::refer_to_path(TSNode node, Role role, std::int16_t arguments) {
  if (kit::is_null(node)) return;
  Path path = path_of(text_of(node));
  if (path.name.empty()) return;
  TSNode last = node;
  if (rust_.kind(node) == Node::GENERIC_FUNCTION) last = child(node, rust_.field.function);
  const TSNode name = child(last, rust_.field.name);
  builder_.refer(path.name, std::move(path.receiver), role,
                 first_line(kit::is_null(name) ? last : name), arguments);
}

void Extractor::refer_to_type(TSNode node) {
  if (consumed_ == node.id) return;
  refer_to_path(node, Role::TYPE);
}

Facts extract(TSNode root, std::string_view text) {
  Extractor extractor(text);
  kit::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::rust
