#include "indexer/languages/rust/definitions.h"

#include <algorithm>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/syntax.h"

namespace context_delta::indexer::rust {
namespace {

using kit::child;
using kit::text_of;

/// Where the signature of an item ends: before its body, its value or its list of fields.
std::uint32_t signature_end(TSNode node, Kind kind) {
  const Fields& field = syntax().field;
  TSNode body = child(node, field.body);
  const bool tuple_struct = syntax().kind(body) == Node::ORDERED_FIELDS;
  if (tuple_struct || kind == Kind::TYPE) return ts_node_end_byte(node);
  if (kit::is_null(body)) body = child(node, field.value);
  if (kit::is_null(body)) return ts_node_end_byte(node);
  return ts_node_start_byte(body);
}

std::string_view without_end(std::string_view signature) {
  signature = kit::trimmed(signature);
  while (!signature.empty() && (signature.back() == ';' || signature.back() == '=' ||
                                signature.back() == '{' || signature.back() == '(')) {
    signature = kit::trimmed(signature.substr(0, signature.size() - 1));
  }
  return signature;
}

void add_bounds(std::vector<Binding>& parameters, std::string_view name, const std::string& bounds,
                DefinitionIndex scope, std::int32_t line) {
  const auto known = std::find_if(parameters.begin(), parameters.end(),
                                  [&](const Binding& each) { return each.name == name; });
  if (known != parameters.end()) {
    if (!bounds.empty()) known->type += (known->type.empty() ? "" : " + ") + bounds;
    return;
  }
  Binding made;
  made.name = kit::one_line(name, kit::LONGEST_EXPRESSION);
  made.kind = Binding::Kind::MEMBER;
  made.scope = scope;
  made.type = bounds;
  made.line = line;
  made.traits = GENERIC;
  parameters.push_back(std::move(made));
}

}  // namespace

Definition item_definition(TSNode node, std::string_view text, Kind kind) {
  const TSNode name = child(node, syntax().field.name);
  Definition made;
  made.name = kit::one_line(text_of(name, text), kit::LONGEST_EXPRESSION);
  made.kind = kind;
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::is_null(name) ? made.first_line : kit::first_line(name);
  const std::size_t start = std::min<std::size_t>(ts_node_start_byte(node), text.size());
  const std::size_t end = std::max<std::size_t>(start, signature_end(node, kind));
  made.signature = kit::one_line(without_end(text.substr(start, end - start)));
  if (is_private(node)) made.traits |= LOCAL_LINKAGE;
  return made;
}

void read_signature(Definition& function, TSNode node, std::string_view text) {
  const Syntax& rust = syntax();
  function.type = kit::one_line(text_of(child(node, rust.field.return_type), text));
  std::size_t count = 0;
  bool any = false;
  bool has_self = false;
  for (const TSNode each : kit::named_children(child(node, rust.field.parameters))) {
    const Node kind = rust.kind(each);
    has_self =
        has_self || kind == Node::SELF_PARAMETER ||
        (kind == Node::PARAMETER && text_of(child(each, rust.field.pattern), text) == "self");
    any = any || kind == Node::VARIADIC;
    if (kind != Node::COMMENT && kind != Node::ATTRIBUTE) ++count;
  }
  if (has_self) --count;
  if (!has_self && function.kind == Kind::METHOD) function.traits |= STATIC_MEMBER;
  function.least_arguments = kit::argument_count(count);
  function.most_arguments = any ? ANY_NUMBER : function.least_arguments;
}

std::vector<Binding> generic_parameters(TSNode node, std::string_view text, DefinitionIndex scope) {
  const Syntax& rust = syntax();
  std::vector<Binding> made;
  for (const TSNode each : kit::named_children(child(node, rust.field.type_parameters))) {
    const Node kind = rust.kind(each);
    if (kind != Node::TYPE_PARAMETER && kind != Node::CONST_PARAMETER) continue;
    add_bounds(made, text_of(child(each, rust.field.name), text),
               bounds_text(child(each, rust.field.bounds), text), scope, kit::first_line(each));
  }
  const TSNode where = child_of_kind(node, Node::WHERE_CLAUSE);
  for (const TSNode each : kit::named_children(where)) {
    if (rust.kind(each) != Node::WHERE_PREDICATE) continue;
    add_bounds(made, text_of(child(each, rust.field.left), text),
               bounds_text(child(each, rust.field.bounds), text), scope, kit::first_line(each));
  }
  return made;
}

std::string bounds_text(TSNode bounds, std::string_view text) {
  std::string_view written = kit::trimmed(text_of(bounds, text));
  if (written.starts_with(':')) written.remove_prefix(1);
  return kit::one_line(written);
}

bool is_private(TSNode node) { return kit::is_null(child_of_kind(node, Node::VISIBILITY)); }

std::string last_name(std::string_view type) {
  std::string name;
  int brackets = 0;
  for (std::size_t i = 0; i < type.size(); ++i) {
    const char byte = type[i];
    if (byte == '<') ++brackets;
    if (byte == '>' && brackets > 0) --brackets;
    if (brackets > 0 || !kit::is_identifier_byte(byte)) continue;
    std::size_t end = i;
    while (end < type.size() && kit::is_identifier_byte(type[end])) ++end;
    const std::string_view word = type.substr(i, end - i);
    const bool lifetime = i > 0 && type[i - 1] == '\'';
    if (!lifetime && word != "mut" && word != "dyn" && word != "const") name = word;
    i = end - 1;
  }
  return name;
}

}  // namespace context_delta::indexer::rust
