#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/languages/kit/expressions.h"
#include "indexer/model/facts.h"

/// What extractors share: the stack of scopes and the making of records.
namespace context_delta::indexer::kit {

/// Where the walk stands: what encloses the node being visited.
struct Frame {
  std::uint32_t depth = 0;               ///< of the node that opened it
  DefinitionIndex definition = NOWHERE;  ///< innermost definition
  std::uint16_t traits = 0;  ///< CONDITIONAL, BROKEN, LOCAL_LINKAGE, ... of what is defined here
  std::uint16_t state = 0;   ///< bits of the language's own
  std::int32_t start = 0;    ///< line on which decorators or template headers began; 0: none
};

inline constexpr std::uint8_t DEEPEST_NESTING = 50;

/// Facts in the making.
class FactsBuilder {
 public:
  explicit FactsBuilder(std::string_view text) : text_(text), expressions_(facts_.expressions) {
    frames_.emplace_back();
  }
  FactsBuilder(const FactsBuilder&) = delete;
  FactsBuilder& operator=(const FactsBuilder&) = delete;

  std::string_view text() const { return text_; }
  Facts& facts() { return facts_; }
  ExpressionTable& expressions() { return expressions_; }
  const Frame& frame() const { return frames_.back(); }
  Frame& frame() { return frames_.back(); }

  /// A copy of the current frame, opened by a node at `depth` (0 is the root's).
  Frame& open(std::uint32_t depth);
  /// Closes the frames that the node at `depth` opened.
  void close(std::uint32_t depth);

  Definition& definition(DefinitionIndex index) {
    return facts_.definitions[static_cast<std::size_t>(index)];
  }
  /// The kind of the innermost definition; NAMESPACE at the top level.
  Kind scope_kind();
  bool in_function();

  /// Adds a definition inside the current frame and returns its index. What is nested more than
  /// DEEPEST_NESTING definitions deep stands beside its parent instead.
  DefinitionIndex define(Definition definition);
  /// Adds a reference from the current frame.
  Reference& refer(std::string_view name, std::string receiver, Role role, std::int32_t line,
                   std::int16_t arguments = ANY_NUMBER);
  /// The same with a receiver as an expression.
  Reference& refer_to(std::string_view name, ExpressionIndex receiver, Role role, std::int32_t line,
                      std::int16_t arguments = ANY_NUMBER);
  void bind(Binding binding) { facts_.bindings.push_back(std::move(binding)); }

  /// The facts, complete.
  Facts finish();

 private:
  std::string_view text_;
  Facts facts_;
  ExpressionTable expressions_;
  std::vector<Frame> frames_;
  std::vector<std::uint8_t> depths_;  // of each definition
};

bool is_function_kind(Kind kind);
bool is_class_kind(Kind kind);

/// A count as an argument count; ANY_NUMBER when it is beyond what one can hold.
std::int16_t argument_count(std::size_t count);

}  // namespace context_delta::indexer::kit
