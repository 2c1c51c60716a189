#include <algorithm>
#include <utility>
#include <vector>

#include "indexer/languages/java/definitions.h"
#include "indexer/languages/java/extractor.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {

using kit::child;
using kit::first_line;
using kit::is_null;
using kit::text_of;

bool Extractor::enter_use(Node kind, TSNode node, std::uint32_t depth) {
  switch (kind) {
    case Node::CALL:
      enter_call(node);
      return true;
    case Node::OBJECT_CREATION:
      enter_creation(node);
      return true;
    case Node::EXPLICIT_CONSTRUCTOR:
      enter_explicit_constructor(node);
      return true;
    case Node::METHOD_REFERENCE:
      enter_method_reference(node);
      return true;
    case Node::BASES:
      builder_.open(depth).state |= IN_BASES;
      return true;
    case Node::TYPE_ARGUMENTS:
    case Node::TYPE_PARAMETERS:
      builder_.open(depth).state &= static_cast<std::uint16_t>(~IN_BASES);
      return true;
    case Node::ANNOTATION:
      refer_to_type(text_of(child(node, java_.field.name), builder_.text()), Role::TYPE,
                    first_line(node));
      return true;
    case Node::MODULE_TYPES:
      for (const TSNode each : kit::named_children(node)) {
        refer_to_type(text_of(each, builder_.text()), Role::TYPE, first_line(each));
      }
      return false;
    case Node::TYPE_PARAMETER:
      // Its name is no use of a type; its bounds are.
      constructed_ = child_of_kind(node, Node::TYPE_IDENTIFIER).id;
      return true;
    case Node::TYPE_IDENTIFIER:
    case Node::SCOPED_TYPE:
      enter_named_type(node);
      return kind == Node::SCOPED_TYPE ? false : true;
    default:
      return true;
  }
}

void Extractor::enter_import(TSNode node) {
  const std::string_view written = text_of(node, builder_.text());
  const TSNode path = first_child(node);
  std::string module = erased_text(text_of(path, builder_.text()));
  Import made;
  made.line = first_line(node);
  made.traits = builder_.frame().traits & BROKEN;
  const std::string_view after =
      kit::trimmed(written.substr(std::min<std::size_t>(6, written.size())));
  const bool is_static = after.starts_with("static") && after.size() > 6 &&
                         !kit::is_identifier_byte(after[6]) && after[6] != '.';
  if (is_static) made.traits |= STATIC_MEMBER;
  if (!is_null(child_of_kind(node, Node::ASTERISK))) {
    made.module = std::move(module);
    made.name = "*";
  } else {
    const std::size_t dot = module.rfind('.');
    if (dot == std::string::npos) return;
    made.name = module.substr(dot + 1);
    made.module = module.substr(0, dot);
    builder_.refer(made.name, made.module, Role::IMPORT, made.line).traits |=
        static_cast<std::uint16_t>(is_static ? STATIC_MEMBER : 0);
  }
  builder_.facts().imports.push_back(std::move(made));
}

void Extractor::enter_call(TSNode node) {
  const TSNode object = child(node, java_.field.object);
  const TSNode name = child(node, java_.field.name);
  const TSNode arguments = child(node, java_.field.arguments);
  std::string receiver;
  if (!is_null(object)) {
    receiver = expressions_.of(object);
    const bool outer_super =
        java_.kind(object) != Node::SUPER && !is_null(child_of_kind(node, Node::SUPER));
    if (outer_super) receiver += ".super";
  }
  Reference& made = builder_.refer(text_of(name, builder_.text()), std::move(receiver), Role::CALL,
                                   first_line(name), argument_count(arguments));
  made.values = expressions_.arguments(arguments);
  note_lambdas(arguments, made);
}

void Extractor::note_lambdas(TSNode arguments, const Reference& call) {
  if (call.values.find("->") == std::string::npos) return;
  std::size_t position = 0;
  for (const TSNode each : kit::named_children(arguments)) {
    const Node kind = java_.kind(each);
    if (kind == Node::COMMENT) continue;
    if (kind == Node::LAMBDA) {
      lambdas_[each.id] =
          std::to_string(position) + "\n" + call.name + "(" + call.values + ")" + call.receiver;
    }
    ++position;
  }
}

