#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/extractor.h"

// Expressions as the texts that receivers and values are (rust.h).
namespace context_delta::indexer::rust {
namespace {

using kit::child;

constexpr int DEEPEST = 3;
constexpr int LONGEST_CHAIN = 100;
constexpr std::string_view UNKNOWN = "?";
constexpr std::string_view NEVER = "!";

template <std::size_t SIZE>
bool is_one_of(std::string_view name, const std::array<std::string_view, SIZE>& names) {
  for (const std::string_view each : names) {
    if (each == name) return true;
  }
  return false;
}

constexpr std::array<std::string_view, 5> PANICS = {"panic", "unreachable", "todo", "unimplemented",
                                                    "bail"};
/// Calls whose result has the type of what they are given.
constexpr std::array<std::string_view, 14> WRAPPERS = {
    "Some",         "Ok",        "Err",        "Box::new",      "Rc::new",
    "Arc::new",     "Cell::new", "Mutex::new", "Pin::new",      "RwLock::new",
    "RefCell::new", "Vec::from", "mem::take",  "std::mem::take"};

}  // namespace

std::string Extractor::path_text(TSNode node) const {
  return kit::one_line(text_of(node), kit::LONGEST_EXPRESSION);
}

std::string Extractor::expression_text(TSNode node, int depth) const {
  if (kit::is_null(node) || depth > DEEPEST) return std::string(UNKNOWN);
  std::vector<std::string> steps;
  std::size_t size = 0;
  for (int link = 0;; ++link) {
    if (link > LONGEST_CHAIN) return std::string(UNKNOWN);
    std::string step;
    const TSNode next = next_step(node, step, depth);
    size += step.size();
    if (size > kit::LONGEST_SIGNATURE) return std::string(UNKNOWN);
    if (!step.empty()) steps.push_back(std::move(step));
    if (kit::is_null(next)) break;
    node = next;
  }
  std::string text = head_text(node, depth);
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) text += *step;
  return text.size() > kit::LONGEST_SIGNATURE ? std::string(UNKNOWN) : text;
}

/// The expression that `node` goes on from, and what it adds; null for what starts a chain.
TSNode Extractor::next_step(TSNode node, std::string& step, int depth) const {
  switch (rust_.kind(node)) {
    case Node::CALL:
      return next_of_call(node, step, depth);
    case Node::FIELD_EXPRESSION:
      step = "." + path_text(child(node, rust_.field.field));
      return child(node, rust_.field.value);
    case Node::TRY:
      step = "?";
      return ts_node_named_child(node, 0);
    case Node::REFERENCE:
      return child(node, rust_.field.value);
    case Node::UNARY:
      // The first star takes a reference away, the second what only Deref can.
      if (text_of(node).starts_with("**")) return {};
      return ts_node_named_child(node, 0);
    case Node::AWAIT:
    case Node::PARENTHESIZED:
      return ts_node_named_child(node, 0);
    case Node::INDEX:
      if (rust_.kind(ts_node_named_child(node, 1)) != Node::RANGE) step = "[]";
      return ts_node_named_child(node, 0);
    default:
      return {};
  }
}

TSNode Extractor::next_of_call(TSNode node, std::string& step, int depth) const {
  TSNode function = child(node, rust_.field.function);
  std::string type_arguments;
  if (rust_.kind(function) == Node::GENERIC_FUNCTION) {
    const TSNode inner = child(function, rust_.field.function);
    if (rust_.kind(inner) == Node::FIELD_EXPRESSION) {
      type_arguments = "::" + path_text(child(function, rust_.field.type_arguments));
      function = inner;
    }
  }
  if (rust_.kind(function) != Node::FIELD_EXPRESSION) return {};
  const std::string name = path_text(child(function, rust_.field.field));
  step = "." + name + type_arguments + argument_text({}, child(node, rust_.field.arguments), depth);
  return child(function, rust_.field.value);
}

