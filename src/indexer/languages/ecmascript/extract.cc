#include "indexer/languages/ecmascript/extract.h"

#include "indexer/languages/ecmascript/extractor.h"
#include "indexer/languages/ecmascript/parameters.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {

using kit::child;
using kit::first_line;
using kit::is_null;

Facts extract(const Syntax& syntax, TSNode root, std::string_view text) {
  Extractor extractor(syntax, text);
  kit::walk(root, extractor);
  return extractor.finish();
}

std::string Extractor::text_of(TSNode node) const {
  return kit::one_line(kit::text_of(node, builder_.text()), kit::LONGEST_EXPRESSION);
}

std::string Extractor::value_of(TSNode node) {
  return is_null(node) ? std::string() : expression_text(syntax_, node, builder_.text(), *this);
}

Context& Extractor::open(std::uint32_t depth) {
  builder_.open(depth);
  Context made = contexts_.back();
  made.depth = depth + 1;
  contexts_.push_back(std::move(made));
  return contexts_.back();
}

void Extractor::leave(std::uint32_t depth) {
  builder_.close(depth);
  while (contexts_.size() > 1 && contexts_.back().depth == depth + 1) contexts_.pop_back();
}

void Extractor::open_block(std::uint32_t depth) {
  const std::int32_t outer = context().lexical;
  open(depth).lexical = scopes_.open(outer, builder_.frame().definition, false, false);
}

bool Extractor::enter(TSNode node, std::uint32_t depth) {
  switch (syntax_.kind(node)) {
    case Node::OTHER:
    case Node::IDENTIFIER:
    case Node::PROPERTY_NAME:
      return true;
    case Node::ERROR:
      open(depth);
      builder_.frame().traits |= BROKEN;
      return true;
    case Node::COMMENT:
      enter_comment(node);
      return false;
    case Node::BRANCH:
      open(depth);
      builder_.frame().traits |= CONDITIONAL;
      return true;
    case Node::BLOCK:
      if (!bodies_.contains(node.id)) open_block(depth);
      return true;
    case Node::STATIC_BLOCK: {
      open_anonymous(node, depth);
      context().this_text = "this";
      return true;
    }
    case Node::CATCH:
      open_block(depth);
      bind_pattern(child(node, syntax_.field.parameter), {}, "?", Binding::Kind::LOCAL,
                   context().lexical);
      return true;
    case Node::FOR:
      open_block(depth);
      return true;
    case Node::FOR_IN: {
      open_block(depth);
      const bool declares = has_keyword(node, "const") || has_keyword(node, "let") ||
                            has_keyword(node, "var") || !is_null(child(node, syntax_.field.kind));
      const TSNode left = child(node, syntax_.field.left);
      if (!declares) {
        reassign(left);
        return true;
      }
      const bool keys = has_keyword(node, "in");
      bind_pattern(left, {}, keys ? "~String" : value_of(child(node, syntax_.field.right)) + "[]",
                   Binding::Kind::LOCAL, context().lexical);
      return true;
    }
    default:
      return enter_declaration(node, depth);
  }
}

bool Extractor::enter_declaration(TSNode node, std::uint32_t depth) {
  switch (syntax_.kind(node)) {
    case Node::IMPORT:
      enter_import(node);
      return false;
    case Node::IMPORT_ALIAS:
      bind_pattern(first_child(syntax_, node), {},
                   value_of(ts_node_named_child(node, ts_node_named_child_count(node) - 1)),
                   Binding::Kind::LOCAL, context().lexical);
      return false;
    case Node::CLASS_BODY:
      open(depth).decorators_depth = depth + 1;
      return true;
    case Node::EXPORT:
      open(depth).decorators_depth = depth + 1;
      return enter_export(node);
    case Node::LEXICAL:
    case Node::VARIABLE_DECLARATION: {
      Context& made = open(depth);
      made.hoisted = syntax_.kind(node) == Node::VARIABLE_DECLARATION;
      made.statement_line = first_line(node);
      return true;
    }
    case Node::VARIABLE_DECLARATOR:
      enter_declarator(node);
      return true;
    case Node::FUNCTION_DECLARATION:
    case Node::FUNCTION_SIGNATURE:
    case Node::FUNCTION_EXPRESSION:
    case Node::ARROW_FUNCTION:
      return enter_function(node, depth);
    case Node::CLASS_DECLARATION:
    case Node::CLASS_EXPRESSION:
      return enter_class(node, depth);
    case Node::METHOD:
      return enter_method(node, depth);
    case Node::METHOD_SIGNATURE:
    case Node::PROPERTY_SIGNATURE:
      return enter_signature(node, depth);
    case Node::FIELD:
      return enter_field(node, depth);
    case Node::INTERFACE:
      return enter_named_type(node, depth, Kind::INTERFACE);
    case Node::ENUM:
      return enter_named_type(node, depth, Kind::ENUM);
    case Node::TYPE_ALIAS:
      return enter_named_type(node, depth, Kind::TYPE);
    case Node::NAMESPACE:
      enter_namespace(node, depth);
      return true;
    default:
      return enter_expression(node, depth);
  }
}

