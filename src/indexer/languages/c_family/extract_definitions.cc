#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/c_family/extractor.h"
#include "indexer/languages/c_family/tokens.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {

using kit::child;
using kit::first_line;
using kit::is_null;
using kit::text_of;

/// A header's include guard, and what else encloses nearly all of a file, decides nothing.
void Extractor::enter_conditional(TSNode node, std::uint32_t depth) {
  if (depth == 1 && text_of(node, builder_.text()).starts_with("#ifndef")) {
    const std::vector<TSNode> below = kit::named_children(node);
    std::size_t second = 1;
    while (second < below.size() && syntax_.kind(below[second]) == Node::COMMENT) ++second;
    const bool guard = second < below.size() && syntax_.kind(below[second]) == Node::MACRO &&
                       text_of(child(below[second], syntax_.field.name), builder_.text()) ==
                           text_of(below[0], builder_.text());
    if (guard) return;
  }
  const std::size_t size = ts_node_end_byte(node) - ts_node_start_byte(node);
  const bool whole_file = depth == 1 && size > builder_.text().size() / 10 * 9;
  if (!whole_file) builder_.open(depth).traits |= CONDITIONAL;
}

bool Extractor::enter_function(TSNode node, std::uint32_t depth) {
  const Declarator declarator = declarator_of(syntax_, child(node, syntax_.field.declarator));
  if (is_null(declarator.parameters)) return enter_unparsed_class(node, depth);
  if (is_macro_definition(syntax_, node, declarator, builder_.text()) && !builder_.in_function()) {
    enter_macro_definition(node, declarator, depth);
    return true;
  }
  const bool in_class = kit::is_class_kind(builder_.scope_kind());
  Definition made = function_definition(syntax_, node, declarator, builder_.text(), in_class);
  if (made.name.empty() || is_keyword(made.name)) return true;
  if (in_class && made.name == builder_.definition(builder_.frame().definition).name) {
    made.kind = Kind::CONSTRUCTOR;
  }
  const bool whole = !is_null(child(node, syntax_.field.type)) || made.kind != Kind::FUNCTION;
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.traits &= static_cast<std::uint16_t>(~(CONDITIONAL | GENERIC | LOCAL_LINKAGE));
  frame.state = 0;
  frame.start = 0;
  if (whole) {
    // A function that parsed is whole even where the text around it did not.
    builder_.definition(index).traits &= static_cast<std::uint16_t>(~BROKEN);
    frame.traits &= static_cast<std::uint16_t>(~BROKEN);
  }
  for (Binding& binding :
       parameter_bindings(syntax_, declarator.parameters, builder_.text(), index)) {
    builder_.bind(std::move(binding));
  }
  return true;
}

/// `class MACRO Name { ... }` where the macro was not told from the name.
bool Extractor::enter_unparsed_class(TSNode node, std::uint32_t depth) {
  const TSNode type = child(node, syntax_.field.type);
  const Node kind = syntax_.kind(type);
  const TSNode name = child(node, syntax_.field.declarator);
  if ((kind != Node::CLASS && kind != Node::STRUCT) || syntax_.kind(name) != Node::IDENTIFIER) {
    return true;
  }
  const DefinitionIndex index = builder_.define(
      plain_definition(kind == Node::CLASS ? Kind::CLASS : Kind::STRUCT,
                       std::string(text_of(name, builder_.text())), node, name, builder_.text()));
  builder_.definition(index).signature = "class " + builder_.definition(index).name;
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.start = 0;
  return true;
}

void Extractor::enter_macro_definition(TSNode node, const Declarator& declarator,
                                       std::uint32_t depth) {
  std::string name;
  for (const TSNode parameter : kit::named_children(declarator.parameters)) {
    if (!name.empty()) name += '.';
    name += kit::one_line(text_of(parameter, builder_.text()), 80);
  }
  Definition made = function_definition(syntax_, node, declarator, builder_.text(), false);
  made.name = std::move(name);
  made.kind = Kind::FUNCTION;
  made.traits |= FROM_MACRO;
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.start = 0;
}

