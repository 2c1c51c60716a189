#include "indexer/languages/kit/facts_builder.h"

#include <algorithm>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::kit {

Frame& FactsBuilder::open(std::uint32_t depth) {
  Frame frame = frames_.back();
  frame.depth = depth + 1;
  frames_.push_back(frame);
  return frames_.back();
}

void FactsBuilder::close(std::uint32_t depth) {
  while (frames_.size() > 1 && frames_.back().depth == depth + 1) frames_.pop_back();
}

Kind FactsBuilder::scope_kind() {
  const DefinitionIndex index = frame().definition;
  return index == NOWHERE ? Kind::NAMESPACE : definition(index).kind;
}

bool FactsBuilder::in_function() {
  for (DefinitionIndex i = frame().definition; i != NOWHERE; i = definition(i).parent) {
    if (is_function_kind(definition(i).kind)) return true;
  }
  return false;
}

DefinitionIndex FactsBuilder::define(Definition definition) {
  DefinitionIndex parent = frame().definition;
  const auto depth_of = [&](DefinitionIndex index) {
    return index == NOWHERE ? std::uint8_t{0} : depths_[static_cast<std::size_t>(index)];
  };
  if (depth_of(parent) >= DEEPEST_NESTING) parent = this->definition(parent).parent;
  definition.parent = parent;
  depths_.push_back(static_cast<std::uint8_t>(depth_of(parent) + 1));
  definition.traits |= frame().traits;
  if (frame().start != 0) definition.first_line = std::min(definition.first_line, frame().start);
  facts_.definitions.push_back(std::move(definition));
  return static_cast<DefinitionIndex>(facts_.definitions.size() - 1);
}

Reference& FactsBuilder::refer(std::string_view name, std::string receiver, Role role,
                               std::int32_t line, std::int16_t arguments) {
  Reference reference;
  reference.name = one_line(name, LONGEST_EXPRESSION);
  reference.receiver = std::move(receiver);
  reference.role = role;
  reference.line = line;
  reference.enclosing = frame().definition;
  reference.arguments = arguments;
  reference.traits = frame().traits & (BROKEN | FROM_MACRO);
  facts_.references.push_back(std::move(reference));
  return facts_.references.back();
}

Reference& FactsBuilder::refer_to(std::string_view name, ExpressionIndex receiver, Role role,
                                  std::int32_t line, std::int16_t arguments) {
  Reference& reference = refer(name, {}, role, line, arguments);
  reference.receiver_expression = receiver;
  return reference;
}

Facts FactsBuilder::finish() { return std::move(facts_); }

bool is_function_kind(Kind kind) {
  return kind == Kind::FUNCTION || kind == Kind::METHOD || kind == Kind::CONSTRUCTOR;
}

bool is_class_kind(Kind kind) {
  return kind == Kind::CLASS || kind == Kind::STRUCT || kind == Kind::INTERFACE ||
         kind == Kind::TRAIT || kind == Kind::ENUM || kind == Kind::UNION;
}

std::int16_t argument_count(std::size_t count) {
  return count < static_cast<std::size_t>(ANY_NUMBER) ? static_cast<std::int16_t>(count)
                                                      : ANY_NUMBER;
}

}  // namespace context_delta::indexer::kit
