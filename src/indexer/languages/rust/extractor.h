#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/rust/locals.h"
#include "indexer/languages/rust/prepare.h"
#include "indexer/languages/rust/syntax.h"

/// Makes the facts of one text while it is walked.
namespace context_delta::indexer::rust {

/// What the attributes before an item say.
struct Attributes {
  std::uint32_t depth = 0;
  std::int32_t line = 0;  ///< of the first behind which no comment stands; 0: there is none
  std::int32_t last_line = 0;
  bool is_conditional = false;  ///< `#[cfg(...)]`
  std::string path;             ///< of `#[path = "..."]`
};

class Extractor {
 public:
  explicit Extractor(std::string_view text) : wrapped_(wrapped_items(text)), builder_(text) {}

  bool enter(TSNode node, std::uint32_t depth);
  void leave(std::uint32_t depth);
  Facts finish() { return builder_.finish(); }

 private:
  // extract.cc: what runs
  bool enter_expression(TSNode node, Node kind, std::uint32_t depth);
  void enter_call(TSNode node);
  void enter_closure(TSNode node, std::uint32_t depth);
  void enter_arguments(TSNode node);
  void enter_match_arm(TSNode node, std::uint32_t depth);
  void leave_node(TSNode node);
  void leave_match_arm(TSNode arm);
  void open_block(TSNode node, std::uint32_t depth);
  void refer_to_path(TSNode path, Role role, std::int16_t arguments = ANY_NUMBER);
  void refer_to_type(TSNode node);

  // extract_items.cc: what is defined
  bool enter_item(TSNode node, Node kind, std::uint32_t depth, const Attributes& attributes);
  void read_attribute(TSNode node, std::uint32_t depth);
  void pass_comment(TSNode comment, std::uint32_t depth);
  Attributes take_attributes(std::uint32_t depth);
  void define_function(TSNode node, std::uint32_t depth);
  void define_type(TSNode node, Kind kind, std::uint32_t depth);
  void define_impl(TSNode node, std::uint32_t depth);
  void define_mod(TSNode node, std::uint32_t depth, const Attributes& attributes);
  void define_value(TSNode node);
  void define_alias(TSNode node);
  void define_macro(TSNode node);
  void add_member(TSNode node, std::string type, std::string_view value);
  void add_variant(TSNode node);
  void add_fields(TSNode list);
  void add_use(TSNode node);
  void add_use_of(TSNode node, const std::string& prefix, std::uint16_t traits);
  std::string wildcard_alias();
  void add_import(std::string module, std::string name, std::string alias, TSNode node,
                  std::uint16_t traits);
  DefinitionIndex open_definition(Definition made, std::uint32_t depth);

  // patterns.cc: what is bound
  void bind_pattern(TSNode pattern, const std::string& value, const std::string& type,
                    Binding::Kind kind);
  void bind_variable(std::string_view name, std::string value, std::string type, Binding::Kind kind,
                     std::int32_t line);
  void refer_to_pattern(TSNode path);

  // expressions.cc: what values are
  std::string expression_text(TSNode node, int depth = 0) const;
  TSNode next_step(TSNode node, std::string& step, int depth) const;
  TSNode next_of_call(TSNode node, std::string& step, int depth) const;
  std::string head_text(TSNode node, int depth) const;
  std::string argument_text(std::string_view function, TSNode arguments, int depth) const;
  std::string tuple_text(TSNode node, int depth) const;
  std::string block_value(TSNode block) const;
  std::string path_text(TSNode node) const;

  // macros.cc: what is written inside macro calls
  void enter_macro(TSNode node);
  void scan_tokens(TSNode tree);

  std::string_view text_of(TSNode node) const { return kit::text_of(node, builder_.text()); }

  bool is_wrapped(TSNode node) const;

  const Syntax& rust_ = syntax();
  std::vector<WrappedItems> wrapped_;
  kit::FactsBuilder builder_;
  Locals locals_;
  Attributes attributes_;
  struct Open {
    std::uint32_t depth = 0;
    TSNode node = {};
  };
  std::vector<Open> open_;                               // nodes that leave_node() wants to see
  std::unordered_map<const void*, std::string> values_;  // of blocks, matches and closures left
  struct Match {
    std::uint32_t depth = 0;
    TSNode node = {};
    std::string value;  // what is matched
  };
  std::vector<Match> matches_;
  struct Loop {
    const void* body = nullptr;
    TSNode pattern = {};
    TSNode value = {};
  };
  std::vector<Loop> loops_;  // whose bodies are still to come
  struct Call {
    const void* arguments = nullptr;
    TSNode node = {};
  };
  std::vector<Call> calls_;                                 // whose arguments are still to come
  std::unordered_map<const void*, std::string> arguments_;  // closures given to calls: `e@map`
  const void* consumed_ = nullptr;                          // a path that was referred to already
};

}  // namespace context_delta::indexer::rust
