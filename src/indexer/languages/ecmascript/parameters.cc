#include "indexer/languages/ecmascript/parameters.h"

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {

using kit::child;
using kit::is_null;

Parameter parameter_of(const Syntax& syntax, TSNode node) {
  Parameter made;
  made.pattern = node;
  if (syntax.kind(node) == Node::PARAMETER) {
    made.pattern = child(node, syntax.field.pattern);
    if (is_null(made.pattern)) made.pattern = child(node, syntax.field.name);
    made.type = child(node, syntax.field.type);
    made.value = child(node, syntax.field.value);
    made.optional = std::string_view(ts_node_type(node)) == "optional_parameter";
    const std::string_view first = ts_node_type(ts_node_child(node, 0));
    made.member = first == "accessibility_modifier" || has_keyword(node, "readonly");
  }
  if (syntax.kind(made.pattern) == Node::ASSIGNMENT_PATTERN) {
    made.value = child(made.pattern, syntax.field.right);
    made.pattern = child(made.pattern, syntax.field.left);
  }
  if (syntax.kind(made.pattern) == Node::REST) {
    made.rest = true;
    made.pattern = first_child(syntax, made.pattern);
  }
  return made;
}

bool is_parameter(const Syntax& syntax, TSNode node, std::string_view text) {
  const Node kind = syntax.kind(node);
  if (kind == Node::COMMENT || kind == Node::DECORATOR || kind == Node::ERROR) return false;
  return kit::text_of(parameter_of(syntax, node).pattern, text) != "this";
}

void count_parameters(const Syntax& syntax, TSNode function, std::string_view text,
                      Definition& definition) {
  if (!is_null(child(function, syntax.field.parameter))) {
    definition.least_arguments = syntax.typed ? 1 : 0;
    definition.most_arguments = 1;
    return;
  }
  std::size_t least = 0;
  std::size_t most = 0;
  bool any = false;
  for (const TSNode node : kit::named_children(child(function, syntax.field.parameters))) {
    if (!is_parameter(syntax, node, text)) continue;
    const Parameter parameter = parameter_of(syntax, node);
    any = any || parameter.rest;
    if (parameter.rest) continue;
    ++most;
    // Without types every argument may be left out.
    if (syntax.typed && is_null(parameter.value) && !parameter.optional) least = most;
  }
  definition.least_arguments = kit::argument_count(least);
  definition.most_arguments = any ? ANY_NUMBER : kit::argument_count(most);
}

std::int16_t count_arguments(const Syntax& syntax, TSNode arguments, std::string_view) {
  if (syntax.kind(arguments) != Node::ARGUMENTS) return ANY_NUMBER;
  std::size_t count = 0;
  for (const TSNode node : kit::named_children(arguments)) {
    const Node kind = syntax.kind(node);
    if (kind == Node::SPREAD) return ANY_NUMBER;
    if (kind != Node::COMMENT) ++count;
  }
  return kit::argument_count(count);
}

std::string annotated_type(TSNode annotation, std::string_view text) {
  if (is_null(annotation)) return {};
  const std::string_view kind = ts_node_type(annotation);
  if (kind == "type_predicate_annotation") return "boolean";
  if (kind == "asserts_annotation") return "void";
  std::string_view written = kit::text_of(annotation, text);
  if (written.starts_with(':')) written.remove_prefix(1);
  return kit::one_line(written);
}

bool is_element_method(std::string_view name) {
  for (const std::string_view each : {"forEach", "map", "filter", "some", "every", "find",
                                      "findIndex", "findLast", "findLastIndex", "flatMap"}) {
    if (each == name) return true;
  }
  return false;
}

}  // namespace context_delta::indexer::ecmascript
