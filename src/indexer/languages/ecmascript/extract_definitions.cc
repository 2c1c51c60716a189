#include <algorithm>

#include "indexer/languages/ecmascript/extractor.h"
#include "indexer/languages/ecmascript/parameters.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {
namespace {

constexpr std::size_t LONGEST_PREAMBLE = 200;

/// Whether only the beginning of one declaration stands in the text.
bool is_preamble(std::string_view text) {
  return text.size() <= LONGEST_PREAMBLE && text.find_first_of(";{}(),") == std::string_view::npos;
}

std::string definition_number(DefinitionIndex index) { return "=" + std::to_string(index); }

}  // namespace

using kit::child;
using kit::first_line;
using kit::is_null;

bool Extractor::in_class() { return kit::is_class_kind(builder_.scope_kind()); }

std::string Extractor::definition_text(TSNode node) {
  const auto found = defined_.find(node.id);
  return found == defined_.end() ? std::string() : definition_number(found->second);
}

/// A method's name: strings without quotes, computed names with their brackets.
std::string Extractor::property_name(TSNode name) const {
  if (syntax_.kind(name) == Node::STRING) {
    return kit::one_line(string_content(name, builder_.text()), kit::LONGEST_EXPRESSION);
  }
  return text_of(name);
}

/// What the comment right before a declaration says.
Documentation Extractor::documentation_before(TSNode node) const {
  if (is_null(comment_)) return {};
  const std::uint32_t end = ts_node_end_byte(comment_);
  const std::uint32_t start = ts_node_start_byte(node);
  if (start < end || start > builder_.text().size()) return {};
  if (!is_preamble(builder_.text().substr(end, start - end))) return {};
  return read_documentation(kit::text_of(comment_, builder_.text()));
}

Definition Extractor::definition_of(TSNode node, TSNode name_node, std::string name, Kind kind) {
  Definition made;
  made.name = std::move(name);
  made.kind = kind;
  made.first_line = first_line(node);
  made.last_line = kit::last_line(node);
  made.name_line = is_null(name_node) ? made.first_line : first_line(name_node);
  const std::size_t from = is_null(name_node)
                               ? ts_node_start_byte(node)
                               : std::min(ts_node_start_byte(node), ts_node_start_byte(name_node));
  const TSNode body = child(node, syntax_.field.body);
  const std::size_t to = is_null(body) ? ts_node_end_byte(node) : ts_node_start_byte(body);
  const std::string_view text = builder_.text();
  std::string_view header = text.substr(std::min(from, text.size()), to - std::min(from, to));
  header = kit::trimmed(header.substr(0, 4 * kit::LONGEST_SIGNATURE));
  if (header.ends_with("=>")) header = kit::trimmed(header.substr(0, header.size() - 2));
  made.signature = kit::one_line(header);
  return made;
}

/// Defines a function and what it binds; the walk opens it when it gets there.
DefinitionIndex Extractor::define_function(TSNode function, TSNode name_node, std::string name,
                                           Kind kind, std::string scope) {
  const Documentation documentation = documentation_before(function);
  Definition made = definition_of(function, name_node, std::move(name), kind);
  if (!is_null(name_node)) made.first_line = std::min(made.first_line, made.name_line);
  made.scope = std::move(scope);
  made.type = annotated_type(child(function, syntax_.field.return_type), builder_.text());
  if (made.type.empty()) made.type = documentation.returns;
  count_parameters(syntax_, function, builder_.text(), made);
  const DefinitionIndex index = builder_.define(std::move(made));
  defined_[function.id] = index;
  return index;
}

/// The decorators of a class or a member stand before it, or inside its node.
void Extractor::decorate(DefinitionIndex index, TSNode node) {
  Definition& definition = builder_.definition(index);
  if (syntax_.kind(ts_node_named_child(node, 0)) == Node::DECORATOR) {
    definition.traits |= DECORATED;
  }
  if (decorated_line_ == 0) return;
  definition.first_line = std::min(definition.first_line, decorated_line_);
  definition.traits |= DECORATED;
  decorated_line_ = 0;
}

