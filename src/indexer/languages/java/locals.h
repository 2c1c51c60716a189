#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// Which local variable or parameter a name means at the place where a walk stands.
namespace context_delta::indexer::java {

inline constexpr std::int32_t NO_LOCAL = -1;

/// Blocks open and close with a walk; names bound in a block are forgotten when it closes.
class Locals {
 public:
  /// A block opened by the node at `depth`.
  void open(std::uint32_t depth);
  /// Closes the blocks that the node at `depth` opened.
  void close(std::uint32_t depth);
  /// Binds a name in the innermost block to an index of Facts::bindings, or to NO_LOCAL when from
  /// here on it means a field again. The text behind `name` must outlive this.
  void bind(std::string_view name, std::int32_t binding);
  /// The binding that a name means; NO_LOCAL when it is no local variable.
  std::int32_t find(std::string_view name) const;

 private:
  struct Block {
    std::uint32_t depth = 0;
    std::size_t first = 0;  // in bound_
  };
  std::vector<Block> blocks_;
  std::vector<std::string_view> bound_;
  std::unordered_map<std::string_view, std::vector<std::int32_t>> bindings_;
};

}  // namespace context_delta::indexer::java
