#pragma once

#include <string>
#include <string_view>

#include "indexer/languages/c_family/declarations.h"
#include "indexer/languages/kit/facts_builder.h"

namespace context_delta::indexer::c_family {

/// Bits of Frame::state.
enum State : std::uint16_t { IN_UNNAMED_TYPE = 1 };

/// Visits the nodes of a tree and gathers its facts.
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
  kit::FactsBuilder builder_;
};

}  // namespace context_delta::indexer::c_family
