#include "indexer/languages/go/expressions.h"

#include <algorithm>

#include "indexer/languages/go/syntax.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::child;
using kit::text_of;

constexpr int LONGEST_CHAIN = 40;

/// The type as the root of an expression: `{T}`. Braces must match for it to be read again.
std::string root_of(const std::string& type) {
  int open = 0;
  for (const char byte : type) {
    if (byte == '{') ++open;
    if (byte == '}' && --open < 0) return "?";
    if (byte == '"' || byte == '`') return "?";
  }
  return type.empty() || open != 0 || type.ends_with("...") ? "?" : "{" + type + "}";
}

std::string_view literal_root(Node kind) {
  switch (kind) {
    case Node::STRING:
      return "{string}";
    case Node::INTEGER:
    case Node::IOTA:
      return "{int}";
    case Node::FLOAT:
      return "{float64}";
    case Node::RUNE:
      return "{rune}";
    case Node::TRUE_OR_FALSE:
      return "{bool}";
    case Node::NIL:
      return "nil";
    default:
      return {};
  }
}

bool is_comparison(std::string_view operation) {
  return operation == "==" || operation == "!=" || operation == "<" || operation == "<=" ||
         operation == ">" || operation == ">=" || operation == "&&" || operation == "||";
}

/// The next step inwards of a chain: what stands before `suffix`.
struct Step {
  TSNode node = {};  ///< null: `root` is the whole chain's start
  std::string root = {};
  std::string suffix = {};
};

Step call_of_builtin(std::string_view name, TSNode first, const Names& names) {
  if (name == "new" || name == "make") return {.root = root_of(type_text(first, names))};
  if (name == "append") return {.node = first};
  if (name == "len" || name == "cap") return {.root = "{int}"};
  return {};
}

Step call_step(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  const TSNode function = child(node, field.function);
  const std::string_view name = text_of(function, names.text);
  if (syntax().kind(function) == Node::IDENTIFIER && !names.locals.has(name)) {
    const TSNode first = ts_node_named_child(child(node, field.arguments), 0);
    Step step = call_of_builtin(name, first, names);
    if (!step.root.empty() || (step.node.id != nullptr && !kit::is_null(step.node))) {
      return step;
    }
  }
  return {.node = function, .suffix = "()"};
}

Step unary_step(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  const std::string_view operation = text_of(child(node, field.operation), names.text);
  if (operation == "!") return {.root = "{bool}"};
  return {.node = child(node, field.operand), .suffix = operation == "<-" ? "<-" : ""};
}

Step binary_step(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  if (is_comparison(text_of(child(node, field.operation), names.text))) return {.root = "{bool}"};
  const TSNode left = child(node, field.left);
  const bool is_constant = !literal_root(syntax().kind(left)).empty();
  return {.node = is_constant ? child(node, field.right) : left};
}

Step conversion_step(TSNode node, const Names& names) {
  const TSNode type = child(node, syntax().field.type);
  if (syntax().kind(type) == Node::GENERIC_TYPE) {
    return {.root = kit::one_line(text_of(named_type(type), names.text)) + "()"};
  }
  return {.root = root_of(type_text(type, names))};
}

Step step_of(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  switch (const Node kind = syntax().kind(node)) {
    case Node::IDENTIFIER:
    case Node::TYPE_IDENTIFIER: {
      const std::string_view name = text_of(node, names.text);
      const std::string local = names.locals.find(name);
      return {.root = local.empty() ? kit::one_line(name, kit::LONGEST_EXPRESSION) : local};
    }
    case Node::SELECTOR:
      return {.node = child(node, field.operand),
              .suffix = "." + kit::one_line(text_of(child(node, field.field), names.text))};
    case Node::CALL:
      return call_step(node, names);
    case Node::CONVERSION:
      return conversion_step(node, names);
    case Node::INDEX:
      return {.node = child(node, field.operand), .suffix = "[]"};
    case Node::SLICE:
      return {.node = child(node, field.operand), .suffix = "[:]"};
    case Node::PARENTHESIZED:
      return {.node = ts_node_named_child(node, 0)};
    case Node::TYPE_INSTANTIATION:
    case Node::GENERIC_TYPE:
    case Node::QUALIFIED_TYPE:
      return {.root = kit::one_line(text_of(named_type(node), names.text))};
    case Node::TYPE_ASSERTION:
    case Node::COMPOSITE_LITERAL:
      return {.root = root_of(type_text(child(node, field.type), names))};
    case Node::FUNCTION_LITERAL:
      return {.root = root_of(literal_type(node, names))};
    case Node::UNARY:
      return unary_step(node, names);
    case Node::BINARY:
      return binary_step(node, names);
    default:
      return {.root = literal_root(kind).empty() ? "?" : std::string(literal_root(kind))};
  }
}

