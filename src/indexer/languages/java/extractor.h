#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "indexer/languages/java/expressions.h"
#include "indexer/languages/java/locals.h"
#include "indexer/languages/java/syntax.h"
#include "indexer/languages/kit/facts_builder.h"

/// The walk over a Java text that makes its facts.
namespace context_delta::indexer::java {

/// Bits of Frame::state.
enum State : std::uint16_t {
  IN_BASES = 1,        ///< inside `extends` or `implements`
  IN_FINAL_CLASS = 2,  ///< nothing can extend the class around
  IN_INTERFACE = 4,
};

class Extractor {
 public:
  explicit Extractor(std::string_view text) : builder_(text), expressions_(text, locals_) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth) {
    builder_.close(depth);
    locals_.close(depth);
  }
  Facts finish() { return builder_.finish(); }

 private:
  bool enter_declaration(Node kind, TSNode node, std::uint32_t depth);
  bool enter_statement(Node kind, TSNode node, std::uint32_t depth);
  bool enter_use(Node kind, TSNode node, std::uint32_t depth);
  void enter_type(TSNode node, std::uint32_t depth);
  void enter_function(TSNode node, std::uint32_t depth);
  void enter_body(TSNode node, std::uint32_t depth);
  void enter_fields(TSNode node);
  void enter_enum_constant(TSNode node);
  void enter_import(TSNode node);
  void enter_call(TSNode node);
  void enter_creation(TSNode node);
  void enter_explicit_constructor(TSNode node);
  void enter_method_reference(TSNode node);
  void enter_named_type(TSNode node);
  void enter_lambda(TSNode node, std::uint32_t depth);
  void note_lambdas(TSNode arguments, const Reference& call);
  void enter_loop(TSNode node, std::uint32_t depth);
  void enter_local_variables(TSNode node);
  void enter_pattern(TSNode node);
  void enter_catch_parameter(TSNode node);
  void enter_assignment(TSNode target);
  void refer_to_type(std::string_view written, Role role, std::int32_t line);
  void open_class(TSNode body, DefinitionIndex index, std::uint16_t state, std::uint32_t depth);
  void bind_member(TSNode name, std::string type, std::string value, std::uint16_t traits);
  void bind_local(TSNode name, std::string type, std::string value,
                  Binding::Kind kind = Binding::Kind::LOCAL);

  const Syntax& java_ = syntax();
  kit::FactsBuilder builder_;
  Locals locals_;
  Expressions expressions_;
  std::string package_;
  /// A class body that is still to come, by its node: what makes it.
  struct Creation {
    TSNode node = {};
    std::string name, base;
  };
  std::unordered_map<const void*, Creation> creations_;
  std::unordered_map<const void*, std::string> lambdas_;    // still to come: whose argument it is
  std::unordered_map<DefinitionIndex, TSNode> components_;  // of records
  const void* constructed_ = nullptr;  // a type that is no reference of its own
};

}  // namespace context_delta::indexer::java
