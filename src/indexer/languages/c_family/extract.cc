#include "indexer/languages/c_family/extract.h"

#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/c_family/extractor.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {

using kit::child;
using kit::first_line;
using kit::is_null;
using kit::text_of;

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
    case Node::LITERAL:
      return false;
    default:
      return enter_definition(node, kind, depth);
  }
}

bool Extractor::enter_definition(TSNode node, Node kind, std::uint32_t depth) {
  switch (kind) {
    case Node::TEMPLATE: {
      kit::Frame& frame = builder_.open(depth);
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
        const std::int16_t count = kit::argument_count(kit::named_children(parameters).size());
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

void Extractor::construct(const Declarator& declarator, TSNode type, TSNode arguments) {
  const Node kind = syntax_.kind(type);
  if (kind != Node::TYPE_IDENTIFIER && kind != Node::QUALIFIED && kind != Node::TEMPLATE_TYPE) {
    return;
  }
  const QualifiedName name = qualified_name(syntax_, type, builder_.text());
  std::string receiver = name.scope;
  if (!receiver.empty() && receiver != "::") receiver += "::";
  const TSNode place = is_null(declarator.name) ? name.name_node : type;
  Reference& made =
      builder_.refer(name.name, std::move(receiver), Role::CONSTRUCT, first_line(place),
                     call_arguments(syntax_, arguments, builder_.text()));
  if (!is_null(declarator.name) && is_null(arguments)) made.traits |= DECLARATION;
}

void Extractor::enter_call(TSNode node) {
  const TSNode function = child(node, syntax_.field.function);
  const std::int16_t count =
      call_arguments(syntax_, child(node, syntax_.field.arguments), builder_.text());
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
                 first_line(name), call_arguments(syntax_, arguments, builder_.text()));
}

void Extractor::enter_using(TSNode node) {
  std::string_view written = kit::trimmed(text_of(node, builder_.text()));
  while (written.ends_with(';')) written = kit::trimmed(written.substr(0, written.size() - 1));
  Import made;
  made.scope = builder_.frame().definition;
  made.line = first_line(node);
  made.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
  const TSNode last = ts_node_named_child(node, ts_node_named_child_count(node) - 1);
  const std::string target = kit::one_line(text_of(last, builder_.text()));
  if (syntax_.kind(node) == Node::NAMESPACE_ALIAS) {
    made.module = target;
    made.alias = kit::one_line(text_of(child(node, syntax_.field.name), builder_.text()));
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
  made.module = kit::one_line(text_of(child(node, syntax_.field.path), builder_.text()));
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
    for (const TSNode name : kit::named_children(declarator.name)) bind_local(name, {}, "?");
    return;
  }
  Binding binding;
  binding.name = kit::one_line(text_of(declarator.name, builder_.text()));
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

Facts extract(const Syntax& syntax, TSNode root, std::string_view text) {
  Extractor extractor(syntax, text);
  kit::walk(root, extractor);
  return extractor.finish();
}

}  // namespace context_delta::indexer::c_family
