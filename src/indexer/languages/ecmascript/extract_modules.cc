#include "indexer/languages/ecmascript/extractor.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {

using kit::child;
using kit::first_line;
using kit::is_null;

/// A module that an expression loads, as a name that no declaration can have.
std::string Extractor::module_text(std::string_view specifier, TSNode call) {
  const auto known = modules_.find(call.id);
  if (known != modules_.end()) return known->second;
  const std::string made = "'m" + std::to_string(modules_.size());
  modules_[call.id] = made;
  Import import;
  import.module = kit::one_line(specifier, kit::LONGEST_EXPRESSION);
  import.alias = made;
  import.line = first_line(call);
  builder_.facts().imports.push_back(std::move(import));
  return made;
}

void Extractor::add_import(std::string_view module, std::string name, TSNode alias, TSNode node) {
  const std::int32_t lexical =
      context().hoisted ? scopes_.function_scope(context().lexical) : context().lexical;
  Import made;
  made.module = kit::one_line(module, kit::LONGEST_EXPRESSION);
  made.name = std::move(name);
  const std::string local = text_of(alias);
  made.alias = scopes_.spelled(lexical, local);
  made.scope = scopes_.definition(lexical);
  made.line = first_line(node);
  made.traits = builder_.frame().traits & BROKEN;
  Declaration& declaration = scopes_.declare(lexical, local);
  declaration.more = declaration.binding >= 0 || declaration.definition != NOWHERE;
  if (!made.name.empty()) {
    builder_.refer(made.name, made.module, Role::IMPORT, made.line);
  }
  builder_.facts().imports.push_back(std::move(made));
}

void Extractor::enter_import(TSNode node) {
  const TSNode source = child(node, syntax_.field.source);
  const std::string_view module = string_content(source, builder_.text());
  for (const TSNode clause : kit::named_children(node)) {
    if (syntax_.kind(clause) == Node::IMPORT_REQUIRE) {
      const TSNode required = child(clause, syntax_.field.source);
      const TSNode name = first_child(syntax_, clause);
      add_import(string_content(required, builder_.text()), {}, name, name);
    }
    if (syntax_.kind(clause) != Node::IMPORT_CLAUSE) continue;
    for (const TSNode part : kit::named_children(clause)) {
      const Node kind = syntax_.kind(part);
      if (kind == Node::IDENTIFIER) add_import(module, "default", part, part);
      if (kind == Node::NAMESPACE_IMPORT) {
        add_import(module, {}, first_child(syntax_, part), part);
      }
      if (kind != Node::NAMED_IMPORTS) continue;
      for (const TSNode each : kit::named_children(part)) {
        if (syntax_.kind(each) != Node::IMPORT_SPECIFIER) continue;
        const TSNode name = child(each, syntax_.field.name);
        const TSNode alias = child(each, syntax_.field.alias);
        add_import(module, property_name(name), is_null(alias) ? name : alias, each);
      }
    }
  }
}

void Extractor::bind_export(std::string_view name, std::string value, TSNode node,
                            std::string type) {
  Binding binding;
  binding.name = std::string(EXPORTED) + std::string(name);
  binding.kind = Binding::Kind::GLOBAL;
  const DefinitionIndex around = builder_.frame().definition;
  const bool in_namespace =
      around != NOWHERE && builder_.definition(around).kind == Kind::NAMESPACE;
  binding.scope = in_namespace ? around : NOWHERE;
  binding.type = std::move(type);
  binding.value = std::move(value);
  binding.line = first_line(node);
  binding.traits = builder_.frame().traits & (CONDITIONAL | BROKEN);
  bind(std::move(binding), context().lexical);
}

Import& Extractor::add_export_from(std::string_view module, std::string name,
                                   std::string_view exported, TSNode node) {
  Import made;
  made.module = kit::one_line(module, kit::LONGEST_EXPRESSION);
  made.name = std::move(name);
  made.alias = std::string(EXPORTED) + std::string(exported);
  made.line = first_line(node);
  builder_.facts().imports.push_back(std::move(made));
  return builder_.facts().imports.back();
}

