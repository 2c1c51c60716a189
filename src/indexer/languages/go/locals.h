#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// Which local a name means, block by block.
namespace context_delta::indexer::go {

/// The blocks around the node being visited and the locals they declare. Names are views of the
/// source text.
class Locals {
 public:
  /// A block opened by the node at `depth`, and the end of all blocks that it opened.
  void open(std::uint32_t depth);
  void close(std::uint32_t depth);
  /// As open(), for a function at the top level, whose locals are numbered from 1 again.
  void open_function(std::uint32_t depth);
  bool is_empty() const { return blocks_.empty(); }

  /// Declares a name in the innermost block and returns it with its number: `err'2`.
  std::string declare(std::string_view name);
  /// The local that a name means, with its number; empty when it means none.
  std::string find(std::string_view name) const;
  bool has(std::string_view name) const { return number(name) != 0; }

 private:
  struct Block {
    std::uint32_t depth = 0;
    std::size_t declared_before = 0;
  };
  std::uint32_t number(std::string_view name) const;

  std::vector<Block> blocks_;
  std::vector<std::string_view> declared_;  // innermost last
  std::unordered_map<std::string_view, std::vector<std::uint32_t>> numbers_;
  using Numbers = std::unordered_map<std::string_view, std::uint32_t>;
  Numbers of_function_;
  Numbers of_file_;  // in function literals outside functions
  bool in_function_ = false;
};

/// Numbers of the struct types of a file that have no name, by their first byte.
class AnonymousStructs {
 public:
  /// What stands for the type in types: `struct'2`.
  std::string name(std::uint32_t first_byte) {
    const std::size_t number = numbers_.try_emplace(first_byte, numbers_.size() + 1).first->second;
    return "struct'" + std::to_string(number);
  }

 private:
  std::unordered_map<std::uint32_t, std::size_t> numbers_;
};

/// The type parameters in scope, each with what stands for it in types.
using TypeParameters = std::vector<std::pair<std::string_view, std::string>>;

}  // namespace context_delta::indexer::go
