#include "indexer/languages/c_family/extract.h"

#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/c_family/declarations.h"
#include "indexer/languages/c_family/tokens.h"
#include "indexer/languages/support/facts_builder.h"
#include "indexer/languages/support/text.h"

namespace context_delta::indexer::c_family {
namespace {

using support::child;
using support::first_line;
using support::is_null;
using support::text_of;

/// Bits of Frame::state.
enum State : std::uint16_t { IN_UNNAMED_TYPE = 1 };

class Extractor {
 public:
  Extractor(const Syntax& syntax, std::string_view text) : syntax_(syntax), builder_(text) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth) { builder_.close(depth); }
  Facts finish() { return builder_.finish(); }

 private:
  bool enter_definition(TSNode node, Node kind, std::uint32_t depth);
  bool enter_function(TSNode node, std::uint32_t depth);
  bool enter_unparsed_class(TSNode node, std::uint32_t depth);
  void enter_macro_definition(TSNode node, const Declarator& declarator, std::uint32_t depth);
  bool enter_class(TSNode node, std::uint32_t depth);
  bool enter_namespace(TSNode node, std::uint32_t depth);
  bool enter_declaration(TSNode node);
  void declare(TSNode node, TSNode part, const std::string& type);
  void declare_variable(TSNode node, const Declarator& declarator, const std::string& type);
  bool is_variable_with_arguments(const Declarator& declarator, const std::string& type);
  void construct(const Declarator& declarator, TSNode type, TSNode arguments);
  bool enter_type_definition(TSNode node, std::uint32_t depth);
  bool enter_alias(TSNode node);
  void enter_conditional(TSNode node, std::uint32_t depth);
  void enter_call(TSNode node);
  void enter_new(TSNode node);
  void enter_initializer(TSNode node);
  void enter_using(TSNode node);
  void enter_include(TSNode node);
  void enter_type_name(TSNode node);
  void bind_local(TSNode declarator, std::string type, std::string value);
  void bind_parameters(TSNode parameters);
  void refer_to_bases(TSNode clause);
  bool at_file_level() {
    return builder_.scope_kind() == Kind::NAMESPACE && !builder_.in_function();
  }

  const Syntax& syntax_;
  support::FactsBuilder builder_;
};

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  const Node kind = syntax_.kind(node);
  switch (kind) {
    case Node::ERROR:
      builder_.open(depth).traits |= BROKEN;
      return true;
    case Node::PREPROC_CONDITIONAL:
      enter_conditional(node, depth);
      return true;
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::NEW:
      enter_new(node);
      return true;
    case Node::COMPOUND_LITERAL:
      if (syntax_.is_cpp)
        construct({}, child(node, syntax_.field.type), child(node, syntax_.field.value));
      return true;
    case Node::FIELD_INITIALIZER:
      enter_initializer(node);
      return true;
    case Node::LAMBDA:
      bind_parameters(child(child(node, syntax_.field.declarator), syntax_.field.parameters));
      return true;
    case Node::CATCH:
      bind_parameters(child(node, syntax_.field.parameters));
      return true;
    case Node::FOR_RANGE:
      bind_local(
          child(node, syntax_.field.declarator),
          type_text(syntax_, child(node, syntax_.field.type), builder_.text()),
          expression_text(syntax_, child(node, syntax_.field.right), builder_.text()) + "[]");
      return true;
    case Node::TYPE_IDENTIFIER:
      enter_type_name(node);
      return false;
    case Node::QUALIFIED:
    case Node::DEPENDENT_NAME:
      enter_type_name(node);
      return true;
    case Node::COMMENT:
      return false;
    default:
      return enter_definition(node, kind, depth);
  }
}

bool Extractor::enter_definition(TSNode node, Node kind, std::uint32_t depth) {
  switch (kind) {
    case Node::TEMPLATE: {
      support::Frame& frame = builder_.open(depth);
      if (frame.start == 0) frame.start = first_line(node);
      frame.traits |= GENERIC;
      return true;
    }
    case Node::FUNCTION:
      return enter_function(node, depth);
    case Node::DECLARATION:
    case Node::FIELD_DECLARATION:
      return enter_declaration(node);
    case Node::FRIEND:
      return true;
    case Node::CLASS:
    case Node::STRUCT:
    case Node::UNION:
    case Node::ENUM:
      return enter_class(node, depth);
    case Node::NAMESPACE:
      return enter_namespace(node, depth);
    case Node::TYPE_DEFINITION:
      return enter_type_definition(node, depth);
    case Node::ALIAS:
    case Node::CONCEPT:
      return enter_alias(node);
    case Node::MACRO:
    case Node::MACRO_FUNCTION: {
      const TSNode name = child(node, syntax_.field.name);
      Definition made = plain_definition(Kind::MACRO, std::string(text_of(name, builder_.text())),
                                         node, name, builder_.text());
      if (kind == Node::MACRO_FUNCTION) {
        const TSNode parameters = child(node, syntax_.field.parameters);
        const bool open =
            text_of(parameters, builder_.text()).find("...") != std::string_view::npos;
        const std::int16_t count =
            support::argument_count(support::named_children(parameters).size());
        made.least_arguments = count;
        made.most_arguments = open ? ANY_NUMBER : count;
      }
      builder_.define(std::move(made));
      return false;
    }
    case Node::USING:
      enter_using(node);
      return false;
    case Node::NAMESPACE_ALIAS:
      enter_using(node);
      return false;
    case Node::PREPROC_INCLUDE:
      enter_include(node);
      return false;
    default:
      return true;
  }
}