/// Lets names of the innermost scope mean the definition.
void Extractor::declare_definition(DefinitionIndex index) {
  const std::int32_t lexical = context().lexical;
  Definition& definition = builder_.definition(index);
  Declaration& declaration = scopes_.declare(lexical, definition.name);
  const bool signature = (definition.traits & DECLARATION) != 0;
  declaration.more = declaration.more || (declaration.definition != NOWHERE && !signature) ||
                     declaration.binding >= 0;
  declaration.definition = index;
  if (scopes_.is_own(lexical)) return;
  definition.traits |= LOCAL_LINKAGE;
  definition.traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  Binding binding;
  binding.name = scopes_.spelled(lexical, definition.name);
  binding.scope = scopes_.definition(lexical);
  binding.value = definition_number(index);
  binding.line = definition.name_line;
  bind(std::move(binding), lexical);
}

/// What `this` is in a function that is no arrow function.
std::string Extractor::receiver_of(TSNode node, DefinitionIndex index, const Context& around) {
  const auto assigned = receivers_.find(node.id);
  if (assigned != receivers_.end()) return assigned->second;
  if (!around.object.empty()) return around.object;
  const Definition& definition = builder_.definition(index);
  if (definition.kind == Kind::FUNCTION) return definition_number(index) + "!";
  const bool of_class = definition.parent != NOWHERE && definition.scope.empty() &&
                        kit::is_class_kind(builder_.definition(definition.parent).kind);
  return of_class ? "this" : "?";
}

void Extractor::open_function(TSNode node, std::uint32_t depth, DefinitionIndex index) {
  const Documentation documentation = documentation_before(node);
  const std::int32_t outer = context().lexical;
  const bool is_arrow = syntax_.kind(node) == Node::ARROW_FUNCTION;
  Context& made = open(depth);
  builder_.frame().definition = index;
  builder_.frame().traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  builder_.frame().start = 0;
  made.lexical = scopes_.open(outer, index, true, true);
  made.statement_line = 0;
  made.hoisted = false;
  if (!is_arrow) made.this_text = receiver_of(node, index, made);
  made.object.clear();
  made.owner.clear();
  const TSNode body = child(node, syntax_.field.body);
  if (!is_null(body)) bodies_.insert(body.id);
  bind_type_parameters(node, index);
  bind_parameters(node, index, documentation);
  if (is_arrow && !is_null(body) && syntax_.kind(body) != Node::BLOCK) {
    expect_result(body);
    results_.push_back({index, value_of(body), context().lexical});
  }
}

/// A function that is no symbol: its names are those of a block.
void Extractor::open_anonymous(TSNode node, std::uint32_t depth) {
  const std::int32_t outer = context().lexical;
  const DefinitionIndex around = builder_.frame().definition;
  const bool is_arrow = syntax_.kind(node) == Node::ARROW_FUNCTION;
  Context& made = open(depth);
  made.lexical = scopes_.open(outer, around, false, true);
  made.statement_line = 0;
  made.hoisted = false;
  made.object.clear();
  made.owner.clear();
  if (!is_arrow) made.this_text = "?";
  const TSNode body = child(node, syntax_.field.body);
  if (!is_null(body)) bodies_.insert(body.id);
  const TSNode name = child(node, syntax_.field.name);
  if (!is_null(name)) bind_name(name, {}, "?", Binding::Kind::LOCAL, context().lexical);
  bind_parameters(node, NOWHERE, documentation_before(node));
}

bool Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const auto known = defined_.find(node.id);
  if (known != defined_.end()) {
    open_function(node, depth, known->second);
    return true;
  }
  const Node kind = syntax_.kind(node);
  if (is_function_value(kind)) {
    open_anonymous(node, depth);
    return true;
  }
  const TSNode name = child(node, syntax_.field.name);
  const DefinitionIndex index = define_function(node, name, text_of(name), Kind::FUNCTION);
  if (kind == Node::FUNCTION_SIGNATURE) builder_.definition(index).traits |= DECLARATION;
  declare_definition(index);
  open_function(node, depth, index);
  return true;
}

void Extractor::add_bases(TSNode node, Definition& definition) {
  for (const TSNode heritage : kit::named_children(node)) {
    const Node outer = syntax_.kind(heritage);
    if (outer != Node::HERITAGE && outer != Node::EXTENDS) continue;
    for (const TSNode clause :
         outer == Node::EXTENDS ? std::vector<TSNode>{heritage} : kit::named_children(heritage)) {
      const Node kind = syntax_.kind(clause);
      if (kind == Node::COMMENT) continue;
      if (kind != Node::EXTENDS && kind != Node::IMPLEMENTS) {
        definition.bases.push_back(value_of(clause));
        continue;
      }
      for (TSNode base : kit::named_children(clause)) {
        const Node written = syntax_.kind(base);
        if (written == Node::TYPE_ARGUMENTS || written == Node::COMMENT) continue;
        if (written == Node::GENERIC_TYPE) base = child(base, syntax_.field.name);
        const bool is_type =
            syntax_.kind(base) == Node::TYPE_NAME || syntax_.kind(base) == Node::NESTED_TYPE;
        const std::string name = is_type ? text_of(base) : value_of(base);
        definition.bases.push_back(kind == Node::IMPLEMENTS ? std::string(IMPLEMENTED) + name
                                                            : name);
      }
    }
  }
}

