#include "indexer/languages/python/definitions.h"

#include <algorithm>
#include <string>
#include <utility>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/syntax.h"

namespace context_delta::indexer::python {
namespace {

using kit::child;
using kit::text_of;

std::string_view last_name(std::string_view dotted) { return dotted.substr(dotted.rfind('.') + 1); }

/// From the node's start to the end of the last part that stands before the colon.
std::string header_text(TSNode node, std::string_view text,
                        std::initializer_list<TSFieldId> parts) {
  const std::uint32_t start = ts_node_start_byte(node);
  std::uint32_t end = start;
  for (const TSFieldId part : parts) {
    const TSNode found = child(node, part);
    if (!kit::is_null(found)) end = std::max(end, ts_node_end_byte(found));
  }
  return kit::one_line(text.substr(std::min<std::size_t>(start, text.size()), end - start));
}

bool is_separator(Node kind) {
  return kind == Node::KEYWORD_SEPARATOR || kind == Node::POSITIONAL_SEPARATOR ||
         kind == Node::COMMENT;
}

/// The first name inside a parameter, and whether it takes any number of arguments.
struct Parameter {
  TSNode name;
  bool variadic = false;
  bool has_default = false;
  TSNode type;
};

Parameter parameter_of(TSNode node) {
  const Syntax& python = syntax();
  Parameter made;
  made.type = child(node, python.field.type);
  const Node kind = python.kind(node);
  made.has_default = kind == Node::DEFAULT_PARAMETER || kind == Node::TYPED_DEFAULT_PARAMETER;
  made.name = made.has_default ? child(node, python.field.name) : node;
  for (int step = 0; step < 3; ++step) {
    const Node inner = python.kind(made.name);
    if (inner == Node::LIST_SPLAT_PATTERN || inner == Node::DICTIONARY_SPLAT_PATTERN) {
      made.variadic = true;
    } else if (inner != Node::TYPED_PARAMETER) {
      break;
    }
    made.name = ts_node_named_child(made.name, 0);
  }
  return made;
}

void count_parameters(Definition& definition, TSNode parameters, bool has_receiver) {
  std::size_t least = 0;
  std::size_t most = 0;
  bool any = false;
  for (const TSNode node : kit::named_children(parameters)) {
    if (is_separator(syntax().kind(node))) continue;
    const Parameter parameter = parameter_of(node);
    any = any || parameter.variadic;
    if (parameter.variadic) continue;
    ++most;
    if (!parameter.has_default) ++least;
  }
  if (has_receiver && most > 0) --most;
  if (has_receiver && least > 0) --least;
  definition.least_arguments = kit::argument_count(least);
  definition.most_arguments = any ? ANY_NUMBER : kit::argument_count(most);
}

void read_decorator(Decorators& found, std::string_view dotted) {
  const std::string_view name = last_name(dotted);
  if (name == "staticmethod") {
    found.is_static = true;
    found.traits |= STATIC_MEMBER;
  } else if (name == "classmethod") {
    found.is_class = true;
    found.traits |= STATIC_MEMBER;
  } else if (name == "property" || name == "cached_property" || name == "setter" ||
             name == "getter" || name == "deleter" || name == "hybrid_property") {
    found.traits |= PROPERTY;
  } else if (name == "overload") {
    found.traits |= DECLARATION;
  } else if (name == "abstractmethod") {
    found.traits |= DECLARATION | VIRTUAL;
  } else if (name != "override" && name != "final") {
    found.traits |= DECORATED;
  }
}

}  // namespace

Decorators decorators_of(TSNode decorated, std::string_view text) {
  Decorators found;
  for (const TSNode node : kit::named_children(decorated)) {
    if (syntax().kind(node) != Node::DECORATOR) continue;
    TSNode decorator = ts_node_named_child(node, 0);
    if (syntax().kind(decorator) == Node::CALL)
      decorator = child(decorator, syntax().field.function);
    read_decorator(found, dotted_name(decorator, text));
  }
  return found;
}

Definition function_definition(TSNode node, std::string_view text, bool in_class,
                               const Decorators& decorators) {
  const Fields& field = syntax().field;
  const TSNode name = child(node, field.name);
  Definition made;
  made.name = kit::one_line(text_of(name, text));
  made.kind = !in_class                 ? Kind::FUNCTION
              : made.name == "__init__" ? Kind::CONSTRUCTOR
                                        : Kind::METHOD;
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::first_line(name);
  made.signature = header_text(node, text, {field.name, field.parameters, field.return_type});
  made.type = kit::one_line(text_of(child(node, field.return_type), text));
  made.traits = decorators.traits;
  count_parameters(made, child(node, field.parameters), in_class && !decorators.is_static);
  return made;
}

Definition class_definition(TSNode node, std::string_view text) {
  const Fields& field = syntax().field;
  const TSNode name = child(node, field.name);
  Definition made;
  made.name = kit::one_line(text_of(name, text));
  made.kind = Kind::CLASS;
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::first_line(name);
  made.signature = header_text(node, text, {field.name, field.superclasses});
  for (const TSNode base : base_nodes(child(node, field.superclasses))) {
    made.bases.push_back(kit::one_line(text_of(base, text), kit::LONGEST_EXPRESSION));
  }
  return made;
}

std::vector<TSNode> base_nodes(TSNode superclasses) {
  const Syntax& python = syntax();
  std::vector<TSNode> bases;
  for (TSNode node : kit::named_children(superclasses)) {
    const Node kind = python.kind(node);
    if (kind == Node::KEYWORD_ARGUMENT || kind == Node::COMMENT) continue;
    if (kind == Node::SUBSCRIPT) node = child(node, python.field.value);
    bases.push_back(node);
  }
  return bases;
}

std::vector<Binding> parameter_bindings(TSNode parameters, kit::FactsBuilder& builder,
                                        DefinitionIndex scope, bool has_receiver) {
  const std::string_view text = builder.text();
  std::vector<Binding> bindings;
  for (const TSNode node : kit::named_children(parameters)) {
    if (is_separator(syntax().kind(node))) continue;
    const Parameter parameter = parameter_of(node);
    Binding made;
    made.name = kit::one_line(text_of(parameter.name, text));
    made.kind = Binding::Kind::PARAMETER;
    made.scope = scope;
    made.line = kit::first_line(node);
    if (has_receiver && bindings.empty()) {
      made.value_expression = builder.expressions().add(ExpressionKind::SELF);
    } else if (!parameter.variadic) {
      made.type = kit::one_line(text_of(parameter.type, text));
    } else {
      made.value_expression = builder.expressions().unknown();
    }
    bindings.push_back(std::move(made));
  }
  return bindings;
}

std::int16_t call_arguments(TSNode arguments, std::string_view text) {
  const Syntax& python = syntax();
  if (python.kind(arguments) == Node::GENERATOR) return 1;
  // Nothing else than a splat or a comment makes a difference, and few calls have either.
  const bool plain = text_of(arguments, text).find_first_of("*#") == std::string_view::npos;
  if (plain && !kit::is_null(arguments)) {
    return kit::argument_count(ts_node_named_child_count(arguments));
  }
  std::size_t count = 0;
  for (const TSNode node : kit::named_children(arguments)) {
    const Node kind = python.kind(node);
    if (kind == Node::LIST_SPLAT || kind == Node::DICTIONARY_SPLAT) return ANY_NUMBER;
    if (kind != Node::COMMENT) ++count;
  }
  return kit::argument_count(count);
}

Definition variable_definition(TSNode statement, TSNode name, std::string_view text) {
  Definition made;
  made.name = kit::one_line(text_of(name, text));
  made.kind = Kind::VARIABLE;
  made.first_line = kit::first_line(statement);
  made.last_line = kit::last_line(statement);
  made.name_line = kit::first_line(name);
  made.signature = kit::one_line(text_of(statement, text));
  return made;
}

void add_patch(kit::FactsBuilder& builder, TSNode target, TSNode name, std::string_view owner) {
  const std::vector<Definition>& definitions = builder.facts().definitions;
  const std::vector<Import>& imports = builder.facts().imports;
  const bool known =
      std::any_of(definitions.begin(), definitions.end(),
                  [&](const Definition& definition) {
                    return definition.name == owner && definition.kind == Kind::CLASS;
                  }) ||
      std::any_of(imports.begin(), imports.end(), [&](const Import& import) {
        return import.alias == owner || import.module == owner;
      });
  if (!known) return;
  Definition made;
  made.name = kit::one_line(text_of(name, builder.text()));
  made.kind = Kind::VARIABLE;
  made.scope = owner;
  made.first_line = kit::first_line(name);
  made.last_line = kit::last_line(name);
  made.name_line = made.first_line;
  made.signature = kit::one_line(text_of(target, builder.text()));
  made.traits = REASSIGNED;
  builder.define(std::move(made));
}

std::vector<std::string_view> names_in_type(std::string_view type) {
  std::vector<std::string_view> names;
  std::size_t start = 0;
  while (start < type.size()) {
    std::size_t end = start;
    while (end < type.size() && (kit::is_identifier_byte(type[end]) || type[end] == '.')) ++end;
    const std::string_view name = type.substr(start, end - start);
    const bool is_name = kit::is_identifier(name.substr(0, name.find('.'))) && !name.ends_with('.');
    if (is_name) names.push_back(name);
    start = std::max(end, start + 1);
  }
  return names;
}

}  // namespace context_delta::indexer::python
