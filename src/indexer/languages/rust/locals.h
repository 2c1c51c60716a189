#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The local variables that are visible where a walk stands.
namespace context_delta::indexer::rust {

/// A stack of blocks. Variables are numbered, for those of one function may share a name: `x@1`,
/// `x@2`.
class Locals {
 public:
  /// Opens a block; a function's body does not see the variables around it.
  void open(std::uint32_t depth, bool is_function);
  /// Closes the blocks that the node at `depth` opened.
  void close(std::uint32_t depth);

  /// Declares a variable in the innermost block; the result names it in its function.
  std::string declare(std::string_view name);
  /// The variable that `name` means here, as declare() named it; empty when it is none.
  std::string_view find(std::string_view name) const;

 private:
  struct Block {
    std::uint32_t depth = 0;
    bool is_function = false;
    std::vector<std::pair<std::string, std::string>> variables;
    std::unordered_map<std::string, int> counts;  // of a function: by name
  };
  std::vector<Block> blocks_;
};

}  // namespace context_delta::indexer::rust