bool Extractor::enter_expression(TSNode node, std::uint32_t depth) {
  switch (syntax_.kind(node)) {
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::NEW:
      enter_new(node);
      return true;
    case Node::JSX_OPENING:
      enter_tag(node);
      return true;
    case Node::DECORATOR:
      enter_decorator(node, depth);
      return true;
    case Node::RETURN:
      enter_return(node);
      return true;
    case Node::EXPRESSION_STATEMENT:
      open(depth).statement_line = first_line(node);
      return true;
    case Node::ASSIGNMENT:
      enter_assignment(node);
      return true;
    case Node::AUGMENTED_ASSIGNMENT:
      reassign(child(node, syntax_.field.left));
      return true;
    case Node::OBJECT:
      enter_object(node, depth);
      return true;
    case Node::PAIR:
    case Node::SHORTHAND:
      return enter_object_member(node);
    default:
      return enter_type(node, depth);
  }
}

bool Extractor::enter_type(TSNode node, std::uint32_t depth) {
  switch (syntax_.kind(node)) {
    case Node::OBJECT_TYPE:
      open(depth).type_members = type_bodies_.contains(node.id);
      return true;
    case Node::TYPE_NAME:
      if (node.id != name_) {
        builder_.refer(text_of(node), {}, Role::TYPE, first_line(node));
      }
      return false;
    case Node::NESTED_TYPE: {
      const TSNode name = child(node, syntax_.field.name);
      builder_.refer(text_of(name), value_of(child(node, syntax_.field.module)), Role::TYPE,
                     first_line(name));
      return false;
    }
    case Node::TYPE_PARAMETER:
      name_ = child(node, syntax_.field.name).id;
      return true;
    default:
      return true;
  }
}

void Extractor::refer_to(TSNode callee, Role role, std::int16_t arguments) {
  callee = unwrapped(syntax_, callee);
  if (syntax_.kind(callee) == Node::SEQUENCE) {
    callee = ts_node_named_child(callee, ts_node_named_child_count(callee) - 1);
  }
  const Node kind = syntax_.kind(callee);
  if (kind == Node::IDENTIFIER) {
    builder_.refer(kit::text_of(callee, builder_.text()), {}, role, first_line(callee), arguments);
  } else if (kind == Node::MEMBER) {
    const TSNode name = child(callee, syntax_.field.property);
    builder_.refer(kit::text_of(name, builder_.text()),
                   value_of(child(callee, syntax_.field.object)), role, first_line(name),
                   arguments);
  } else {
    return;
  }
  reference_scopes_.resize(builder_.facts().references.size(), 0);
  reference_scopes_.back() = context().lexical;
}

