#include "indexer/languages/go/definitions.h"

#include <algorithm>

#include "indexer/languages/go/syntax.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::child;
using kit::text_of;

Definition definition_of(TSNode node, TSNode name, Kind kind, std::string_view text) {
  Definition made;
  made.name = kit::one_line(text_of(name, text));
  made.kind = kind;
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::is_null(name) ? made.first_line : kit::first_line(name);
  return made;
}

void count_parameters(Definition& made, TSNode parameters) {
  std::size_t least = 0;
  bool any = false;
  for (const TSNode each : parts(parameters)) {
    const bool variadic = syntax().kind(each) == Node::VARIADIC_PARAMETER;
    any = any || variadic;
    const std::size_t named = kit::children(each, syntax().field.name).size();
    if (!variadic) least += std::max<std::size_t>(named, 1);
  }
  made.least_arguments = kit::argument_count(least);
  made.most_arguments = any ? ANY_NUMBER : made.least_arguments;
}

/// The type of a receiver `(l *List[T])`.
TSNode receiver_type(TSNode receiver) {
  const std::vector<TSNode> list = parts(receiver);
  return list.empty() ? TSNode{} : child(list.front(), syntax().field.type);
}

Kind kind_of_type(TSNode type) {
  switch (syntax().kind(type)) {
    case Node::STRUCT_TYPE:
      return Kind::STRUCT;
    case Node::INTERFACE_TYPE:
      return Kind::INTERFACE;
    default:
      return Kind::TYPE;
  }
}

/// The name under which an embedded type is a field.
std::string_view last_name(std::string_view dotted) { return dotted.substr(dotted.rfind('.') + 1); }

}  // namespace

Definition function_definition(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  const TSNode receiver = child(node, field.receiver);
  const bool is_method = !kit::is_null(receiver);
  Definition made = definition_of(node, child(node, field.name),
                                  is_method ? Kind::METHOD : Kind::FUNCTION, names.text);
  made.signature = kit::one_line(text_until(node, child(node, field.body), names.text));
  made.type = result_text(child(node, field.result), names);
  if (is_method) {
    made.scope = kit::one_line(text_of(named_type(receiver_type(receiver)), names.text));
  }
  if (!kit::is_null(child(node, field.type_parameters))) made.traits |= GENERIC;
  count_parameters(made, child(node, field.parameters));
  return made;
}

Definition interface_method(TSNode node, const Names& names) {
  const Fields& field = syntax().field;
  Definition made = definition_of(node, child(node, field.name), Kind::METHOD, names.text);
  made.signature = kit::one_line(text_of(node, names.text));
  made.type = result_text(child(node, field.result), names);
  made.traits = DECLARATION | VIRTUAL;
  count_parameters(made, child(node, field.parameters));
  return made;
}

Definition type_definition(TSNode spec, const Names& names) {
  const Fields& field = syntax().field;
  const TSNode type = child(spec, field.type);
  Definition made = definition_of(spec, child(spec, field.name), kind_of_type(type), names.text);
  if (made.kind == Kind::TYPE) {
    const bool is_alias = has_token(spec, "=");
    made.type = (is_alias ? "=" : "") + type_text(type, names);
    made.signature = kit::one_line("type " + std::string(text_of(spec, names.text)));
  } else {
    const std::string_view keyword = made.kind == Kind::STRUCT ? "struct" : "interface";
    made.signature = kit::one_line("type " + std::string(text_until(spec, type, names.text)) +
                                   std::string(keyword));
  }
  for (const TSNode base : embedded_types(type)) {
    made.bases.push_back(kit::one_line(text_of(named_type(base), names.text)));
  }
  if (!kit::is_null(child(spec, field.type_parameters))) made.traits |= GENERIC;
  return made;
}

Definition variable_definition(TSNode spec, TSNode name, std::string_view keyword,
                               const Names& names) {
  Definition made = definition_of(spec, name, Kind::VARIABLE, names.text);
  made.type = type_text(child(spec, syntax().field.type), names);
  std::string_view first = text_of(spec, names.text);
  first = kit::trimmed(first.substr(0, first.find('\n')));
  if (first.ends_with('{') || first.ends_with('(')) first.remove_suffix(1);
  made.signature = kit::one_line(std::string(keyword) + " " + std::string(first));
  return made;
}

Definition closure_definition(TSNode literal, std::string_view name, std::int32_t first_line,
                              const Names& names) {
  const Fields& field = syntax().field;
  Definition made = definition_of(literal, {}, Kind::FUNCTION, names.text);
  made.name = kit::one_line(name);
  made.first_line = first_line;
  made.name_line = first_line;
  made.signature = made.name + " := " +
                   kit::one_line(text_until(literal, child(literal, field.body), names.text), 200);
  made.signature = kit::one_line(made.signature);
  made.type = result_text(child(literal, field.result), names);
  count_parameters(made, child(literal, field.parameters));
  return made;
}