bool Extractor::enter_class(TSNode node, std::uint32_t depth) {
  const TSNode body = child(node, syntax_.field.body);
  if (is_null(body)) return true;
  Definition made = class_definition(syntax_, node, builder_.text());
  if (made.name.empty()) {
    if (!kit::is_class_kind(builder_.scope_kind())) {
      builder_.open(depth).state |= IN_UNNAMED_TYPE;
    }
    return true;
  }
  for (const TSNode below : kit::named_children(node)) {
    if (syntax_.kind(below) == Node::BASE_CLAUSE) refer_to_bases(below);
  }
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.traits &= static_cast<std::uint16_t>(~(CONDITIONAL | GENERIC));
  frame.start = 0;
  return true;
}

void Extractor::refer_to_bases(TSNode clause) {
  for (const std::string& base : base_names(syntax_, clause, builder_.text())) {
    const std::size_t colons = base.rfind("::");
    const bool scoped = colons != std::string::npos;
    builder_.refer(scoped ? std::string_view(base).substr(colons + 2) : base,
                   scoped ? base.substr(0, colons + 2) : std::string(), Role::INHERIT,
                   first_line(clause));
  }
}

bool Extractor::enter_namespace(TSNode node, std::uint32_t depth) {
  const TSNode name = child(node, syntax_.field.name);
  if (is_null(name)) {
    builder_.open(depth).traits |= LOCAL_LINKAGE;
    return true;
  }
  std::string written = kit::one_line(text_of(name, builder_.text()));
  Definition made = plain_definition(Kind::NAMESPACE, written, node, name, builder_.text());
  const std::size_t colons = written.rfind("::");
  if (colons != std::string::npos) {
    made.scope = std::string(kit::trimmed(written.substr(0, colons)));
    made.name = std::string(kit::trimmed(written.substr(colons + 2)));
  }
  made.signature = "namespace " + written;
  const DefinitionIndex index = builder_.define(std::move(made));
  builder_.open(depth).definition = index;
  return true;
}

bool Extractor::enter_declaration(TSNode node) {
  if ((builder_.frame().state & IN_UNNAMED_TYPE) != 0) return true;
  const TSNode type_node = child(node, syntax_.field.type);
  const std::string type = type_text(syntax_, type_node, builder_.text());
  for (const TSNode part : kit::children(node, syntax_.field.declarator)) {
    declare(node, part, type);
  }
  return true;
}

void Extractor::declare(TSNode node, TSNode part, const std::string& type) {
  Declarator declarator = declarator_of(syntax_, part);
  if (is_null(declarator.name)) return;
  if (is_null(declarator.value)) declarator.value = child(node, syntax_.field.value);
  const bool is_function = !is_null(declarator.parameters);
  if (is_function && !is_variable_with_arguments(declarator, type)) {
    if (builder_.in_function() && !kit::is_class_kind(builder_.scope_kind())) return;
    const bool in_class = kit::is_class_kind(builder_.scope_kind());
    Definition made = function_definition(syntax_, node, declarator, builder_.text(), in_class);
    if (made.name.empty()) return;
    if (in_class && made.name == builder_.definition(builder_.frame().definition).name) {
      made.kind = Kind::CONSTRUCTOR;
    }
    builder_.define(std::move(made));
    return;
  }
  declare_variable(node, declarator, type);
  const TSNode arguments = is_function ? declarator.parameters : declarator.value;
  const Node value = syntax_.kind(arguments);
  const bool constructs = is_null(declarator.value) || value == Node::ARGUMENT_LIST ||
                          value == Node::INITIALIZER_LIST || is_function;
  if (syntax_.is_cpp && constructs && !declarator.is_pointer && builder_.in_function() &&
      is_null(declarator.function) == !is_function) {
    construct(declarator, child(node, syntax_.field.type), arguments);
  }
}