bool Extractor::enter_class(TSNode node, std::uint32_t depth) {
  const auto known = defined_.find(node.id);
  DefinitionIndex index = known == defined_.end() ? NOWHERE : known->second;
  const TSNode name = child(node, syntax_.field.name);
  if (index == NOWHERE) {
    if (is_null(name)) {
      open_anonymous(node, depth);
      return true;
    }
    index = builder_.define(definition_of(node, name, text_of(name), Kind::CLASS));
    defined_[node.id] = index;
    if (syntax_.kind(node) == Node::CLASS_DECLARATION) declare_definition(index);
  }
  Definition with_bases;
  add_bases(node, with_bases);
  for (const std::string& base : with_bases.bases) {
    const bool implemented = base.starts_with(IMPLEMENTED);
    const std::string_view written =
        std::string_view(base).substr(implemented ? IMPLEMENTED.size() : 0);
    const std::size_t dot = written.rfind('.');
    const bool dotted = dot != std::string_view::npos;
    builder_.refer(dotted ? written.substr(dot + 1) : written,
                   dotted ? std::string(written.substr(0, dot)) : std::string(), Role::INHERIT,
                   first_line(node));
  }
  builder_.definition(index).bases = std::move(with_bases.bases);
  decorate(index, node);
  name_ = name.id;
  const std::int32_t outer = context().lexical;
  Context& made = open(depth);
  builder_.frame().definition = index;
  builder_.frame().traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  builder_.frame().start = 0;
  made.this_text = "this";
  made.object.clear();
  made.owner.clear();
  made.lexical = scopes_.open(outer, index, true, false);
  if (syntax_.kind(node) == Node::CLASS_EXPRESSION && !is_null(name)) {
    scopes_.declare(context().lexical, text_of(name)).definition = index;
  }
  bind_type_parameters(node, index);
  return true;
}

bool Extractor::enter_method(TSNode node, std::uint32_t depth) {
  const TSNode name_node = child(node, syntax_.field.name);
  const std::string name = property_name(name_node);
  const bool class_member = in_class() && context().object.empty();
  const bool constructs = class_member && name == "constructor";
  const DefinitionIndex index =
      define_function(node, name_node, name, constructs ? Kind::CONSTRUCTOR : Kind::METHOD,
                      class_member ? std::string() : context().owner);
  Definition& made = builder_.definition(index);
  if (has_keyword(node, "get") || has_keyword(node, "set")) made.traits |= PROPERTY;
  if (class_member && has_keyword(node, "static")) made.traits |= STATIC_MEMBER;
  if (class_member) decorate(index, node);
  const std::string object = context().object;
  if (!class_member && !object.empty()) {
    bind_member(scopes_.definition(context().lexical), object + "." + name, {},
                definition_number(index), node);
  }
  open_function(node, depth, index);
  return true;
}

bool Extractor::enter_signature(TSNode node, std::uint32_t depth) {
  const TSNode name_node = child(node, syntax_.field.name);
  const bool class_member = in_class() && builder_.scope_kind() != Kind::INTERFACE;
  open(depth);
  if (!class_member && !context().type_members) return true;
  const std::string name = property_name(name_node);
  const TSNode type = child(node, syntax_.field.type);
  const TSNode written = first_child(syntax_, type);
  if (syntax_.kind(node) == Node::PROPERTY_SIGNATURE &&
      syntax_.kind(written) != Node::FUNCTION_TYPE) {
    bind_member(builder_.frame().definition, name, annotated_type(type, builder_.text()), {}, node);
    return true;
  }
  const bool is_method = syntax_.kind(node) == Node::METHOD_SIGNATURE;
  const DefinitionIndex index =
      define_function(node, name_node, name,
                      name == "constructor" && class_member ? Kind::CONSTRUCTOR : Kind::METHOD);
  Definition& made = builder_.definition(index);
  made.traits |= DECLARATION;
  if (!class_member || std::string_view(ts_node_type(node)) == "abstract_method_signature") {
    made.traits |= VIRTUAL;
  }
  if (has_keyword(node, "static")) made.traits |= STATIC_MEMBER;
  if (has_keyword(node, "get") || has_keyword(node, "set")) made.traits |= PROPERTY;
  if (!is_method) {
    made.type = text_of(child(written, syntax_.field.return_type));
    count_parameters(syntax_, written, builder_.text(), made);
  }
  builder_.frame().definition = index;
  context().lexical = scopes_.open(context().lexical, index, true, true);
  return true;
}

