#include "indexer/model/facts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace context_delta::indexer {
namespace {

constexpr std::array<std::string_view, 13> KIND_NAMES = {
    "namespace", "class",    "struct", "interface",   "trait",    "enum", "union",
    "type",      "function", "method", "constructor", "variable", "macro"};

bool is_inside_function(const Interface& facts, const Binding& binding) {
  if (binding.scope == NOWHERE) return false;
  if (binding.kind != Binding::Kind::PARAMETER && binding.kind != Binding::Kind::LOCAL) {
    return false;
  }
  const Kind scope = facts.definitions[static_cast<std::size_t>(binding.scope)].kind;
  return scope == Kind::FUNCTION || scope == Kind::METHOD || scope == Kind::CONSTRUCTOR;
}

/// Moves the items that `belongs` to the front, each group in its order, and counts them. Returns
/// the new index of each.
template <class Item, class Belongs>
std::vector<std::int32_t> move_to_front(std::vector<Item>& items, Belongs belongs,
                                        std::size_t& count) {
  std::vector<bool> first;
  first.reserve(items.size());
  for (const Item& each : items) first.push_back(belongs(each));
  count = static_cast<std::size_t>(std::count(first.begin(), first.end(), true));
  std::vector<std::int32_t> numbers(items.size());
  std::vector<Item> ordered(items.size());
  std::size_t front = 0;
  std::size_t back = count;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::size_t place = first[i] ? front++ : back++;
    numbers[i] = static_cast<std::int32_t>(place);
    ordered[place] = std::move(items[i]);
  }
  items = std::move(ordered);
  return numbers;
}

void append_with_dots(std::string& text, std::string_view name) {
  if (name.empty()) return;
  if (!text.empty()) text += '.';
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool separator = name.substr(i, 2) == "::";
    text += separator ? '.' : name[i];
    i += separator ? 1 : 0;
  }
}

}  // namespace

std::string_view kind_name(Kind kind) { return KIND_NAMES[static_cast<std::size_t>(kind)]; }

std::string local_name(const Interface& facts, DefinitionIndex definition) {
  std::vector<const Definition*> chain;
  for (DefinitionIndex i = definition; i != NOWHERE; i = chain.back()->parent) {
    chain.push_back(&facts.definitions[static_cast<std::size_t>(i)]);
  }
  std::string text;
  for (auto part = chain.rbegin(); part != chain.rend(); ++part) {
    append_with_dots(text, (*part)->scope);
    append_with_dots(text, (*part)->name);
  }
  return text;
}

std::string container_name(const Interface& facts, DefinitionIndex definition) {
  const Definition& own = facts.definitions[static_cast<std::size_t>(definition)];
  std::string text = local_name(facts, own.parent);
  append_with_dots(text, own.scope);
  return text;
}

std::string_view bound_name(const Import& import) {
  if (!import.alias.empty()) return import.alias;
  if (!import.name.empty()) return import.name;
  return std::string_view(import.module).substr(0, import.module.find('.'));
}

void put_interface_first(Facts& facts) {
  std::vector<std::int32_t> new_bindings = move_to_front(
      facts.bindings, [&](const Binding& each) { return !is_inside_function(facts, each); },
      facts.interface_bindings);
  std::vector<bool> wanted(facts.expressions.size());
  for (std::size_t i = 0; i < facts.interface_bindings; ++i) {
    const ExpressionIndex value = facts.bindings[i].value_expression;
    if (value != NO_EXPRESSION) wanted[static_cast<std::size_t>(value)] = true;
  }
  // Operands come earlier than what they are part of.
  for (std::size_t i = facts.expressions.size(); i-- > 0;) {
    if (!wanted[i]) continue;
    for (const ExpressionIndex operand : facts.expressions[i].operands) {
      wanted[static_cast<std::size_t>(operand)] = true;
    }
  }
  const std::vector<std::int32_t> new_expressions = move_to_front(
      facts.expressions,
      [&](const Expression& each) {
        return wanted[static_cast<std::size_t>(&each - facts.expressions.data())];
      },
      facts.interface_expressions);
  const auto renumber = [&](ExpressionIndex& index) {
    if (index != NO_EXPRESSION) index = new_expressions[static_cast<std::size_t>(index)];
  };
  for (Expression& each : facts.expressions) {
    for (ExpressionIndex& operand : each.operands) renumber(operand);
    const bool is_local = each.kind == ExpressionKind::LOCAL && each.number >= 0;
    if (is_local) each.number = new_bindings[static_cast<std::size_t>(each.number)];
  }
  for (Binding& each : facts.bindings) renumber(each.value_expression);
  for (Reference& each : facts.references) {
    renumber(each.receiver_expression);
    for (ExpressionIndex& value : each.value_expressions) renumber(value);
  }
}

}  // namespace context_delta::indexer
