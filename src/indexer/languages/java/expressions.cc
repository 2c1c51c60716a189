#include "indexer/languages/java/expressions.h"

#include <algorithm>
#include <vector>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

using kit::child;
using kit::text_of;

constexpr int LONGEST_CHAIN = 80;
constexpr std::size_t LONGEST_TEXT = 1000;
/// In what is longer, only the number of arguments is kept.
constexpr std::size_t LONGEST_WITH_ARGUMENTS = 200;
constexpr int DEEPEST_ARGUMENTS = 4;
constexpr std::size_t MOST_ARGUMENTS = 12;

std::string in_braces(std::string_view type) { return "{" + std::string(type) + "}"; }

std::string_view primitive_of(TSNode literal, std::string_view text) {
  const std::string_view digits = text_of(literal, text);
  const char last = digits.empty() ? '0' : digits.back();
  if (syntax().kind(literal) == Node::INTEGER) {
    return last == 'l' || last == 'L' ? "{long}" : "{int}";
  }
  return last == 'f' || last == 'F' ? "{float}" : "{double}";
}

/// A body that ends by throwing fits where a value is wanted as well as where none is.
bool ends_by_throwing(TSNode body) {
  const std::vector<TSNode> statements = kit::named_children(body);
  for (auto each = statements.rbegin(); each != statements.rend(); ++each) {
    const Node kind = syntax().kind(*each);
    if (kind != Node::COMMENT) return kind == Node::THROW;
  }
  return false;
}

/// A `return` with a value belongs to the body unless a lambda or class stands between.
bool returns_value(TSNode body) {
  std::vector<TSNode> pending = {body};
  for (int budget = 4000; !pending.empty() && budget > 0; --budget) {
    const TSNode node = pending.back();
    pending.pop_back();
    const Node kind = syntax().kind(node);
    if (kind == Node::RETURN) return !kit::is_null(first_child(node));
    if (kind == Node::LAMBDA || kind == Node::CLASS_BODY || kind == Node::CLASS) continue;
    const std::vector<TSNode> below = kit::named_children(node);
    pending.insert(pending.end(), below.rbegin(), below.rend());
  }
  return false;
}

std::size_t lambda_parameters(TSNode parameters) {
  if (syntax().kind(parameters) == Node::IDENTIFIER) return 1;
  std::size_t count = 0;
  for (const TSNode each : kit::named_children(parameters)) {
    if (syntax().kind(each) != Node::COMMENT) ++count;
  }
  return count;
}

/// `a.B<C>` of `a.@X B<@Y C>`.
std::string without_annotations(std::string type) {
  for (std::size_t at = type.find('@'); at != std::string::npos; at = type.find('@')) {
    std::size_t end = at + 1;
    while (end < type.size() && (kit::is_identifier_byte(type[end]) || type[end] == '.')) ++end;
    if (end < type.size() && type[end] == '(') return "?";
    if (end < type.size() && type[end] == ' ') ++end;
    type.erase(at, end - at);
  }
  return type;
}

std::string unread_arguments(TSNode list) {
  const std::int16_t count = argument_count(list);
  if (count > static_cast<std::int16_t>(MOST_ARGUMENTS)) return "*";
  std::string made;
  for (std::int16_t i = 0; i < count; ++i) made += i == 0 ? "?" : ",?";
  return made;
}

bool is_comparison(std::string_view operation) {
  for (const std::string_view each : {"==", "!=", "<", ">", "<=", ">=", "&&", "||"}) {
    if (operation == each) return true;
  }
  return false;
}

}  // namespace

std::int16_t argument_count(TSNode list) {
  std::size_t count = 0;
  for (const TSNode each : kit::named_children(list)) {
    if (syntax().kind(each) != Node::COMMENT) ++count;
  }
  return kit::argument_count(count);
}

std::string type_text(TSNode type, TSNode dimensions, std::string_view text) {
  const std::string_view written = text_of(type, text);
  if (written.size() > LONGEST_WITH_ARGUMENTS) return "?";
  std::string made = kit::one_line(written, LONGEST_WITH_ARGUMENTS);
  made = without_annotations(std::move(made));
  if (made.find_first_of("{}()\"") != std::string::npos) return "?";
  for (const char byte : text_of(dimensions, text)) {
    if (byte == '[') made += "[]";
  }
  return made;
}

std::string lambda_text(TSNode lambda) {
  const Syntax& java = syntax();
  const TSNode body = child(lambda, java.field.body);
  const Node kind = java.kind(body);
  std::string_view result = is_statement_expression(kind) ? "b" : "r";
  if (kind == Node::BLOCK) {
    result = returns_value(body) ? "r" : ends_by_throwing(body) ? "b" : "v";
  }
  return "->" + std::to_string(lambda_parameters(child(lambda, java.field.parameters))) +
         std::string(result);
}

const std::string& Expressions::lambda_of(TSNode node) const {
  const auto [place, added] = lambdas_.try_emplace(node.id);
  if (added) place->second = lambda_text(node);
  return place->second;
}

std::string Expressions::name_text(TSNode node) const {
  const std::string_view name = text_of(node, text_);
  std::string made = kit::one_line(name, kit::LONGEST_EXPRESSION);
  const std::int32_t local = locals_.find(name);
  return local == NO_LOCAL ? made : made + "@" + std::to_string(local);
}

