#include "render/html_budget.h"

#include <algorithm>
#include <string>
#include <vector>

#include "render/html_parts.h"
#include "render/token_use.h"

namespace context_delta::render {
namespace {

struct Slice {
  std::string name;
  std::string style;
  std::optional<std::int64_t> rows;
  std::int64_t tokens;
};

std::string slice_name(std::string_view key) {
  if (key == "wiki_pages") return "Wiki pages";
  if (key == "affected_files") return "Files";
  if (key == "symbols") return "Changed symbols";
  if (key == "callers") return "Proven callers";
  if (key == "neighbours") return "Guessed callers";
  return "Snippets";
}

/// The sections that took anything, and what is left of the budget.
std::vector<Slice> slices_of(const json::Mapping& pack, std::int64_t tokens_used,
                             const ReportStyle& style) {
  std::vector<Slice> slices;
  std::int64_t sum = 0;
  for (const SectionUse& use : token_use(pack)) {
    sum += use.tokens;
    if (use.rows == 0) continue;
    slices.push_back({slice_name(use.key), "use-" + std::string(use.key), use.rows, use.tokens});
  }
  // Priced by another estimate: what is not known is not divided.
  if (sum != tokens_used) slices = {{"All sections", "use-affected_files", {}, tokens_used}};
  if (style.budget && *style.budget > tokens_used) {
    slices.push_back({"Not used", "use-none", {}, *style.budget - tokens_used});
  }
  return slices;
}

void bar(Markup& page, const std::vector<Slice>& slices, std::int64_t whole) {
  const auto drawn = page.open("svg", {{"class", "budget"}, {"aria-hidden", "true"}});
  std::int64_t before = 0;
  for (const Slice& slice : slices) {
    const std::int64_t start = before == 0 ? 0 : thousandths(before, whole);
    before += slice.tokens;
    const auto part = page.open("rect", {{"class", slice.style},
                                         {"x", percent(start)},
                                         {"width", percent(thousandths(before, whole) - start)},
                                         {"height", "100%"}});
    page.leaf("title", {}, slice.name + ": " + grouped(slice.tokens) + " tokens");
  }
}

void legend(Markup& page, const std::vector<Slice>& slices, std::int64_t whole) {
  const auto uses = page.open("ul", {{"class", "uses"}});
  for (const Slice& slice : slices) {
    const auto item = page.open("li");
    {
      const auto swatch = page.open("svg", {{"class", "swatch"}, {"aria-hidden", "true"}});
      page.empty("rect", {{"class", slice.style}, {"width", "100%"}, {"height", "100%"}});
    }
    page.text(slice.name + " ");
    page.leaf("b", {}, grouped(slice.tokens));
    std::string remark = " " + percent(thousandths(slice.tokens, whole));
    if (slice.rows) remark += ", " + grouped(*slice.rows) + (*slice.rows == 1 ? " row" : " rows");
    page.leaf("span", {{"class", "remark"}}, remark);
  }
}

std::string total(std::int64_t tokens_used, const ReportStyle& style) {
  std::string text = grouped(tokens_used) + (tokens_used == 1 ? " token" : " tokens") + " used";
  if (!style.budget) return text;
  text += " of a budget of " + grouped(*style.budget);
  if (style.token_scale == 100) return text;
  return text + ", counted at " + std::to_string(style.token_scale) + "% in the tokens of --budget";
}

}  // namespace

void write_budget(Markup& page, const json::Mapping& pack, std::int64_t tokens_used,
                  const ReportStyle& style) {
  if (tokens_used <= 0) return;
  const Section section(page, "budget", "Where the budget went", total(tokens_used, style));
  const std::vector<Slice> slices = slices_of(pack, tokens_used, style);
  const std::int64_t whole = std::max(tokens_used, style.budget.value_or(0));
  bar(page, slices, whole);
  legend(page, slices, whole);
}

}  // namespace context_delta::render