/// `Type name(argument);` in a function reads like a prototype; C has no such variables.
bool Extractor::is_variable_with_arguments(const Declarator& declarator, const std::string& type) {
  if (!syntax_.is_cpp || !builder_.in_function() || type.empty()) return false;
  if (kit::is_class_kind(builder_.scope_kind())) return false;
  const std::vector<TSNode> parameters = kit::named_children(declarator.parameters);
  if (parameters.empty()) return false;
  for (const TSNode parameter : parameters) {
    if (!is_null(child(parameter, syntax_.field.declarator))) return false;
    if (syntax_.kind(child(parameter, syntax_.field.type)) == Node::PRIMITIVE_TYPE) return false;
  }
  return true;
}

void Extractor::declare_variable(TSNode node, const Declarator& declarator,
                                 const std::string& type) {
  const Kind scope = builder_.scope_kind();
  if (syntax_.kind(declarator.name) == Node::STRUCTURED_BINDING) {
    for (const TSNode name : kit::named_children(declarator.name)) bind_local(name, {}, "?");
    return;
  }
  const QualifiedName name = qualified_name(syntax_, declarator.name, builder_.text());
  if (name.name.empty()) return;
  Binding binding;
  binding.name = name.name;
  binding.scope = builder_.frame().definition;
  binding.kind = kit::is_class_kind(scope)      ? Binding::Kind::MEMBER
                 : kit::is_function_kind(scope) ? Binding::Kind::LOCAL
                                                : Binding::Kind::GLOBAL;
  if (is_null(declarator.function)) binding.type = type;
  if (!is_null(declarator.value)) {
    binding.value = expression_text(syntax_, declarator.value, builder_.text());
  }
  binding.line = first_line(declarator.name);
  binding.traits = builder_.frame().traits & (BROKEN | CONDITIONAL);
  if (at_file_level()) {
    Definition made =
        plain_definition(Kind::VARIABLE, name.name, node, declarator.name, builder_.text());
    made.scope = name.scope == "::" ? "" : name.scope;
    made.type = type;
    if (has_keyword(node, declarator.name, builder_.text(), "static")) {
      made.traits |= LOCAL_LINKAGE;
    }
    if (has_keyword(node, declarator.name, builder_.text(), "extern")) made.traits |= DECLARATION;
    builder_.define(std::move(made));
  }
  builder_.bind(std::move(binding));
}

bool Extractor::enter_type_definition(TSNode node, std::uint32_t depth) {
  const TSNode type = child(node, syntax_.field.type);
  const bool unnamed =
      !is_null(child(type, syntax_.field.body)) && is_null(child(type, syntax_.field.name));
  bool first = true;
  for (const TSNode part : kit::children(node, syntax_.field.declarator)) {
    const Declarator declarator = declarator_of(syntax_, part);
    if (is_null(declarator.name)) continue;
    std::string name = kit::one_line(text_of(declarator.name, builder_.text()));
    Definition made = plain_definition(Kind::TYPE, name, node, declarator.name, builder_.text());
    made.type = type_text(syntax_, type, builder_.text());
    if (first && unnamed) {
      const Definition shape = class_definition(syntax_, type, builder_.text());
      made.kind = shape.kind;
      made.type.clear();
      made.signature = "typedef " + shape.signature + " " + name;
    } else if (!is_null(child(type, syntax_.field.body))) {
      made.signature =
          "typedef " + class_definition(syntax_, type, builder_.text()).signature + " " + name;
      if (name == made.type) continue;
    }
    if (!is_null(declarator.function)) made.type.clear();
    const DefinitionIndex index = builder_.define(std::move(made));
    if (first && unnamed) builder_.open(depth).definition = index;
    first = false;
  }
  return true;
}

bool Extractor::enter_alias(TSNode node) {
  const TSNode name = child(node, syntax_.field.name);
  Definition made = plain_definition(Kind::TYPE, std::string(text_of(name, builder_.text())), node,
                                     name, builder_.text());
  made.type = type_text(syntax_, child(node, syntax_.field.type), builder_.text());
  if (!made.name.empty()) builder_.define(std::move(made));
  return true;
}

}  // namespace context_delta::indexer::c_family
