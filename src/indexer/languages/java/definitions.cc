#include "indexer/languages/java/definitions.h"

#include <algorithm>
#include <utility>

#include "indexer/languages/java/expressions.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

using kit::child;
using kit::text_of;

/// The declaration up to its body, modifiers without annotations.
std::string header_text(TSNode node, std::string_view text) {
  std::string header;
  const TSNode modifiers = child_of_kind(node, Node::MODIFIERS);
  std::size_t start = ts_node_start_byte(node);
  if (!kit::is_null(modifiers)) {
    start = ts_node_end_byte(modifiers);
    const std::uint32_t count = ts_node_child_count(modifiers);
    for (std::uint32_t i = 0; i < count; ++i) {
      const TSNode word = ts_node_child(modifiers, i);
      if (!ts_node_is_named(word)) header += std::string(text_of(word, text)) + " ";
    }
  }
  const TSNode body = child(node, syntax().field.body);
  const std::size_t end = kit::is_null(body) ? ts_node_end_byte(node) : ts_node_start_byte(body);
  if (start < end && end <= text.size()) header += text.substr(start, end - start);
  std::string line = kit::one_line(header);
  while (line.ends_with(';') || line.ends_with(' ')) line.pop_back();
  return line;
}

void add_place(Definition& made, TSNode node, TSNode name, std::string_view text) {
  made.name = kit::one_line(text_of(name, text), kit::LONGEST_EXPRESSION);
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::is_null(name) ? made.first_line : kit::first_line(name);
  made.signature = header_text(node, text);
}

void add_bases(Definition& made, TSNode clause, std::string_view text) {
  for (const TSNode each : kit::named_children(clause)) {
    const Node kind = syntax().kind(each);
    if (kind == Node::COMMENT) continue;
    if (kind == Node::TYPE_LIST) {
      add_bases(made, each, text);
    } else {
      made.bases.push_back(erased_text(text_of(each, text)));
    }
  }
}

Kind kind_of(Node node) {
  switch (node) {
    case Node::INTERFACE:
    case Node::ANNOTATION_TYPE:
      return Kind::INTERFACE;
    case Node::ENUM:
      return Kind::ENUM;
    default:
      return Kind::CLASS;
  }
}

}  // namespace

Modifiers modifiers_of(TSNode declaration) {
  Modifiers made;
  const TSNode modifiers = child_of_kind(declaration, Node::MODIFIERS);
  if (kit::is_null(modifiers)) return made;
  const std::uint32_t count = ts_node_child_count(modifiers);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string_view word = ts_node_type(ts_node_child(modifiers, i));
    made.is_static = made.is_static || word == "static";
    made.is_final = made.is_final || word == "final";
    made.is_abstract = made.is_abstract || word == "abstract";
    made.is_private = made.is_private || word == "private";
    made.is_native = made.is_native || word == "native";
  }
  return made;
}

Definition type_definition(TSNode node, std::string_view text) {
  Definition made;
  made.kind = kind_of(syntax().kind(node));
  add_place(made, node, child(node, syntax().field.name), text);
  for (const TSNode each : kit::named_children(node)) {
    if (syntax().kind(each) == Node::BASES) add_bases(made, each, text);
  }
  const Modifiers words = modifiers_of(node);
  if (words.is_private) made.traits |= LOCAL_LINKAGE;
  if (words.is_abstract) made.traits |= VIRTUAL;
  if (!kit::is_null(child(node, syntax().field.type_parameters))) made.traits |= GENERIC;
  return made;
}

Definition function_definition(TSNode node, TSNode parameters, std::string_view text) {
  const Fields& field = syntax().field;
  const Node kind = syntax().kind(node);
  Definition made;
  made.kind = kind == Node::CONSTRUCTOR || kind == Node::COMPACT_CONSTRUCTOR ? Kind::CONSTRUCTOR
                                                                             : Kind::METHOD;
  add_place(made, node, child(node, field.name), text);
  const TSNode type = child(node, field.type);
  if (!kit::is_null(type)) made.type = type_text(type, child(node, field.dimensions), text);
  bool variadic = false;
  for (Parameter& parameter : parameters_of(parameters, text)) {
    variadic = variadic || parameter.type.ends_with("...");
    made.parameters.push_back(std::move(parameter.type));
  }
  const std::size_t count = made.parameters.size();
  made.least_arguments = kit::argument_count(variadic ? count - 1 : count);
  made.most_arguments = variadic ? ANY_NUMBER : kit::argument_count(count);
  const Modifiers words = modifiers_of(node);
  if (words.is_private) made.traits |= LOCAL_LINKAGE;
  if (words.is_static) made.traits |= STATIC_MEMBER;
  const bool has_body = !kit::is_null(child(node, field.body));
  if (made.kind == Kind::METHOD && !has_body && !words.is_native) made.traits |= DECLARATION;
  const bool fixed = words.is_private || words.is_static || words.is_final;
  if (made.kind == Kind::METHOD && !fixed) made.traits |= VIRTUAL;
  if (!kit::is_null(child(node, field.type_parameters))) made.traits |= GENERIC;
  return made;
}

Definition anonymous_definition(TSNode creation, TSNode body, std::string name, std::string base,
                                std::string_view text) {
  Definition made;
  made.name = std::move(name);
  made.kind = Kind::CLASS;
  made.first_line = kit::first_line(body);
  made.last_line = kit::last_line(body);
  made.name_line = made.first_line;
  const std::size_t start = ts_node_start_byte(creation);
  const std::size_t end = ts_node_start_byte(body);
  if (start < end && end <= text.size()) {
    made.signature = kit::one_line(text.substr(start, end - start));
  }
  made.bases.push_back(std::move(base));
  return made;
}

std::vector<Parameter> parameters_of(TSNode parameters, std::string_view text) {
  const Syntax& java = syntax();
  std::vector<Parameter> found;
  if (java.kind(parameters) == Node::IDENTIFIER) {
    found.push_back({.name = parameters, .type = {}});
    return found;
  }
  for (const TSNode each : kit::named_children(parameters)) {
    const Node kind = java.kind(each);
    if (kind == Node::IDENTIFIER) {
      found.push_back({.name = each, .type = {}});
    } else if (kind == Node::PARAMETER) {
      found.push_back({.name = child(each, java.field.name),
                       .type = type_text(child(each, java.field.type),
                                         child(each, java.field.dimensions), text)});
    } else if (kind == Node::SPREAD_PARAMETER) {
      Parameter made;
      for (const TSNode part : kit::named_children(each)) {
        const Node part_kind = java.kind(part);
        if (part_kind == Node::DECLARATOR) {
          made.name = child(part, java.field.name);
        } else if (part_kind != Node::MODIFIERS && part_kind != Node::ANNOTATION &&
                   part_kind != Node::COMMENT) {
          made.type = type_text(part, {}, text) + "...";
        }
      }
      found.push_back(std::move(made));
    }
  }
  return found;
}

std::string erased_text(std::string_view type) {
  std::string made;
  int depth = 0;
  bool in_annotation = false;
  for (const char byte : type) {
    if (byte == '<') ++depth;
    if (byte == '@') in_annotation = true;
    const bool space = byte == ' ' || byte == '\n' || byte == '\t' || byte == '\r';
    if (depth == 0 && !in_annotation && !space && byte != '[' && byte != ']') made += byte;
    if (space) in_annotation = false;
    if (byte == '>') --depth;
  }
  return kit::one_line(made, kit::LONGEST_EXPRESSION);
}

}  // namespace context_delta::indexer::java