/// `()`, or `{value}` where the result's type hangs on the only argument.
std::string Extractor::argument_text(std::string_view function, TSNode arguments, int depth) const {
  const TSNode only =
      ts_node_named_child_count(arguments) == 1 ? ts_node_named_child(arguments, 0) : TSNode{};
  std::string value;
  if (!function.empty()) {
    if (is_one_of(function, WRAPPERS)) value = expression_text(only, depth + 1);
  } else if (rust_.kind(only) == Node::CLOSURE) {
    const auto known = values_.find(only.id);
    if (known != values_.end()) value = known->second;
  } else if (rust_.kind(only) == Node::SCOPED_IDENTIFIER ||
             (rust_.kind(only) == Node::IDENTIFIER && locals_.find(text_of(only)).empty())) {
    value = path_text(only) + "()";
  }
  return value.empty() || value == UNKNOWN ? "()" : "{" + value + "}";
}

std::string Extractor::tuple_text(TSNode node, int depth) const {
  std::string text;
  for (const TSNode each : kit::named_children(node)) {
    if (rust_.kind(each) == Node::COMMENT) continue;
    text += (text.empty() ? "(" : ", ") + expression_text(each, depth + 1);
    if (text.size() > kit::LONGEST_SIGNATURE) return std::string(UNKNOWN);
  }
  return text.empty() ? "<()>" : text + ")";
}

std::string Extractor::head_text(TSNode node, int depth) const {
  switch (rust_.kind(node)) {
    case Node::SELF:
      return "self";
    case Node::IDENTIFIER: {
      const std::string_view variable = locals_.find(text_of(node));
      return variable.empty() ? path_text(node) : std::string(variable);
    }
    case Node::SCOPED_IDENTIFIER:
    case Node::GENERIC_FUNCTION:
      return path_text(node);
    case Node::CALL: {
      const TSNode function = child(node, rust_.field.function);
      const Node kind = rust_.kind(function);
      const bool is_path = kind == Node::SCOPED_IDENTIFIER || kind == Node::GENERIC_FUNCTION ||
                           kind == Node::IDENTIFIER;
      if (!is_path) return std::string(UNKNOWN);
      if (kind == Node::IDENTIFIER && !locals_.find(text_of(function)).empty()) {
        return std::string(UNKNOWN);
      }
      const std::string path = path_text(function);
      return path + argument_text(path, child(node, rust_.field.arguments), depth);
    }
    case Node::STRUCT_EXPRESSION:
      return "<" + path_text(child(node, rust_.field.name)) + ">";
    case Node::CAST:
      return "<" + path_text(child(node, rust_.field.type)) + ">";
    case Node::TUPLE:
      return tuple_text(node, depth);
    case Node::STRING:
      return text_of(node).starts_with('b') ? "<[u8]>" : "<str>";
    case Node::CHARACTER:
      return "<char>";
    case Node::INTEGER:
    case Node::NEGATIVE:
      return "<i32>";
    case Node::FLOAT:
      return "<f64>";
    case Node::BOOLEAN:
      return "<bool>";
    case Node::ARRAY:
      return "<[_]>";
    case Node::RANGE:
      return "<Range<usize>>";
    case Node::RETURN:
    case Node::BREAK:
    case Node::CONTINUE:
      return std::string(NEVER);
    case Node::MACRO_INVOCATION: {
      const std::string_view name = text_of(child(node, rust_.field.macro));
      if (is_one_of(name, PANICS)) return std::string(NEVER);
      return name == "format" ? "<String>" : name == "vec" ? "<Vec<_>>" : std::string(UNKNOWN);
    }
    default: {
      const auto known = values_.find(node.id);
      return known == values_.end() ? std::string(UNKNOWN) : known->second;
    }
  }
}

/// What a block ends with.
std::string Extractor::block_value(TSNode block) const {
  const std::vector<TSNode> inside = kit::named_children(block);
  for (auto each = inside.rbegin(); each != inside.rend(); ++each) {
    const Node kind = rust_.kind(*each);
    if (kind == Node::COMMENT) continue;
    if (kind != Node::EXPRESSION_STATEMENT) return expression_text(*each);
    const TSNode inner = ts_node_named_child(*each, 0);
    const std::string value = expression_text(inner);
    const bool ends = text_of(*each).ends_with(';') && value != NEVER;
    return ends ? "<()>" : value;
  }
  return "<()>";
}

}  // namespace context_delta::indexer::rust