void Extractor::enter_creation(TSNode node) {
  const TSNode type = child(node, java_.field.type);
  const TSNode arguments = child(node, java_.field.arguments);
  const std::string written = erased_text(text_of(type, builder_.text()));
  const std::size_t dot = written.rfind('.');
  const bool dotted = dot != std::string::npos;
  const std::string name = dotted ? written.substr(dot + 1) : written;
  const TSNode outer = first_child(node);
  std::string receiver = dotted ? written.substr(0, dot) : "";
  // `outer.new Inner()`: the class is looked for in the type of the expression.
  const bool qualified = !is_null(outer) && outer.id != type.id &&
                         java_.kind(outer) != Node::ANNOTATION &&
                         java_.kind(outer) != Node::TYPE_ARGUMENTS;
  if (qualified) receiver = expressions_.of(outer) + ".new";
  const TSNode body = child_of_kind(node, Node::CLASS_BODY);
  Reference& made = builder_.refer(name, std::move(receiver), Role::CONSTRUCT, first_line(type),
                                   argument_count(arguments));
  made.values = expressions_.arguments(arguments);
  if (!is_null(body)) made.traits |= DECLARATION;
  constructed_ = java_.kind(type) == Node::GENERIC_TYPE ? first_child(type).id : type.id;
  if (!is_null(body)) creations_[body.id] = {node, "<anonymous " + name + ">", written};
}

void Extractor::enter_explicit_constructor(TSNode node) {
  const TSNode which = child(node, java_.field.constructor);
  const TSNode arguments = child(node, java_.field.arguments);
  builder_
      .refer(text_of(which, builder_.text()), {}, Role::CONSTRUCT, first_line(which),
             argument_count(arguments))
      .values = expressions_.arguments(arguments);
}

void Extractor::enter_method_reference(TSNode node) {
  const std::uint32_t count = ts_node_child_count(node);
  const TSNode target = first_child(node);
  if (count < 3 || is_null(target)) return;
  const TSNode last = ts_node_child(node, count - 1);
  const Node kind = java_.kind(target);
  const bool is_type =
      kind == Node::GENERIC_TYPE || kind == Node::TYPE_IDENTIFIER || kind == Node::SCOPED_TYPE;
  if (kind == Node::ARRAY_TYPE || kind == Node::PRIMITIVE_TYPE) return;
  std::string receiver =
      is_type ? erased_text(text_of(target, builder_.text())) : expressions_.of(target);
  if (java_.kind(last) == Node::IDENTIFIER) {
    builder_
        .refer(text_of(last, builder_.text()), std::move(receiver), Role::CALL, first_line(last))
        .values = "::";
    return;
  }
  if (text_of(last, builder_.text()) != "new") return;
  const std::size_t dot = receiver.rfind('.');
  const bool dotted = dot != std::string::npos;
  const std::string name = dotted ? receiver.substr(dot + 1) : receiver;
  if (!kit::is_identifier(name)) return;
  builder_.refer(name, dotted ? receiver.substr(0, dot) : "", Role::CONSTRUCT, first_line(last))
      .values = "::";
}

void Extractor::enter_named_type(TSNode node) {
  if (node.id == constructed_) return;
  const bool in_bases = (builder_.frame().state & IN_BASES) != 0;
  refer_to_type(text_of(node, builder_.text()), in_bases ? Role::INHERIT : Role::TYPE,
                first_line(node));
}

void Extractor::refer_to_type(std::string_view written, Role role, std::int32_t line) {
  const std::string name = erased_text(written);
  const std::size_t dot = name.rfind('.');
  if (name.empty() || name == "var") return;
  if (dot == std::string::npos) {
    builder_.refer(name, {}, role, line);
  } else {
    builder_.refer(std::string_view(name).substr(dot + 1), name.substr(0, dot), role, line);
  }
}

}  // namespace context_delta::indexer::java