/// A header's include guard, and what else encloses nearly all of a file, decides nothing.
void Extractor::enter_conditional(TSNode node, std::uint32_t depth) {
  if (depth == 1 && text_of(node, builder_.text()).starts_with("#ifndef")) {
    const std::vector<TSNode> below = support::named_children(node);
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
  const bool in_class = support::is_class_kind(builder_.scope_kind());
  Definition made = function_definition(syntax_, node, declarator, builder_.text(), in_class);
  if (made.name.empty() || is_keyword(made.name)) return true;
  if (in_class && made.name == builder_.definition(builder_.frame().definition).name) {
    made.kind = Kind::CONSTRUCTOR;
  }
  const bool whole = !is_null(child(node, syntax_.field.type)) || made.kind != Kind::FUNCTION;
  const DefinitionIndex index = builder_.define(std::move(made));
  support::Frame& frame = builder_.open(depth);
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
  support::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.start = 0;
  return true;
}

void Extractor::enter_macro_definition(TSNode node, const Declarator& declarator,
                                       std::uint32_t depth) {
  std::string name;
  for (const TSNode parameter : support::named_children(declarator.parameters)) {
    if (!name.empty()) name += '.';
    name += support::one_line(text_of(parameter, builder_.text()), 80);
  }
  Definition made = function_definition(syntax_, node, declarator, builder_.text(), false);
  made.name = std::move(name);
  made.kind = Kind::FUNCTION;
  made.traits |= FROM_MACRO;
  const DefinitionIndex index = builder_.define(std::move(made));
  support::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.start = 0;
}

bool Extractor::enter_class(TSNode node, std::uint32_t depth) {
  const TSNode body = child(node, syntax_.field.body);
  if (is_null(body)) return true;
  Definition made = class_definition(syntax_, node, builder_.text());
  if (made.name.empty()) {
    if (!support::is_class_kind(builder_.scope_kind())) {
      builder_.open(depth).state |= IN_UNNAMED_TYPE;
    }
    return true;
  }
  for (const TSNode below : support::named_children(node)) {
    if (syntax_.kind(below) == Node::BASE_CLAUSE) refer_to_bases(below);
  }
  const DefinitionIndex index = builder_.define(std::move(made));
  support::Frame& frame = builder_.open(depth);
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
  std::string written = support::one_line(text_of(name, builder_.text()));
  Definition made = plain_definition(Kind::NAMESPACE, written, node, name, builder_.text());
  const std::size_t colons = written.rfind("::");
  if (colons != std::string::npos) {
    made.scope = std::string(support::trimmed(written.substr(0, colons)));
    made.name = std::string(support::trimmed(written.substr(colons + 2)));
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
  for (const TSNode part : support::children(node, syntax_.field.declarator)) {
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
    if (builder_.in_function() && !support::is_class_kind(builder_.scope_kind())) return;
    const bool in_class = support::is_class_kind(builder_.scope_kind());
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
  if (support::is_class_kind(builder_.scope_kind())) return false;
  const std::vector<TSNode> parameters = support::named_children(declarator.parameters);
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
    for (const TSNode name : support::named_children(declarator.name)) bind_local(name, {}, "?");
    return;
  }
  const QualifiedName name = qualified_name(syntax_, declarator.name, builder_.text());
  if (name.name.empty()) return;
  Binding binding;
  binding.name = name.name;
  binding.scope = builder_.frame().definition;
  binding.kind = support::is_class_kind(scope)      ? Binding::Kind::MEMBER
                 : support::is_function_kind(scope) ? Binding::Kind::LOCAL
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

void Extractor::construct(const Declarator& declarator, TSNode type, TSNode arguments) {
  const Node kind = syntax_.kind(type);
  if (kind != Node::TYPE_IDENTIFIER && kind != Node::QUALIFIED && kind != Node::TEMPLATE_TYPE) {
    return;
  }
  const QualifiedName name = qualified_name(syntax_, type, builder_.text());
  std::string receiver = name.scope;
  if (!receiver.empty() && receiver != "::") receiver += "::";
  const TSNode place = is_null(declarator.name) ? name.name_node : type;
  Reference& made = builder_.refer(name.name, std::move(receiver), Role::CONSTRUCT,
                                   first_line(place), call_arguments(syntax_, arguments));
  if (!is_null(declarator.name) && is_null(arguments)) made.traits |= DECLARATION;
}

bool Extractor::enter_type_definition(TSNode node, std::uint32_t depth) {
  const TSNode type = child(node, syntax_.field.type);
  const bool unnamed =
      !is_null(child(type, syntax_.field.body)) && is_null(child(type, syntax_.field.name));
  bool first = true;
  for (const TSNode part : support::children(node, syntax_.field.declarator)) {
    const Declarator declarator = declarator_of(syntax_, part);
    if (is_null(declarator.name)) continue;
    std::string name = support::one_line(text_of(declarator.name, builder_.text()));
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

void Extractor::enter_call(TSNode node) {
  const TSNode function = child(node, syntax_.field.function);
  const std::int16_t count = call_arguments(syntax_, child(node, syntax_.field.arguments));
  TSNode called = function;
  while (syntax_.kind(called) == Node::PARENTHESIZED) called = ts_node_named_child(called, 0);
  switch (syntax_.kind(called)) {
    case Node::FIELD_EXPRESSION: {
      const QualifiedName name =
          qualified_name(syntax_, child(called, syntax_.field.field), builder_.text());
      builder_.refer(
          name.name,
          expression_text(syntax_, child(called, syntax_.field.argument), builder_.text()),
          Role::CALL, first_line(name.name_node), count);
      return;
    }
    case Node::IDENTIFIER:
    case Node::QUALIFIED:
    case Node::TEMPLATE_FUNCTION: {
      const QualifiedName name = qualified_name(syntax_, called, builder_.text());
      std::string receiver = name.scope;
      if (!receiver.empty() && receiver != "::") receiver += "::";
      if (name.name.ends_with("_cast")) return;
      Reference& made = builder_.refer(name.name, std::move(receiver), Role::CALL,
                                       first_line(name.name_node), count);
      if (!ts_node_eq(called, function)) made.traits |= MAYBE_CAST;
      return;
    }
    default:
      return;
  }
}

void Extractor::enter_new(TSNode node) {
  if (!is_null(child(node, syntax_.field.declarator))) return;  // an array of pointers
  construct({}, child(node, syntax_.field.type), child(node, syntax_.field.arguments));
}

void Extractor::enter_initializer(TSNode node) {
  const TSNode name = ts_node_named_child(node, 0);
  const QualifiedName written = qualified_name(syntax_, name, builder_.text());
  const TSNode arguments = ts_node_named_child(node, 1);
  builder_.refer(written.name, written.scope.empty() ? "" : written.scope + "::", Role::CONSTRUCT,
                 first_line(name), call_arguments(syntax_, arguments));
}

void Extractor::enter_using(TSNode node) {
  std::string_view written = support::trimmed(text_of(node, builder_.text()));
  while (written.ends_with(';')) written = support::trimmed(written.substr(0, written.size() - 1));
  Import made;
  made.scope = builder_.frame().definition;
  made.line = first_line(node);
  made.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
  const TSNode last = ts_node_named_child(node, ts_node_named_child_count(node) - 1);
  const std::string target = support::one_line(text_of(last, builder_.text()));
  if (syntax_.kind(node) == Node::NAMESPACE_ALIAS) {
    made.module = target;
    made.alias = support::one_line(text_of(child(node, syntax_.field.name), builder_.text()));
  } else if (has_keyword(node, last, builder_.text(), "namespace")) {
    made.module = target;
    made.name = "*";
  } else {
    const std::size_t colons = target.rfind("::");
    if (colons == std::string::npos) return;
    made.module = target.substr(0, colons);
    made.name = target.substr(colons + 2);
    made.alias = made.name;
  }
  builder_.facts().imports.push_back(std::move(made));
}

void Extractor::enter_include(TSNode node) {
  Import made;
  made.module = support::one_line(text_of(child(node, syntax_.field.path), builder_.text()));
  made.line = first_line(node);
  made.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
  builder_.facts().imports.push_back(std::move(made));
}

void Extractor::enter_type_name(TSNode node) {
  if (syntax_.kind(node) != Node::TYPE_IDENTIFIER) return;
  builder_.refer(text_of(node, builder_.text()), {}, Role::TYPE, first_line(node));
}

void Extractor::bind_local(TSNode part, std::string type, std::string value) {
  const Declarator declarator = declarator_of(syntax_, part);
  if (is_null(declarator.name)) return;
  if (syntax_.kind(declarator.name) == Node::STRUCTURED_BINDING) {
    for (const TSNode name : support::named_children(declarator.name)) bind_local(name, {}, "?");
    return;
  }
  Binding binding;
  binding.name = support::one_line(text_of(declarator.name, builder_.text()));
  binding.scope = builder_.frame().definition;
  binding.type = std::move(type);
  binding.value = std::move(value);
  binding.line = first_line(declarator.name);
  builder_.bind(std::move(binding));
}

void Extractor::bind_parameters(TSNode parameters) {
  for (Binding& binding :
       parameter_bindings(syntax_, parameters, builder_.text(), builder_.frame().definition)) {
    binding.kind = Binding::Kind::LOCAL;
    builder_.bind(std::move(binding));
  }
}

}  // namespace

Facts extract(const Syntax& syntax, TSNode root, std::string_view text) {
  Extractor extractor(syntax, text);
  support::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::c_family
