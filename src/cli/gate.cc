#include "cli/gate.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "render/pack_view.h"

namespace context_delta::cli {
namespace {

render::PackView view_of(const services::DeltaAnswer& answer) {
  return render::read_pack(answer.pack, [](std::string_view text) { return std::string(text); });
}

std::string changed(const services::DeltaAnswer& answer) {
  const std::int64_t files = view_of(answer).total_changed_files;
  if (files == 0) return "";
  return std::to_string(files) + (files == 1 ? " file" : " files") + " changed";
}

std::string stale_wiki(const services::DeltaAnswer& answer) {
  std::vector<std::string> stale;
  for (const render::WikiRow& page : view_of(answer).wiki_pages) {
    if (page.stale) stale.push_back(page.page);
  }
  if (stale.empty()) return "";
  if (stale.size() == 1) return "the wiki page " + stale[0] + " is stale";
  return std::to_string(stale.size()) + " wiki pages are stale, the first is " + stale[0];
}

std::string truncated(const services::DeltaAnswer& answer) {
  return answer.is_cut_by_budget ? "the budget left something out" : "";
}

constexpr Gate GATES[] = {
    {"changed", changed}, {STALE_WIKI_GATE, stale_wiki}, {"truncated", truncated}};

}  // namespace

const Gate* find_gate(std::string_view name) {
  const auto* gate = std::find_if(std::begin(GATES), std::end(GATES),
                                  [&](const Gate& known) { return known.name == name; });
  return gate == std::end(GATES) ? nullptr : gate;
}

std::string_view gate_names() {
  static const std::string NAMES = [] {
    std::string names;
    for (const Gate& gate : GATES) {
      names += (names.empty() ? "" : "|") + std::string(gate.name);
    }
    return names;
  }();
  return NAMES;
}

}  // namespace context_delta::cli
