#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "indexer/languages/ecmascript/expressions.h"
#include "indexer/languages/ecmascript/jsdoc.h"
#include "indexer/languages/ecmascript/lexical.h"
#include "indexer/languages/ecmascript/names.h"
#include "indexer/languages/ecmascript/syntax.h"
#include "indexer/languages/kit/facts_builder.h"

namespace context_delta::indexer::ecmascript {

/// What encloses the node being visited, beside the builder's frame.
struct Context {
  std::uint32_t depth = 0;
  std::int32_t lexical = 0;            ///< the innermost scope
  std::string this_text = "?";         ///< what `this` is
  std::string object;                  ///< the object literal whose members are visited; or empty
  std::string owner;                   ///< the variable that holds it, for the names of its methods
  std::int32_t statement_line = 0;     ///< first line of the declaration; 0: none
  std::uint32_t decorators_depth = 0;  ///< of decorators that stand before what they decorate
  bool hoisted = false;                ///< inside `var`
  bool type_members = false;           ///< inside the body of an interface or an object type's name
};

/// One walk over one text. The methods are spread over the files extract*.cc.
class Extractor : private ExpressionContext {
 public:
  Extractor(const Syntax& syntax, std::string_view text) : syntax_(syntax), builder_(text) {
    contexts_.emplace_back();
  }

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth);
  Facts finish();

 private:
  // ExpressionContext
  std::string this_text() override { return context().this_text; }
  std::string object_text(TSNode literal) override;
  std::string module_text(std::string_view specifier, TSNode call) override;
  std::string definition_text(TSNode node) override;

  // extract.cc
  bool enter_declaration(TSNode node, std::uint32_t depth);
  bool enter_expression(TSNode node, std::uint32_t depth);
  bool enter_type(TSNode node, std::uint32_t depth);
  void enter_call(TSNode node);
  void enter_new(TSNode node);
  void enter_tag(TSNode node);
  void enter_decorator(TSNode node, std::uint32_t depth);
  void enter_return(TSNode node);
  void enter_comment(TSNode node);
  void refer_to(TSNode callee, Role role, std::int16_t arguments);
  void expect_result(TSNode value);
  void hint_elements(TSNode call, TSNode callee);
  std::string text_of(TSNode node) const;
  std::string value_of(TSNode node);
  Context& open(std::uint32_t depth);
  Context& context() { return contexts_.back(); }
  void open_block(std::uint32_t depth);

  // extract_definitions.cc
  bool enter_function(TSNode node, std::uint32_t depth);
  bool enter_class(TSNode node, std::uint32_t depth);
  bool enter_method(TSNode node, std::uint32_t depth);
  bool enter_signature(TSNode node, std::uint32_t depth);
  bool enter_field(TSNode node, std::uint32_t depth);
  bool enter_named_type(TSNode node, std::uint32_t depth, Kind kind);
  void enter_namespace(TSNode node, std::uint32_t depth);
  DefinitionIndex define_function(TSNode function, TSNode name_node, std::string name, Kind kind,
                                  std::string scope = {});
  Definition definition_of(TSNode node, TSNode name_node, std::string name, Kind kind);
  void open_function(TSNode node, std::uint32_t depth, DefinitionIndex index);
  void open_anonymous(TSNode node, std::uint32_t depth);
  void add_bases(TSNode node, Definition& definition);
  void declare_definition(DefinitionIndex index);
  void bind_type_parameters(TSNode node, DefinitionIndex scope);
  std::string receiver_of(TSNode node, DefinitionIndex index, const Context& around);
  void decorate(DefinitionIndex index, TSNode node);
  bool in_class();
  std::string property_name(TSNode name) const;
  Documentation documentation_before(TSNode node) const;

  // extract_bindings.cc
  void enter_declarator(TSNode node);
  void enter_assignment(TSNode node);
  void reassign(TSNode target);
  void assign_member(TSNode left, TSNode right);
  void bind_parameters(TSNode function, DefinitionIndex index, const Documentation& documentation);
  void bind_parameter(TSNode node, DefinitionIndex index, const Documentation& documentation,
                      std::string value);
  void bind_pattern(TSNode pattern, std::string type, std::string value, Binding::Kind kind,
                    std::int32_t lexical);
  void bind_name(TSNode name, std::string type, std::string value, Binding::Kind kind,
                 std::int32_t lexical);
  void bind_member(DefinitionIndex scope, std::string name, std::string type, std::string value,
                   TSNode node, std::uint16_t traits = 0);
  std::int32_t bind(Binding binding, std::int32_t lexical);
  bool bind_module(TSNode pattern, TSNode value);
  std::string instance_of(std::string_view name);
  void add_patch(TSNode left, std::string_view owner, std::string_view name);
  void enter_object(TSNode node, std::uint32_t depth);
  bool enter_object_member(TSNode node);
  void bind_object_member(const std::string& name, TSNode value);

  // extract_modules.cc
  void enter_import(TSNode node);
  bool enter_export(TSNode node);
  void enter_export_clause(TSNode clause, TSNode source);
  void export_declaration(TSNode declaration, bool is_default);
  void bind_export(std::string_view name, std::string value, TSNode node, std::string type = {});
  void add_import(std::string_view module, std::string name, TSNode alias, TSNode node);
  Import& add_export_from(std::string_view module, std::string name, std::string_view exported,
                          TSNode node);

  // extract_names.cc
  void settle_assignments();
  void settle_bindings();
  void settle_references();
  void settle_results();
  void publish_objects();
  std::string settled(std::string_view value, std::int32_t lexical, DefinitionIndex reader,
                      int depth = 0);
  bool is_visible(DefinitionIndex scope, DefinitionIndex reader);

  struct Assignment {
    std::string name;
    std::string value;
    std::int32_t lexical = 0;
    std::int32_t line = 1;
  };
  struct Result {
    DefinitionIndex function = NOWHERE;
    std::string value;
    std::int32_t lexical = 0;
  };

  const Syntax& syntax_;
  kit::FactsBuilder builder_;
  LexicalScopes scopes_;
  std::vector<Context> contexts_;
  std::unordered_map<const void*, DefinitionIndex> defined_;  // functions and classes with names
  std::unordered_map<const void*, std::string> objects_;      // literals that something holds
  std::unordered_map<const void*, std::string> owners_;       // the variables that hold them
  std::unordered_map<DefinitionIndex, int> object_counts_;
  std::unordered_map<const void*, std::string> receivers_;  // `this` of functions assigned to it
  std::unordered_map<const void*, std::string> hints_;      // what a callback's parameter will be
  std::unordered_map<const void*, std::string> expected_;   // types that functions are given
  std::unordered_map<const void*, std::string> modules_;    // `'m0` by call
  std::unordered_set<const void*> bodies_;       // blocks that open no scope of their own
  std::unordered_set<const void*> type_bodies_;  // object types with a name
  std::vector<std::int32_t> binding_scopes_;     // lexical scope of each binding's value
  std::vector<std::int32_t> reference_scopes_;   // and of each reference
  std::vector<Assignment> assignments_;
  std::vector<Result> results_;
  std::vector<std::string> values_;  // of the bindings, before they are settled
  std::int32_t decorated_line_ = 0;  // of the decorators that the next definition has; 0: none
  const void* name_ = nullptr;       // of the declaration being entered: no use of a type
  TSNode comment_ = {};              // the last one
};

}  // namespace context_delta::indexer::ecmascript
