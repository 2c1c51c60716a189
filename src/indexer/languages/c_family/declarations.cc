#include "indexer/languages/c_family/declarations.h"

#include <algorithm>
#include <cctype>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {
namespace {

using kit::child;
using kit::is_null;
using kit::text_of;

bool has_word(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos;
       at = text.find(word, at + 1)) {
    const bool starts = at == 0 || !kit::is_identifier_byte(text[at - 1]);
    const std::size_t end = at + word.size();
    const bool ends = end == text.size() || !kit::is_identifier_byte(text[end]);
    if (starts && ends) return true;
  }
  return false;
}

/// The text from the start of a node to the body, a member initialiser list or the end.
std::string header_text(const Syntax& syntax, TSNode node, std::string_view text) {
  const std::size_t start = ts_node_start_byte(node);
  std::size_t end = ts_node_end_byte(node);
  const TSNode body = child(node, syntax.field.body);
  if (!is_null(body)) end = ts_node_start_byte(body);
  if (start >= text.size() || end < start) return {};
  std::string_view header = kit::trimmed(text.substr(start, end - start));
  while (header.ends_with(';') || header.ends_with('{')) {
    header.remove_suffix(1);
    header = kit::trimmed(header);
  }
  return kit::one_line(header);
}

bool is_variadic(const Syntax& syntax, TSNode parameters) {
  const std::uint32_t count = ts_node_child_count(parameters);
  for (std::uint32_t i = 0; i < std::min<std::uint32_t>(count, 200); ++i) {
    const TSNode node = ts_node_child(parameters, i);
    if (syntax.kind(node) == Node::VARIADIC) return true;
    if (std::string_view(ts_node_type(node)) == "...") return true;
  }
  return false;
}

void count_parameters(const Syntax& syntax, Definition& made, TSNode parameters,
                      std::string_view text) {
  std::size_t least = 0;
  std::size_t most = 0;
  for (const TSNode node : kit::named_children(parameters)) {
    const Node kind = syntax.kind(node);
    if (kind == Node::OPTIONAL_PARAMETER) {
      ++most;
    } else if (kind == Node::PARAMETER || kind == Node::IDENTIFIER) {
      ++most;
      ++least;
    }
  }
  const std::string_view written = kit::trimmed(text_of(parameters, text));
  const bool is_void = most == 1 && kit::one_line(written, 12) == "(void)";
  if (is_void) least = most = 0;
  const bool open = is_variadic(syntax, parameters) || (!syntax.is_cpp && most == 0 && !is_void);
  made.least_arguments = kit::argument_count(least);
  made.most_arguments = open ? ANY_NUMBER : kit::argument_count(most);
}

Kind function_kind(const Definition& made, std::string_view owner, bool in_class) {
  if (!in_class && owner.empty()) return Kind::FUNCTION;
  if (!owner.empty() && made.name == owner) return Kind::CONSTRUCTOR;
  return Kind::METHOD;
}

std::string_view last_part(std::string_view scope) {
  const std::size_t colons = scope.rfind("::");
  return colons == std::string_view::npos ? scope : scope.substr(colons + 2);
}

std::string operator_name(const Syntax& syntax, const QualifiedName& name, std::string_view text) {
  if (syntax.kind(name.name_node) == Node::OPERATOR_CAST) {
    return "operator " + type_text(syntax, child(name.name_node, syntax.field.type), text);
  }
  if (syntax.kind(name.name_node) != Node::OPERATOR_NAME) return name.name;
  std::string spelled = name.name;
  std::erase(spelled, ' ');
  const bool is_word = spelled.size() > 8 && std::isalpha(static_cast<unsigned char>(spelled[8]));
  return is_word ? "operator " + spelled.substr(8) : spelled;
}

std::uint16_t function_traits(const Syntax& syntax, TSNode node, const Declarator& declarator,
                              std::string_view text, bool in_class) {
  std::uint16_t traits = 0;
  const TSNode head_end = is_null(declarator.function) ? declarator.name : declarator.function;
  if (has_keyword(node, head_end, text, "virtual")) traits |= VIRTUAL;
  if (has_keyword(node, head_end, text, "static")) {
    traits |= in_class ? STATIC_MEMBER : LOCAL_LINKAGE;
  }
  for (const TSNode below : kit::named_children(declarator.function)) {
    if (syntax.kind(below) == Node::VIRTUAL_SPECIFIER) traits |= VIRTUAL;
  }
  if (is_null(child(node, syntax.field.body))) {
    bool is_default = false;
    for (const TSNode below : kit::named_children(node)) {
      is_default = is_default || syntax.kind(below) == Node::DEFAULT_METHOD;
    }
    if (!is_default) traits |= DECLARATION;
  }
  return traits;
}

}  // namespace