/// The identifiers of a type that are type parameters, replaced by what stands for them.
std::string with_parameters_replaced(const std::string& type, const TypeParameters& parameters) {
  std::string made;
  for (std::size_t at = 0; at < type.size();) {
    std::size_t end = at;
    while (end < type.size() && kit::is_identifier_byte(type[end])) ++end;
    if (end == at) {
      made += type[at++];
      continue;
    }
    const std::string_view word = std::string_view(type).substr(at, end - at);
    const auto found = std::find_if(parameters.rbegin(), parameters.rend(),
                                    [&](const auto& each) { return each.first == word; });
    const bool member = at > 0 && type[at - 1] == '.';
    made += found == parameters.rend() || member ? word : std::string_view(found->second);
    at = end;
  }
  return made;
}

/// What slices, maps, pointers and channels of it are about.
TSNode innermost_type(TSNode type) {
  const Fields& field = syntax().field;
  for (int step = 0; step < LONGEST_CHAIN; ++step) {
    switch (syntax().kind(type)) {
      case Node::SLICE_TYPE:
      case Node::ARRAY_TYPE:
        type = child(type, field.element);
        break;
      case Node::MAP_TYPE:
      case Node::CHANNEL_TYPE:
        type = child(type, field.value);
        break;
      case Node::POINTER_TYPE:
      case Node::PARENTHESIZED_TYPE:
        type = ts_node_named_child(type, 0);
        break;
      default:
        return type;
    }
  }
  return type;
}

void append_part(std::string& list, const std::string& part) {
  if (list.size() > kit::LONGEST_SIGNATURE) return;
  if (!list.empty()) list += ", ";
  list += part;
}

}  // namespace

std::string_view text_until(TSNode node, TSNode end, std::string_view text) {
  if (kit::is_null(end)) return text_of(node, text);
  const std::size_t start = ts_node_start_byte(node);
  const std::size_t stop = ts_node_start_byte(end);
  return start < stop && stop <= text.size() ? text.substr(start, stop - start)
                                             : std::string_view();
}

std::string expression_text(TSNode node, const Names& names) {
  std::string suffix;  // built from the outside in, so in front
  for (int step = 0; step < LONGEST_CHAIN && suffix.size() < kit::LONGEST_EXPRESSION; ++step) {
    if (kit::is_null(node)) break;
    Step next = step_of(node, names);
    if (!next.root.empty()) return next.root == "?" ? "?" : next.root + suffix;
    suffix = next.suffix + suffix;
    node = next.node;
  }
  return "?";
}

std::vector<std::string> assigned_values(TSNode right, std::size_t count, const Names& names) {
  const std::vector<TSNode> nodes = parts(right);
  std::vector<std::string> values;
  if (nodes.size() == count) {
    for (const TSNode node : nodes) values.push_back(expression_text(node, names));
    return values;
  }
  values.resize(count, nodes.empty() ? "" : "?");
  if (nodes.size() != 1) return values;
  const std::string whole = expression_text(nodes.front(), names);
  if (whole == "?") return values;
  const Node kind = syntax().kind(nodes.front());
  const bool is_tuple = kind == Node::CALL || kind == Node::CONVERSION;
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = is_tuple ? whole + "#" + std::to_string(i) : i == 0 ? whole : "{bool}";
  }
  return values;
}

std::string type_text(TSNode node, const Names& names) {
  if (kit::is_null(node)) return {};
  const TSNode inner = innermost_type(node);
  std::string type = kit::one_line(text_of(node, names.text));
  if (syntax().kind(inner) == Node::STRUCT_TYPE) {
    type = kit::one_line(text_until(node, inner, names.text));
    const bool word = !type.empty() && kit::is_identifier_byte(type.back());
    type += (word ? " " : "") + names.structs.name(ts_node_start_byte(inner));
  }
  if (names.type_parameters.empty()) return type;
  return with_parameters_replaced(type, names.type_parameters);
}

std::string result_text(TSNode result, const Names& names) {
  if (syntax().kind(result) != Node::PARAMETER_LIST) return type_text(result, names);
  std::string list;
  std::size_t count = 0;
  for (const TSNode each : parts(result)) {
    const std::string type = type_text(child(each, syntax().field.type), names);
    const std::size_t named = kit::children(each, syntax().field.name).size();
    for (std::size_t i = 0; i < std::max<std::size_t>(named, 1); ++i) {
      append_part(list, type);
      ++count;
    }
  }
  return count > 1 ? "(" + list + ")" : list;
}

std::string literal_type(TSNode function, const Names& names) {
  const Fields& field = syntax().field;
  const std::string result = result_text(child(function, field.result), names);
  const std::string parameters = type_text(child(function, field.parameters), names);
  return "func" + parameters + (result.empty() ? "" : " " + result);
}

TSNode named_type(TSNode type) {
  for (int step = 0; step < LONGEST_CHAIN; ++step) {
    switch (syntax().kind(type)) {
      case Node::TYPE_IDENTIFIER:
      case Node::QUALIFIED_TYPE:
        return type;
      case Node::GENERIC_TYPE:
      case Node::TYPE_INSTANTIATION:
        type = child(type, syntax().field.type);
        break;
      case Node::POINTER_TYPE:
      case Node::PARENTHESIZED_TYPE:
      case Node::NEGATED_TYPE:
        type = ts_node_named_child(type, 0);
        break;
      default:
        return {};
    }
  }
  return {};
}

}  // namespace context_delta::indexer::go
