#include "indexer/languages/go/locals.h"

namespace context_delta::indexer::go {

void Locals::open(std::uint32_t depth) { blocks_.push_back({depth, declared_.size()}); }

void Locals::open_function(std::uint32_t depth) {
  if (blocks_.empty()) {
    of_function_.clear();
    in_function_ = true;
  }
  open(depth);
}

void Locals::close(std::uint32_t depth) {
  while (!blocks_.empty() && blocks_.back().depth == depth) {
    while (declared_.size() > blocks_.back().declared_before) {
      numbers_[declared_.back()].pop_back();
      declared_.pop_back();
    }
    blocks_.pop_back();
  }
  if (blocks_.empty()) in_function_ = false;
}

std::string Locals::declare(std::string_view name) {
  const std::uint32_t given = ++(in_function_ ? of_function_ : of_file_)[name];
  declared_.push_back(name);
  numbers_[name].push_back(given);
  return find(name);
}

std::string Locals::find(std::string_view name) const {
  const std::uint32_t known = number(name);
  return known == 0 ? std::string() : std::string(name) + "'" + std::to_string(known);
}

std::uint32_t Locals::number(std::string_view name) const {
  const auto found = numbers_.find(name);
  return found == numbers_.end() || found->second.empty() ? 0 : found->second.back();
}

}  // namespace context_delta::indexer::go
