#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/fields.h"
#include "tool_handlers/context_delta/file_selection.h"

namespace context_delta {

/// The rows of a list the pack shows, and how many it found.
template <class Services>
struct Listed {
  std::vector<typename Services::Row> rows = {};
  typename Services::Integer found = typename Services::Integer(0);
};

/// The symbols whose callers are looked up: their distinct ids in the order of the pack, and what
/// is said of each.
template <class Services>
struct LookedUp {
  struct Symbol {
    std::size_t rank;
    typename Services::Value fqn;
  };
  std::vector<typename Services::SymbolId> ids;
  std::unordered_map<typename Services::SymbolId, Symbol> symbols;
};

/// The first CALLER_LOOKUPS symbols. An id that occurs again keeps its place and takes the later
/// name.
template <class Services>
LookedUp<Services> _looked_up(const std::vector<typename Services::SymbolOnLines>& symbols) {
  using Value = typename Services::Value;
  LookedUp<Services> looked_up;
  const auto count = std::min(symbols.size(), static_cast<std::size_t>(CALLER_LOOKUPS));
  for (std::size_t i = 0; i < count; ++i) {
    const typename Services::SymbolId id = field::id(symbols[i]);
    Value fqn(field::fqn(symbols[i]));
    const auto known = looked_up.symbols.find(id);
    if (known != looked_up.symbols.end()) {
      known->second.fqn = std::move(fqn);
    } else {
      looked_up.symbols.emplace(
          id, typename LookedUp<Services>::Symbol{looked_up.ids.size(), std::move(fqn)});
      looked_up.ids.push_back(id);
    }
  }
  return looked_up;
}

/// A proven caller's row, but for "calls".
template <class Services>
typename Services::Row _caller_row(const typename Services::Caller& caller) {
  using Value = typename Services::Value;
  typename Services::Row row;
  row.set("fqn", Value(field::fqn(caller)));
  row.set("name", Value(field::name(caller)));
  row.set("kind", Value(field::kind(caller)));
  row.set("file", Value(field::path(caller)));
  row.set("line", Value(field::line(caller)));
  row.set("call_line", Value(field::call_line(caller)));
  return row;
}

/// How many callers the index counts: each symbol's total, as its last record has it.
template <class Services>
typename Services::Integer _total_callers(const std::vector<typename Services::Caller>& callers) {
  using Integer = typename Services::Integer;
  std::unordered_map<typename Services::SymbolId, std::size_t> position;
  std::vector<Integer> totals;
  for (const auto& caller : callers) {
    const auto [known, inserted] = position.try_emplace(field::of(caller), totals.size());
    if (inserted) {
      totals.push_back(field::total(caller));
    } else {
      totals[known->second] = field::total(caller);
    }
  }
  Integer sum(0);
  for (const Integer& total : totals) sum = sum + total;
  return sum;
}

/// The callers of one kind: grouped by the symbol they call, in the index's order within it.
template <class Services>
Listed<Services> _listed_callers(Services& services,
                                 const typename Services::Repository& repository,
                                 const LookedUp<Services>& looked_up, bool guessed,
                                 Part<Services>& part) {
  using Caller = typename Services::Caller;
  const std::vector<Caller> callers =
      services.callers_of(repository, looked_up.ids, guessed, CALLERS_PER_SYMBOL);
  std::vector<Caller> ordered = callers;
  _sort_by_key(ordered, [&](const Caller& caller) {
    return entry(looked_up.symbols, field::of(caller)).rank;
  });

  Listed<Services> listed;
  for (const Caller& caller : ordered) {
    auto row = guessed ? typename Services::Row(services.guessed_caller_row(caller))
                       : _caller_row<Services>(caller);
    row.set("calls", entry(looked_up.symbols, field::of(caller)).fqn);
    if (!part.take(row)) break;
    listed.rows.push_back(std::move(row));
  }
  listed.found = _total_callers<Services>(callers);
  return listed;
}

/// The callers of the first changed symbols, proven then guessed, each with its count. Both are
/// always looked up; the proven ones spend the part first.
template <class Services>
std::pair<Listed<Services>, Listed<Services>> _callers(
    Services& services, const typename Services::Repository& repository,
    const std::vector<typename Services::SymbolOnLines>& symbols, Part<Services>& part) {
  const auto looked_up = _looked_up<Services>(symbols);
  auto proven = _listed_callers(services, repository, looked_up, false, part);
  auto guessed = _listed_callers(services, repository, looked_up, true, part);
  return {std::move(proven), std::move(guessed)};
}

}  // namespace context_delta
