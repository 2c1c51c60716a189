#include "indexer/languages/java/locals.h"

namespace context_delta::indexer::java {

void Locals::open(std::uint32_t depth) { blocks_.push_back({depth, bound_.size()}); }

void Locals::close(std::uint32_t depth) {
  while (!blocks_.empty() && blocks_.back().depth == depth) {
    for (; bound_.size() > blocks_.back().first; bound_.pop_back()) {
      bindings_[bound_.back()].pop_back();
    }
    blocks_.pop_back();
  }
}

void Locals::bind(std::string_view name, std::int32_t binding) {
  if (blocks_.empty()) return;
  bound_.push_back(name);
  bindings_[name].push_back(binding);
}

std::int32_t Locals::find(std::string_view name) const {
  const auto found = bindings_.find(name);
  return found == bindings_.end() || found->second.empty() ? NO_LOCAL : found->second.back();
}

}  // namespace context_delta::indexer::java