std::vector<Parameter> parameters_of(TSNode list, const Names& names) {
  std::vector<Parameter> found;
  for (const TSNode each : parts(list)) {
    std::string type = type_text(child(each, syntax().field.type), names);
    if (syntax().kind(each) == Node::VARIADIC_PARAMETER) type.insert(0, "[]");
    for (const TSNode name : kit::children(each, syntax().field.name)) {
      if (syntax().kind(name) == Node::IDENTIFIER) found.push_back({name, type});
    }
  }
  return found;
}

std::vector<Binding> field_bindings(TSNode struct_type, DefinitionIndex scope,
                                    const std::string& prefix, const Names& names) {
  std::vector<Binding> bindings;
  const auto add = [&](std::string_view name, TSNode at, TSNode type) {
    Binding made;
    made.name = prefix + kit::one_line(name);
    made.kind = Binding::Kind::MEMBER;
    made.scope = scope;
    made.type = type_text(type, names);
    made.line = kit::first_line(at);
    bindings.push_back(std::move(made));
  };
  for (const TSNode list : parts(struct_type)) {
    for (const TSNode each : parts(list)) {
      if (syntax().kind(each) != Node::FIELD_DECLARATION) continue;
      const TSNode type = child(each, syntax().field.type);
      const std::vector<TSNode> named = kit::children(each, syntax().field.name);
      for (const TSNode name : named) {
        if (ts_node_is_named(name)) add(text_of(name, names.text), name, type);
      }
      if (named.empty()) add(last_name(text_of(named_type(type), names.text)), each, type);
    }
  }
  return bindings;
}

std::vector<TSNode> embedded_types(TSNode type) {
  std::vector<TSNode> found;
  const Node kind = syntax().kind(type);
  if (kind != Node::STRUCT_TYPE && kind != Node::INTERFACE_TYPE) return found;
  const auto add = [&](TSNode each) {
    if (!kit::is_null(named_type(each))) found.push_back(each);
  };
  for (const TSNode each : parts(type)) {
    if (syntax().kind(each) == Node::TYPE_ELEMENT) {
      const std::vector<TSNode> terms = parts(each);
      if (terms.size() == 1 && syntax().kind(terms.front()) != Node::NEGATED_TYPE) {
        add(terms.front());
      }
      continue;
    }
    if (syntax().kind(each) != Node::FIELD_LIST) continue;
    for (const TSNode field : parts(each)) {
      if (kit::is_null(child(field, syntax().field.name))) {
        add(child(field, syntax().field.type));
      }
    }
  }
  return found;
}

TypeParameters type_parameters_of(TSNode list, bool of_type, std::string_view text) {
  TypeParameters found;
  if (kit::is_null(list)) return found;
  for (const TSNode each : parts(list)) {
    for (const TSNode name : kit::children(each, syntax().field.name)) {
      if (!ts_node_is_named(name)) continue;
      const std::string_view written = text_of(name, text);
      found.emplace_back(written,
                         "$" + (of_type ? std::to_string(found.size()) : std::string(written)));
    }
  }
  return found;
}

TypeParameters receiver_parameters(TSNode receiver, std::string_view text) {
  TypeParameters found;
  TSNode type = receiver_type(receiver);
  for (int step = 0; step < 4 && syntax().kind(type) != Node::GENERIC_TYPE; ++step) {
    if (kit::is_null(type)) return found;
    type = ts_node_named_child(type, 0);
  }
  const TSNode arguments = child(type, syntax().field.type_arguments);
  if (kit::is_null(arguments)) return found;
  for (const TSNode each : parts(arguments)) {
    found.emplace_back(text_of(each, text), "$" + std::to_string(found.size()));
  }
  return found;
}

std::vector<Binding> parameter_bindings(TSNode list, DefinitionIndex scope, const Names& names) {
  std::vector<Binding> bindings;
  if (kit::is_null(list)) return bindings;
  for (const TSNode each : parts(list)) {
    for (const TSNode name : kit::children(each, syntax().field.name)) {
      if (!ts_node_is_named(name) || bindings.size() >= names.type_parameters.size()) continue;
      Binding made;
      made.name = names.type_parameters[bindings.size()].second;
      made.kind = Binding::Kind::PARAMETER;
      made.scope = scope;
      made.type = type_text(child(each, syntax().field.type), names);
      made.line = kit::first_line(name);
      bindings.push_back(std::move(made));
    }
  }
  return bindings;
}

std::int16_t call_arguments(TSNode arguments) {
  std::size_t count = 0;
  bool open = false;
  for (const TSNode each : parts(arguments)) {
    const Node kind = syntax().kind(each);
    open = open || kind == Node::VARIADIC_ARGUMENT || kind == Node::CALL;
    if (kind == Node::VARIADIC_ARGUMENT) return ANY_NUMBER;
    ++count;
  }
  return open && count == 1 ? ANY_NUMBER : kit::argument_count(count);
}

}  // namespace context_delta::indexer::go