bool Extractor::enter_field(TSNode node, std::uint32_t depth) {
  TSNode name_node = child(node, syntax_.field.name);
  if (is_null(name_node)) name_node = child(node, syntax_.field.property);
  const std::string name = property_name(name_node);
  const TSNode value = child(node, syntax_.field.value);
  const std::uint16_t traits =
      has_keyword(node, "static") ? static_cast<std::uint16_t>(STATIC_MEMBER) : std::uint16_t{0};
  if (!in_class()) return true;
  if (is_function_value(syntax_.kind(value))) {
    expected_[value.id] = annotated_type(child(node, syntax_.field.type), builder_.text());
    const DefinitionIndex index = define_function(value, name_node, name, Kind::METHOD);
    builder_.definition(index).traits |= traits;
    builder_.definition(index).first_line =
        std::min(builder_.definition(index).first_line, first_line(node));
    decorate(index, node);
  } else {
    decorated_line_ = 0;
    std::string type = annotated_type(child(node, syntax_.field.type), builder_.text());
    if (type.empty()) type = documentation_before(node).type;
    bind_member(builder_.frame().definition, name, std::move(type), value_of(value), node, traits);
  }
  open(depth).lexical = scopes_.open(context().lexical, builder_.frame().definition, false, true);
  return true;
}

bool Extractor::enter_named_type(TSNode node, std::uint32_t depth, Kind kind) {
  const TSNode name = child(node, syntax_.field.name);
  Definition made = definition_of(node, name, text_of(name), kind);
  const TSNode value = child(node, syntax_.field.value);
  if (kind == Kind::TYPE) {
    made.type = kit::one_line(kit::text_of(value, builder_.text()));
    type_bodies_.insert(value.id);
    for (const TSNode part : kit::named_children(value)) {
      if (syntax_.kind(value) != Node::OBJECT_TYPE) type_bodies_.insert(part.id);
    }
  } else if (kind == Kind::INTERFACE) {
    type_bodies_.insert(child(node, syntax_.field.body).id);
    add_bases(node, made);
  }
  const DefinitionIndex index = builder_.define(std::move(made));
  name_ = name.id;
  const std::int32_t outer = context().lexical;
  Context& opened = open(depth);
  builder_.frame().definition = index;
  opened.lexical = scopes_.open(outer, index, true, false);
  bind_type_parameters(node, index);
  return kind != Kind::ENUM;
}

void Extractor::enter_namespace(TSNode node, std::uint32_t depth) {
  const TSNode name = child(node, syntax_.field.name);
  const TSNode body = child(node, syntax_.field.body);
  if (is_null(body)) return;
  bodies_.insert(body.id);
  const bool is_module = syntax_.kind(name) == Node::STRING;
  const DefinitionIndex index =
      builder_.define(definition_of(node, name, property_name(name), Kind::NAMESPACE));
  if (!is_module) scopes_.declare(context().lexical, text_of(name)).definition = index;
  const std::int32_t outer = context().lexical;
  open(depth).lexical = scopes_.open(outer, index, true, true);
  builder_.frame().definition = index;
}

/// A type parameter is a type of its own, or its constraint.
void Extractor::bind_type_parameters(TSNode node, DefinitionIndex scope) {
  const TSNode parameters = child(node, syntax_.field.type_parameters);
  if (is_null(parameters)) return;
  for (const TSNode parameter : kit::named_children(parameters)) {
    if (syntax_.kind(parameter) != Node::TYPE_PARAMETER) continue;
    const TSNode constraint = child(parameter, syntax_.field.constraint);
    std::string type = text_of(first_child(syntax_, constraint));
    bind_member(scope, std::string(TYPE_NAMED) + text_of(child(parameter, syntax_.field.name)),
                std::move(type), {}, parameter);
  }
}

}  // namespace context_delta::indexer::ecmascript