std::string Expressions::written(TSNode node, int depth) const {
  const Syntax& java = syntax();
  std::string suffix;  // built from the outside in, so in front
  const auto name_of = [&](TSFieldId field) {
    return kit::one_line(text_of(child(node, field), text_), kit::LONGEST_EXPRESSION);
  };
  for (int step = 0; step < LONGEST_CHAIN && suffix.size() < LONGEST_TEXT; ++step) {
    switch (java.kind(node)) {
      case Node::IDENTIFIER:
        return name_text(node) + suffix;
      case Node::THIS:
        return "this" + suffix;
      case Node::SUPER:
        return "super" + suffix;
      case Node::FIELD_ACCESS:
        suffix = "." + name_of(java.field.field) + suffix;
        node = child(node, java.field.object);
        break;
      case Node::CALL: {
        const TSNode object = child(node, java.field.object);
        const TSNode list = child(node, java.field.arguments);
        suffix = name_of(java.field.name) + "(" +
                 (suffix.size() < LONGEST_WITH_ARGUMENTS ? arguments_text(list, depth + 1)
                                                         : unread_arguments(list)) +
                 ")" + suffix;
        if (kit::is_null(object)) return suffix;
        const bool outer_super =
            !kit::is_null(child_of_kind(node, Node::SUPER)) && java.kind(object) != Node::SUPER;
        suffix = (outer_super ? ".super." : ".") + suffix;
        node = object;
        break;
      }
      case Node::ARRAY_ACCESS:
        suffix = "[]" + suffix;
        node = child(node, java.field.array);
        break;
      case Node::PARENTHESIZED:
      case Node::UPDATE:
        node = first_child(node);
        break;
      case Node::ASSIGNMENT:
        node = child(node, java.field.left);
        break;
      default:
        return value_text(node, depth) + suffix;
    }
  }
  return "?";
}

std::string Expressions::arguments_text(TSNode list, int depth) const {
  std::string made;
  std::size_t count = 0;
  for (const TSNode each : kit::named_children(list)) {
    if (syntax().kind(each) == Node::COMMENT) continue;
    if (++count > MOST_ARGUMENTS) return "*";
    if (count > 1) made += ',';
    const bool too_much = depth >= DEEPEST_ARGUMENTS || made.size() > LONGEST_WITH_ARGUMENTS;
    made += too_much ? "?" : written(each, depth + 1);
  }
  return made;
}

std::string Expressions::value_text(TSNode node, int depth) const {
  const Syntax& java = syntax();
  const TSNode type = child(node, java.field.type);
  switch (java.kind(node)) {
    case Node::STRING:
      return "{java.lang.String}";
    case Node::CHARACTER:
      return "{char}";
    case Node::INTEGER:
    case Node::FLOATING:
      return std::string(primitive_of(node, text_));
    case Node::BOOLEAN:
    case Node::INSTANCEOF:
      return "{boolean}";
    case Node::NULL_LITERAL:
      return "null";
    case Node::OBJECT_CREATION: {
      const bool extended = !kit::is_null(child_of_kind(node, Node::CLASS_BODY));
      const std::string written_type = type_text(type, {}, text_);
      return in_braces(extended ? written_type : "new " + written_type);
    }
    case Node::ARRAY_CREATION: {
      std::string made = type_text(type, {}, text_);
      for (const TSNode each : kit::named_children(node)) {
        if (java.kind(each) == Node::DIMENSIONS_EXPRESSION) made += "[]";
        if (java.kind(each) == Node::DIMENSIONS) made = type_text({}, each, text_).insert(0, made);
      }
      return in_braces(made);
    }
    case Node::CAST:
      return in_braces(type_text(type, {}, text_));
    case Node::CLASS_LITERAL: {
      const TSNode named = first_child(node);
      return in_braces("java.lang.Class<" + type_text(named, {}, text_) + ">");
    }
    case Node::BINARY:
      return binary_text(node, depth);
    case Node::UNARY: {
      const bool negates = text_of(child(node, java.field.operation), text_) == "!";
      if (negates || depth >= DEEPEST_ARGUMENTS) return negates ? "{boolean}" : "?";
      return "~(" + written(child(node, java.field.operand), depth + 1) + ")";
    }
    case Node::TERNARY:
      return conditional_text(node, depth);
    case Node::LAMBDA:
      return lambda_of(node);
    case Node::METHOD_REFERENCE:
      return "::";
    default:
      return "?";
  }
}

/// A chain of the same operands stands as one operation: only their types matter.
std::string Expressions::binary_text(TSNode node, int depth) const {
  const Syntax& java = syntax();
  if (is_comparison(text_of(child(node, java.field.operation), text_))) return "{boolean}";
  if (depth >= DEEPEST_ARGUMENTS) return "?";
  std::vector<std::string> operands;
  for (int step = 0; java.kind(node) == Node::BINARY; ++step) {
    if (step == LONGEST_CHAIN) return "?";
    const TSNode right = child(node, java.field.right);
    if (java.kind(right) == Node::STRING) return "{java.lang.String}";
    const std::string_view operation = text_of(child(node, java.field.operation), text_);
    const bool shifts = operation.starts_with("<<") || operation.starts_with(">>");
    std::string operand = shifts ? "" : written(right, depth + 1);
    const bool repeated =
        operand.empty() || std::find(operands.begin(), operands.end(), operand) != operands.end();
    if (!repeated) operands.push_back(std::move(operand));
    node = child(node, java.field.left);
  }
  if (java.kind(node) == Node::STRING) return "{java.lang.String}";
  std::string made = "+(" + written(node, depth + 1);
  for (auto each = operands.rbegin(); each != operands.rend(); ++each) made += "," + *each;
  made += ")";
  return made.size() > LONGEST_WITH_ARGUMENTS ? "?" : made;
}

std::string Expressions::conditional_text(TSNode node, int depth) const {
  if (depth >= DEEPEST_ARGUMENTS) return "?";
  const Fields& field = syntax().field;
  return "?(" + written(child(node, field.consequence), depth + 1) + "," +
         written(child(node, field.alternative), depth + 1) + ")";
}

}  // namespace context_delta::indexer::java
