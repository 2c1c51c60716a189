#include "indexer/languages/rust/locals.h"

namespace context_delta::indexer::rust {

void Locals::open(std::uint32_t depth, bool is_function) {
  blocks_.push_back({depth, is_function, {}, {}});
}

void Locals::close(std::uint32_t depth) {
  while (!blocks_.empty() && blocks_.back().depth == depth) blocks_.pop_back();
}

std::string Locals::declare(std::string_view name) {
  if (blocks_.empty()) open(0, true);
  auto function = blocks_.rbegin();
  while (!function->is_function && function + 1 != blocks_.rend()) ++function;
  std::string unique(name);
  unique += "@" + std::to_string(++function->counts[std::string(name)]);
  blocks_.back().variables.emplace_back(name, unique);
  return unique;
}

std::string_view Locals::find(std::string_view name) const {
  for (auto block = blocks_.rbegin(); block != blocks_.rend(); ++block) {
    for (auto each = block->variables.rbegin(); each != block->variables.rend(); ++each) {
      if (each->first == name) return each->second;
    }
    if (block->is_function) break;
  }
  return {};
}

}  // namespace context_delta::indexer::rust