void Extractor::enter_export_clause(TSNode clause, TSNode source) {
  const std::string_view module = string_content(source, builder_.text());
  for (const TSNode each : kit::named_children(clause)) {
    const TSNode name = child(each, syntax_.field.name);
    if (is_null(name)) continue;
    const TSNode alias = child(each, syntax_.field.alias);
    const std::string exported = property_name(is_null(alias) ? name : alias);
    if (is_null(source)) {
      bind_export(exported, text_of(name), each);
    } else {
      add_export_from(module, property_name(name), exported, each);
      builder_.refer(property_name(name), std::string(module), Role::IMPORT, first_line(each));
    }
  }
}

/// The names that a declaration after `export` declares.
void Extractor::export_declaration(TSNode declaration, bool is_default) {
  if (syntax_.kind(declaration) == Node::AMBIENT) declaration = first_child(syntax_, declaration);
  const Node kind = syntax_.kind(declaration);
  if (kind != Node::LEXICAL && kind != Node::VARIABLE_DECLARATION) {
    const std::string name = text_of(child(declaration, syntax_.field.name));
    if (!name.empty()) bind_export(is_default ? "default" : name, name, declaration);
    return;
  }
  for (const TSNode declarator : kit::named_children(declaration)) {
    std::vector<TSNode> pending = {child(declarator, syntax_.field.name)};
    while (!pending.empty()) {
      const TSNode node = pending.back();
      pending.pop_back();
      const Node part = syntax_.kind(node);
      if (part == Node::IDENTIFIER || part == Node::SHORTHAND_PATTERN) {
        bind_export(text_of(node), text_of(node), node);
      } else if (part == Node::PAIR_PATTERN) {
        pending.push_back(child(node, syntax_.field.value));
      } else if (part == Node::OBJECT_PATTERN || part == Node::ARRAY_PATTERN) {
        for (const TSNode below : kit::named_children(node)) pending.push_back(below);
      }
    }
  }
}

bool Extractor::enter_export(TSNode node) {
  const TSNode source = child(node, syntax_.field.source);
  bool all = !is_null(source);
  for (const TSNode part : kit::named_children(node)) {
    const Node kind = syntax_.kind(part);
    if (kind == Node::EXPORT_CLAUSE) enter_export_clause(part, source);
    if (kind == Node::NAMESPACE_EXPORT) {
      add_export_from(string_content(source, builder_.text()), {},
                      property_name(first_child(syntax_, part)), part);
    }
    all = all && kind != Node::EXPORT_CLAUSE && kind != Node::NAMESPACE_EXPORT;
  }
  if (all) add_export_from(string_content(source, builder_.text()), "*", "*", node);
  if (!is_null(source)) return false;
  const bool is_default = has_keyword(node, "default");
  const TSNode declaration = child(node, syntax_.field.declaration);
  if (!is_null(declaration)) {
    export_declaration(declaration, is_default);
    return true;
  }
  TSNode value = child(node, syntax_.field.value);
  if (is_null(value) && has_keyword(node, "=")) value = first_child(syntax_, node);
  if (is_null(value)) return true;
  const TSNode inner = unwrapped(syntax_, value);
  const Node kind = syntax_.kind(inner);
  const TSNode own_name = child(inner, syntax_.field.name);
  if (is_function_value(kind)) {
    const bool named = kind == Node::FUNCTION_EXPRESSION && !is_null(own_name);
    define_function(inner, named ? own_name : inner, named ? text_of(own_name) : "default",
                    Kind::FUNCTION);
  } else if (kind == Node::CLASS_EXPRESSION) {
    const bool named = !is_null(own_name);
    defined_[inner.id] = builder_.define(definition_of(
        inner, named ? own_name : inner, named ? text_of(own_name) : "default", Kind::CLASS));
  }
  bind_export(has_keyword(node, "=") ? "=" : "default", value_of(value), node);
  return true;
}

}  // namespace context_delta::indexer::ecmascript
