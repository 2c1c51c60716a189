#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/definitions.h"
#include "indexer/languages/rust/extractor.h"
#include "indexer/languages/rust/modules.h"

namespace context_delta::indexer::rust {
namespace {

using kit::child;
using kit::first_line;

/// The text between the quotes of a string literal inside `text`.
std::string_view quoted(std::string_view text) {
  const std::size_t start = text.find('"');
  const std::size_t end = text.rfind('"');
  if (start == std::string_view::npos || end <= start) return {};
  return text.substr(start + 1, end - start - 1);
}

std::string joined(const std::string& prefix, std::string_view path) {
  if (prefix.empty() || path.empty()) return prefix + std::string(path);
  return prefix + "::" + std::string(path);
}

}  // namespace

bool Extractor::enter_item(TSNode node, Node kind, std::uint32_t depth,
                           const Attributes& attributes) {
  const bool wrapped = is_wrapped(node);
  if (attributes.line != 0 || attributes.is_conditional || wrapped) {
    kit::Frame& frame = builder_.open(depth);
    frame.start = attributes.line;
    if (attributes.is_conditional || wrapped) frame.traits |= CONDITIONAL;
    if (wrapped) frame.traits |= FROM_MACRO;
  }
  switch (kind) {
    case Node::FUNCTION:
    case Node::FUNCTION_SIGNATURE:
      define_function(node, depth);
      return true;
    case Node::STRUCT:
      define_type(node, Kind::STRUCT, depth);
      return true;
    case Node::UNION:
      define_type(node, Kind::UNION, depth);
      return true;
    case Node::ENUM:
      define_type(node, Kind::ENUM, depth);
      return true;
    case Node::TRAIT:
      define_type(node, Kind::TRAIT, depth);
      return true;
    case Node::IMPL:
      define_impl(node, depth);
      return true;
    case Node::MOD:
      define_mod(node, depth, attributes);
      return true;
    case Node::CONST:
    case Node::STATIC:
      define_value(node);
      return true;
    case Node::TYPE_ITEM:
    case Node::ASSOCIATED_TYPE:
      define_alias(node);
      return true;
    case Node::MACRO_DEFINITION:
      define_macro(node);
      return false;
    case Node::ENUM_VARIANT:
      add_variant(node);
      return true;
    case Node::USE:
      add_use(node);
      return false;
    default: {  // extern crate
      const std::string name = kit::one_line(text_of(child(node, rust_.field.name)));
      const std::string_view alias = text_of(child(node, rust_.field.alias));
      const bool own = name == "self";
      add_import(own ? "" : "::", own ? "crate" : name, std::string(alias.empty() ? name : alias),
                 node, is_private(node) ? LOCAL_LINKAGE : 0);
      return false;
    }
  }
}

/// Whether an item stands in a macro that prepare() took away.
bool Extractor::is_wrapped(TSNode node) const {
  const std::size_t start = ts_node_start_byte(node);
  const auto after = std::upper_bound(
      wrapped_.begin(), wrapped_.end(), start,
      [](std::size_t byte, const WrappedItems& each) { return byte < each.start; });
  return after != wrapped_.begin() && start < (after - 1)->end;
}

void Extractor::read_attribute(TSNode node, std::uint32_t depth) {
  if (attributes_.depth != depth) attributes_ = {.depth = depth, .path = {}};
  if (attributes_.line == 0) attributes_.line = first_line(node);
  attributes_.last_line = kit::last_line(node);
  const TSNode attribute = ts_node_named_child(node, 0);
  if (kit::is_null(attribute)) return;
  const std::string_view name = text_of(ts_node_named_child(attribute, 0));
  if (name == "cfg") attributes_.is_conditional = true;
  if (name == "path") attributes_.path = quoted(text_of(attribute));
}

/// Definitions start behind the comments about them.
void Extractor::pass_comment(TSNode comment, std::uint32_t depth) {
  if (attributes_.depth != depth || first_line(comment) == attributes_.last_line) return;
  attributes_.line = 0;
}

/// Attributes belong to the next node beside them, comments aside.
Attributes Extractor::take_attributes(std::uint32_t depth) {
  if (attributes_.depth < depth) return {};
  Attributes taken = attributes_.depth == depth ? std::move(attributes_) : Attributes{};
  attributes_ = {};
  return taken;
}

DefinitionIndex Extractor::open_definition(Definition made, std::uint32_t depth) {
  const DefinitionIndex index = builder_.define(std::move(made));
  kit::Frame& frame = builder_.open(depth);
  frame.definition = index;
  frame.traits &= static_cast<std::uint16_t>(~CONDITIONAL);
  frame.start = 0;
  return index;
}

void Extractor::define_function(TSNode node, std::uint32_t depth) {
  const DefinitionIndex outer = builder_.frame().definition;
  const bool is_member = outer != NOWHERE && (builder_.definition(outer).kind == Kind::TRAIT ||
                                              (builder_.definition(outer).kind == Kind::NAMESPACE &&
                                               !builder_.definition(outer).type.empty()));
  Definition made =
      item_definition(node, builder_.text(), is_member ? Kind::METHOD : Kind::FUNCTION);
  read_signature(made, node, builder_.text());
  const bool in_trait = is_member && builder_.definition(outer).kind == Kind::TRAIT;
  if (rust_.kind(node) == Node::FUNCTION_SIGNATURE) made.traits |= DECLARATION;
  if (in_trait) made.traits |= VIRTUAL;
  // What traits ask for is as visible as they are.
  const bool of_trait = in_trait || (is_member && !builder_.definition(outer).bases.empty());
  if (of_trait) made.traits &= static_cast<std::uint16_t>(~LOCAL_LINKAGE);
  const DefinitionIndex index = open_definition(std::move(made), depth);
  for (Binding& each : generic_parameters(node, builder_.text(), index)) {
    builder_.bind(std::move(each));
  }
  locals_.open(depth, true);
  for (const TSNode each : kit::named_children(child(node, rust_.field.parameters))) {
    if (rust_.kind(each) != Node::PARAMETER) continue;
    bind_pattern(child(each, rust_.field.pattern), {},
                 kit::one_line(text_of(child(each, rust_.field.type))), Binding::Kind::PARAMETER);
  }
}

void Extractor::define_type(TSNode node, Kind kind, std::uint32_t depth) {
  Definition made = item_definition(node, builder_.text(), kind);
  if (kind == Kind::TRAIT) {
    for (const TSNode bound : kit::named_children(child(node, rust_.field.bounds))) {
      if (rust_.kind(bound) != Node::LIFETIME) {
        made.bases.push_back(kit::one_line(text_of(bound)));
      }
    }
  }
  const DefinitionIndex index = open_definition(std::move(made), depth);
  for (Binding& each : generic_parameters(node, builder_.text(), index)) {
    builder_.bind(std::move(each));
  }
  if (kind == Kind::STRUCT || kind == Kind::UNION) add_fields(child(node, rust_.field.body));
}

void Extractor::define_impl(TSNode node, std::uint32_t depth) {
  Definition made = item_definition(node, builder_.text(), Kind::NAMESPACE);
  const TSNode type = child(node, rust_.field.type);
  made.type = kit::one_line(text_of(type));
  // As such types are named among the types of other crates.
  made.name = made.type.starts_with('[') ? "[]" : last_name(made.type);
  if (made.name.empty()) made.name = kit::one_line(made.type, kit::LONGEST_EXPRESSION);
  if (made.type.empty()) made.type = "?";
  made.traits &= static_cast<std::uint16_t>(~LOCAL_LINKAGE);
  const TSNode trait = child(node, rust_.field.trait);
  if (!kit::is_null(trait)) made.bases.push_back(kit::one_line(text_of(trait)));
  const DefinitionIndex index = open_definition(std::move(made), depth);
  for (Binding& each : generic_parameters(node, builder_.text(), index)) {
    builder_.bind(std::move(each));
  }
}

/// `mod x;` is an import of `mod`, or two of `mod PATH` with a path attribute.
void Extractor::define_mod(TSNode node, std::uint32_t depth, const Attributes& attributes) {
  if (!kit::is_null(child(node, rust_.field.body))) {
    open_definition(item_definition(node, builder_.text(), Kind::NAMESPACE), depth);
    return;
  }
  const std::string module = attributes.path.empty() ? "mod" : "mod " + attributes.path;
  const std::uint16_t traits = is_private(node) ? LOCAL_LINKAGE : 0;
  add_import(module, {}, kit::one_line(text_of(child(node, rust_.field.name))), node, traits);
  // Who looks for the declaration of a file does not know its name.
  if (!attributes.path.empty()) {
    add_import(module, {}, std::string(DECLARED_BY_PATH), node, traits);
  }
}

void Extractor::define_value(TSNode node) {
  const std::string_view name = text_of(child(node, rust_.field.name));
  std::string type = kit::one_line(text_of(child(node, rust_.field.type)));
  if (name == "_") return;
  if (builder_.in_function()) {
    bind_variable(name, {}, std::move(type), Binding::Kind::LOCAL, first_line(node));
    return;
  }
  const DefinitionIndex outer = builder_.frame().definition;
  const bool in_module = outer == NOWHERE || (builder_.definition(outer).kind == Kind::NAMESPACE &&
                                              builder_.definition(outer).type.empty());
  if (!in_module) return add_member(node, std::move(type), "const");
  Definition made = item_definition(node, builder_.text(), Kind::VARIABLE);
  made.type = std::move(type);
  builder_.define(std::move(made));
}

void Extractor::define_alias(TSNode node) {
  const DefinitionIndex outer = builder_.frame().definition;
  const Kind scope = outer == NOWHERE ? Kind::NAMESPACE : builder_.definition(outer).kind;
  const bool in_impl =
      outer != NOWHERE && scope == Kind::NAMESPACE && !builder_.definition(outer).type.empty();
  if (scope == Kind::TRAIT) {
    return add_member(node, bounds_text(child(node, rust_.field.bounds), builder_.text()),
                      "bounds");
  }
  std::string type = kit::one_line(text_of(child(node, rust_.field.type)));
  if (in_impl) return add_member(node, std::move(type), "type");
  Definition made = item_definition(node, builder_.text(), Kind::TYPE);
  made.type = std::move(type);
  const DefinitionIndex index = builder_.define(std::move(made));
  for (Binding& each : generic_parameters(node, builder_.text(), index)) {
    builder_.bind(std::move(each));
  }
}

void Extractor::define_macro(TSNode node) {
  Definition made = item_definition(node, builder_.text(), Kind::MACRO);
  made.signature = "macro_rules! " + made.name;
  made.traits &= static_cast<std::uint16_t>(~LOCAL_LINKAGE);
  builder_.define(std::move(made));
}

void Extractor::add_member(TSNode node, std::string type, std::string_view value) {
  Binding made;
  made.name = kit::one_line(text_of(child(node, rust_.field.name)), kit::LONGEST_EXPRESSION);
  made.kind = Binding::Kind::MEMBER;
  made.scope = builder_.frame().definition;
  made.type = std::move(type);
  made.value = value;
  made.line = first_line(node);
  builder_.bind(std::move(made));
}

/// The type of a variant is that of what it holds: `(A, B)`, `{a: A}`, or nothing.
void Extractor::add_variant(TSNode node) {
  const TSNode body = child(node, rust_.field.body);
  std::string type;
  if (rust_.kind(body) == Node::ORDERED_FIELDS) {
    for (const TSNode each : kit::children(body, rust_.field.type)) {
      type += (type.empty() ? "(" : ", ") + kit::one_line(text_of(each));
    }
    type += type.empty() ? "" : ",)";
  } else {
    for (const TSNode each : kit::named_children(body)) {
      if (rust_.kind(each) != Node::FIELD_DECLARATION) continue;
      type += (type.empty() ? "{" : ", ") + kit::one_line(text_of(child(each, rust_.field.name))) +
              ": " + kit::one_line(text_of(child(each, rust_.field.type)));
    }
    type += type.empty() ? "" : "}";
  }
  add_member(node, std::move(type), "variant");
}

void Extractor::add_fields(TSNode list) {
  if (rust_.kind(list) == Node::ORDERED_FIELDS) {
    int index = 0;
    for (const TSNode each : kit::children(list, rust_.field.type)) {
      add_member(each, kit::one_line(text_of(each)), "field");
      builder_.facts().bindings.back().name = std::to_string(index++);
    }
    return;
  }
  for (const TSNode each : kit::named_children(list)) {
    if (rust_.kind(each) != Node::FIELD_DECLARATION) continue;
    add_member(each, kit::one_line(text_of(child(each, rust_.field.type))), "field");
  }
}

void Extractor::add_import(std::string module, std::string name, std::string alias, TSNode node,
                           std::uint16_t traits) {
  Import made;
  made.module = std::move(module);
  made.name = std::move(name);
  made.alias = std::move(alias);
  made.scope = builder_.frame().definition;
  made.line = first_line(node);
  made.traits = traits | (builder_.frame().traits & CONDITIONAL);
  builder_.facts().imports.push_back(std::move(made));
}

/// `use a::{b, c::{self, d as e}};` is one import for each name that it binds.
void Extractor::add_use(TSNode use) {
  const std::uint16_t traits = is_private(use) ? LOCAL_LINKAGE : 0;
  struct Part {
    TSNode node;
    std::string prefix;
  };
  std::vector<Part> parts = {{child(use, rust_.field.argument), {}}};
  while (!parts.empty()) {
    const Part part = std::move(parts.back());
    parts.pop_back();
    TSNode list = part.node;
    std::string prefix = part.prefix;
    if (rust_.kind(list) == Node::SCOPED_USE_LIST) {
      const std::string_view path = text_of(child(list, rust_.field.path));
      prefix = path.empty() && prefix.empty() ? "::" : joined(prefix, kit::one_line(path));
      list = child(list, rust_.field.list);
    }
    if (rust_.kind(list) != Node::USE_LIST) {
      add_use_of(list, prefix, traits);
      continue;
    }
    std::vector<TSNode> inside = kit::named_children(list);
    for (auto each = inside.rbegin(); each != inside.rend(); ++each) {
      if (rust_.kind(*each) != Node::COMMENT) parts.push_back({*each, prefix});
    }
  }
}

/// Wildcards are told apart by what they stand in: those of tests are nothing to other files.
std::string Extractor::wildcard_alias() {
  const DefinitionIndex scope = builder_.frame().definition;
  return scope == NOWHERE ? std::string() : wildcard_name(builder_.definition(scope).name);
}

void Extractor::add_use_of(TSNode node, const std::string& prefix, std::uint16_t traits) {
  TSNode path = node;
  std::string alias;
  if (rust_.kind(node) == Node::USE_AS) {
    path = child(node, rust_.field.path);
    alias = kit::one_line(text_of(child(node, rust_.field.alias)));
  }
  const bool wildcard = rust_.kind(node) == Node::USE_WILDCARD;
  if (wildcard) path = ts_node_named_child(node, 0);
  std::string written = joined(prefix, kit::one_line(text_of(path)));
  std::erase(written, ' ');
  if (written.ends_with("::self")) written.resize(written.size() - 6);
  if (wildcard) return add_import(std::move(written), "*", wildcard_alias(), node, traits);
  const std::size_t colons = written.rfind("::");
  const std::string name = colons == std::string::npos ? written : written.substr(colons + 2);
  std::string module = colons == std::string::npos ? std::string() : written.substr(0, colons);
  if (colons == 0) module = "::";
  if (name.empty()) return;
  builder_.refer(name, module.empty() || module == "::" ? module : module + "::", Role::IMPORT,
                 kit::last_line(path));
  add_import(std::move(module), name, alias.empty() ? name : alias, node, traits);
}

}  // namespace context_delta::indexer::rust