bool has_keyword(TSNode node, TSNode before, std::string_view text, std::string_view keyword) {
  const std::size_t start = ts_node_start_byte(node);
  const std::size_t end = is_null(before) ? start : ts_node_start_byte(before);
  if (end <= start || end > text.size()) return false;
  return has_word(text.substr(start, end - start), keyword);
}

Definition function_definition(const Syntax& syntax, TSNode node, const Declarator& declarator,
                               std::string_view text, bool in_class) {
  const QualifiedName name = qualified_name(syntax, declarator.name, text);
  Definition made;
  made.name = operator_name(syntax, name, text);
  if (made.name.starts_with("~ ")) made.name.erase(1, 1);
  made.scope = name.scope == "::" ? "" : name.scope;
  made.kind = function_kind(made, last_part(made.scope), in_class);
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = kit::first_line(declarator.name);
  made.signature = header_text(syntax, node, text);
  made.type = type_text(syntax, child(node, syntax.field.type), text);
  if (made.type == "auto") {
    for (const TSNode below : kit::named_children(declarator.function)) {
      if (syntax.kind(below) == Node::TRAILING_RETURN) made.type = type_text(syntax, below, text);
    }
  }
  made.traits = function_traits(syntax, node, declarator, text, in_class);
  if (!made.scope.empty()) made.traits &= static_cast<std::uint16_t>(~LOCAL_LINKAGE);
  count_parameters(syntax, made, declarator.parameters, text);
  return made;
}

Definition class_definition(const Syntax& syntax, TSNode node, std::string_view text) {
  const QualifiedName name = qualified_name(syntax, child(node, syntax.field.name), text);
  const Node kind = syntax.kind(node);
  Definition made = plain_definition(kind == Node::CLASS    ? Kind::CLASS
                                     : kind == Node::STRUCT ? Kind::STRUCT
                                     : kind == Node::UNION  ? Kind::UNION
                                                            : Kind::ENUM,
                                     name.name, node, name.name_node, text);
  made.scope = name.scope;
  made.signature = header_text(syntax, node, text);
  for (const TSNode below : kit::named_children(node)) {
    if (syntax.kind(below) == Node::BASE_CLAUSE) made.bases = base_names(syntax, below, text);
  }
  return made;
}

Definition plain_definition(Kind kind, std::string name, TSNode node, TSNode name_node,
                            std::string_view text) {
  Definition made;
  made.name = std::move(name);
  made.kind = kind;
  made.first_line = kit::first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = is_null(name_node) ? made.first_line : kit::first_line(name_node);
  std::string_view written = text_of(node, text);
  if (written.ends_with(';')) written.remove_suffix(1);
  made.signature = kit::one_line(written);
  return made;
}

std::vector<Binding> parameter_bindings(const Syntax& syntax, TSNode parameters,
                                        std::string_view text, DefinitionIndex scope) {
  std::vector<Binding> bindings;
  for (const TSNode node : kit::named_children(parameters)) {
    const Node kind = syntax.kind(node);
    if (kind == Node::COMMENT) continue;
    const bool is_name = kind == Node::IDENTIFIER;
    const Declarator declarator = is_name
                                      ? Declarator{.name = node}
                                      : declarator_of(syntax, child(node, syntax.field.declarator));
    if (is_null(declarator.name)) continue;
    Binding made;
    made.name = kit::one_line(text_of(declarator.name, text), kit::LONGEST_EXPRESSION);
    made.kind = Binding::Kind::PARAMETER;
    made.scope = scope;
    if (!is_name && is_null(declarator.function)) {
      made.type = type_text(syntax, child(node, syntax.field.type), text);
    }
    made.line = kit::first_line(declarator.name);
    bindings.push_back(std::move(made));
  }
  return bindings;
}

bool is_macro_definition(const Syntax& syntax, TSNode node, const Declarator& declarator,
                         std::string_view text) {
  if (!is_null(child(node, syntax.field.type)) || is_null(declarator.parameters)) return false;
  if (syntax.kind(declarator.name) != Node::IDENTIFIER) return false;
  const std::string_view name = text_of(declarator.name, text);
  if (std::any_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; })) {
    return false;
  }
  const std::vector<TSNode> parameters = kit::named_children(declarator.parameters);
  return !parameters.empty() &&
         std::all_of(parameters.begin(), parameters.end(), [&](TSNode parameter) {
           return is_null(child(parameter, syntax.field.declarator));
         });
}

std::vector<std::string> base_names(const Syntax& syntax, TSNode clause, std::string_view text) {
  std::vector<std::string> names;
  for (const TSNode node : kit::named_children(clause)) {
    const Node kind = syntax.kind(node);
    if (kind != Node::TYPE_IDENTIFIER && kind != Node::TEMPLATE_TYPE && kind != Node::QUALIFIED) {
      continue;
    }
    const QualifiedName name = qualified_name(syntax, node, text);
    names.push_back(name.scope.empty() ? name.name : name.scope + "::" + name.name);
  }
  return names;
}

}  // namespace context_delta::indexer::c_family
