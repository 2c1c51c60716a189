#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/go/definitions.h"
#include "indexer/languages/go/expressions.h"
#include "indexer/languages/go/locals.h"
#include "indexer/languages/go/syntax.h"
#include "indexer/languages/kit/facts_builder.h"

/// The visitor that makes facts of a parsed text.
namespace context_delta::indexer::go {

/// Bits of Frame::state.
enum State : std::uint16_t { IN_INTERFACE = 1 };

class Extractor {
 public:
  explicit Extractor(std::string_view text) : builder_(text) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth);
  Facts finish() { return builder_.finish(); }

 private:
  /// Names that a statement declares: they mean something only behind it.
  struct Pending {
    std::uint32_t depth = 0;
    std::string_view name;
    Binding binding;
    std::uint32_t closure = 0;  // first byte of the function literal that it is bound to; 0: none
  };
  /// A function literal to come that has a name.
  struct Closure {
    std::uint32_t first_byte = 0;
    std::string_view name;
    std::int32_t line = 1;
  };

  bool enter_statement(TSNode node, std::uint32_t depth);
  void enter_comment(TSNode node);
  void enter_import(TSNode node);
  void enter_function(TSNode node, std::uint32_t depth);
  void enter_literal(TSNode node, std::uint32_t depth);
  void enter_type(TSNode node, std::uint32_t depth);
  void enter_struct(TSNode node);
  void enter_method_element(TSNode node, std::uint32_t depth);
  void enter_variables(TSNode node, std::uint32_t depth, std::string_view keyword);
  void repeat_constant(TSNode& value, std::string& type);
  void enter_short_variables(TSNode node, std::uint32_t depth);
  void enter_assignment(TSNode node);
  void enter_range(TSNode node, std::uint32_t depth);
  void enter_type_switch(TSNode node, std::uint32_t depth);
  void enter_type_case(TSNode node, std::uint32_t depth);
  void enter_call(TSNode node);
  void enter_conversion(TSNode node);
  bool enter_type_name(TSNode node);

  void bind_clause(std::string_view name, std::string_view value);
  void bind_parameters(TSNode list, Binding::Kind kind);
  void bind_local(std::string_view name, Binding binding);
  void declare_behind(TSNode node, std::uint32_t depth, const std::vector<TSNode>& left,
                      TSNode right, const std::string& type);
  void refer_to_callee(TSNode callee, std::int16_t arguments);
  void refer_to_type(TSNode type, Role role);
  DefinitionIndex define_local(Definition definition);
  bool may_be_instantiated(TSNode callee) const;
  bool is_type_parameter(std::string_view name) const;

  Names names() { return {builder_.text(), locals_, type_parameters_, structs_}; }
  std::string_view text(TSNode node) const { return kit::text_of(node, builder_.text()); }

  const Syntax& go_ = syntax();
  kit::FactsBuilder builder_;
  Locals locals_;
  TypeParameters type_parameters_;
  AnonymousStructs structs_;
  std::vector<Pending> pending_;
  std::vector<Closure> closures_;
  std::unordered_map<std::string, std::size_t> bound_;           // locals of the function
  std::unordered_map<std::uint32_t, DefinitionIndex> literals_;  // named ones, by first byte
  std::vector<std::pair<std::uint32_t, TSNode>> switches_;       // depth and node of type switches
  std::uint32_t named_struct_ = UINT32_MAX;  // first byte of a struct whose fields are bound
  std::uint32_t handled_ = UINT32_MAX;  // first byte of a type name that was referred to already
  TSNode constant_value_ = {};          // of the constant before
  std::string constant_type_;
  bool in_package_ = false;  // the package clause was seen
};

}  // namespace context_delta::indexer::go
