#include "render/left_out.h"

#include <algorithm>

#include "render/pack_view.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

/// A greater budget than the one that was not enough, where the estimate says that it was.
std::int64_t greater(std::int64_t enough, const ReportStyle& style) {
  if (style.budget && enough <= *style.budget) enough = *style.budget + *style.budget / 4 + 500;
  return enough * style.token_scale / 100;
}

std::string limits(const PackView& pack, const RowCounts& beyond) {
  std::string text;
  PackView cut;
  cut.symbols_omitted = beyond.symbols;
  cut.callers_omitted = beyond.callers;
  cut.neighbours_omitted = beyond.neighbours;
  const std::string rows = omitted_rows(cut);
  if (!rows.empty()) {
    text = "Not listed, whatever the budget: " + rows +
           " (a pack lists 50 symbols of a file and 10 callers of a symbol at most).";
  }
  const auto symbols = static_cast<std::int64_t>(pack.symbols.size());
  const bool has_callers = !pack.callers.empty() || !pack.neighbours.empty() ||
                           pack.callers_omitted > 0 || pack.neighbours_omitted > 0;
  if (symbols <= LOOKED_UP_SYMBOLS || !has_callers) return text;
  return text + (text.empty() ? "" : " ") + "Callers were looked up for the first " +
         std::to_string(LOOKED_UP_SYMBOLS) + " symbols only.";
}

}  // namespace

LeftOut left_out(const json::Mapping& pack, const ReportStyle& style) {
  PackView view = read_pack(pack, [](std::string_view text) { return std::string(text); });
  LeftOut made;
  made.by_limits = limits(view, style.beyond_limits);
  json::Mapping within = pack;
  const auto reduce = [&](std::string_view key, std::int64_t& omitted, std::int64_t beyond) {
    omitted = std::max<std::int64_t>(0, omitted - std::max<std::int64_t>(0, beyond));
    if (pack.find(key) != nullptr) within.set(key, omitted);
  };
  reduce("symbols_omitted", view.symbols_omitted, style.beyond_limits.symbols);
  reduce("callers_omitted", view.callers_omitted, style.beyond_limits.callers);
  reduce("neighbours_omitted", view.neighbours_omitted, style.beyond_limits.neighbours);
  made.by_budget = omitted_rows(view);
  const auto enough = sufficient_budget(within);
  if (enough) made.budget = greater(*enough, style);
  return made;
}

}  // namespace context_delta::render