void Extractor::enter_call(TSNode node) {
  const TSNode callee = child(node, syntax_.field.function);
  if (!loaded_module(syntax_, node, builder_.text()).empty()) {
    const std::string module(loaded_module(syntax_, node, builder_.text()));
    module_text(module, node);
    return;
  }
  const std::int16_t arguments =
      count_arguments(syntax_, child(node, syntax_.field.arguments), builder_.text());
  if (syntax_.kind(callee) == Node::SUPER) {
    // Names the base class.
    for (DefinitionIndex i = builder_.frame().definition; i != NOWHERE;
         i = builder_.definition(i).parent) {
      const Definition& around = builder_.definition(i);
      if (!kit::is_class_kind(around.kind)) continue;
      if (around.bases.empty() || around.bases.front().starts_with(IMPLEMENTED)) return;
      const std::string base = around.bases.front();
      const std::size_t dot = base.rfind('.');
      const bool dotted = dot != std::string::npos;
      builder_.refer(dotted ? base.substr(dot + 1) : base,
                     dotted ? base.substr(0, dot) : std::string(), Role::CONSTRUCT,
                     first_line(callee), arguments);
      return;
    }
    return;
  }
  refer_to(callee, Role::CALL, arguments);
  hint_elements(node, unwrapped(syntax_, callee));
}

/// The first parameter of a callback that is given to a method of arrays or promises.
void Extractor::hint_elements(TSNode call, TSNode callee) {
  if (syntax_.kind(callee) != Node::MEMBER) return;
  const TSNode callback = first_child(syntax_, child(call, syntax_.field.arguments));
  if (!is_function_value(syntax_.kind(callback))) return;
  const std::string_view method =
      kit::text_of(child(callee, syntax_.field.property), builder_.text());
  const bool over_elements = is_element_method(method);
  if (!over_elements && method != "then") return;
  hints_[callback.id] = value_of(child(callee, syntax_.field.object)) + (over_elements ? "[]" : "");
}

void Extractor::enter_new(TSNode node) {
  const TSNode arguments = child(node, syntax_.field.arguments);
  refer_to(
      child(node, syntax_.field.constructor), Role::CONSTRUCT,
      is_null(arguments) ? std::int16_t{0} : count_arguments(syntax_, arguments, builder_.text()));
}

void Extractor::enter_tag(TSNode node) {
  const TSNode name = child(node, syntax_.field.name);
  const std::string_view written = kit::text_of(name, builder_.text());
  const bool is_element = syntax_.kind(name) == Node::IDENTIFIER && !written.empty() &&
                          written.front() >= 'a' && written.front() <= 'z';
  if (!is_element) refer_to(name, Role::CALL, ANY_NUMBER);
}

void Extractor::enter_decorator(TSNode node, std::uint32_t depth) {
  const TSNode expression = first_child(syntax_, node);
  // A decorator inside the node of what it decorates needs no note.
  if (context().decorators_depth == depth && decorated_line_ == 0) {
    decorated_line_ = first_line(node);
  }
  if (syntax_.kind(expression) != Node::CALL) refer_to(expression, Role::DECORATE, ANY_NUMBER);
}

void Extractor::enter_return(TSNode node) {
  const TSNode value = first_child(syntax_, node);
  const std::int32_t scope = scopes_.function_scope(context().lexical);
  const DefinitionIndex function = builder_.frame().definition;
  // What a function without a definition returns is not the result of the one around it.
  if (is_null(value) || function == NOWHERE || !scopes_.is_own(scope)) return;
  if (!kit::is_function_kind(builder_.definition(function).kind)) return;
  expect_result(value);
  results_.push_back({function, value_of(value), context().lexical});
}

/// A function that is returned has the type that the function around it declares as its result.
void Extractor::expect_result(TSNode value) {
  const TSNode inner = unwrapped(syntax_, value);
  const std::string& type = builder_.definition(builder_.frame().definition).type;
  if (is_function_value(syntax_.kind(inner)) && !type.empty()) expected_[inner.id] = type;
}

void Extractor::enter_comment(TSNode node) {
  comment_ = node;
  const std::string_view text = kit::text_of(node, builder_.text());
  if (text.find("@typedef") == std::string_view::npos) return;
  for (const auto& [name, type] : read_documentation(text).types) {
    Binding binding;
    binding.name = std::string(TYPE_NAMED) + name;
    binding.kind = Binding::Kind::GLOBAL;
    binding.type = type;
    binding.line = first_line(node);
    bind(std::move(binding), 0);
  }
}

}  // namespace context_delta::indexer::ecmascript
