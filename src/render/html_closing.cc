#include "render/html_closing.h"

#include <string>

#include "render/html_parts.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

void wiki_page(Markup& page, const WikiRow& row) {
  const auto item = page.open("li", {{"class", row.stale ? "stale" : "fresh"}});
  page.leaf("span", {{"class", row.stale ? "badge stale" : "badge fresh"}},
            row.stale ? "\u26a0 stale" : "\u2713 current");
  page.text(" ");
  page.leaf("bdi", {{"class", "page-title"}}, row.title.empty() ? row.page : row.title);
  page.text(" ");
  page.leaf("code", {{"class", "place"}}, row.page);
  if (const std::string why = verdict(row); !why.empty()) {
    const auto reason = page.open("div", {{"class", "remark"}});
    page.leaf("bdi", {}, why);
  }
  if (row.sources.empty()) return;
  const auto sources = page.open("div", {{"class", "remark"}});
  page.text("Cites ");
  for (std::size_t i = 0; i < row.sources.size(); ++i) {
    if (i > 0) page.text(", ");
    write_name(page, row.sources[i]);
  }
}

/// One thing that the pack lacks, and how to get it: an option, or words alone.
void lacking(Markup& page, std::string_view what, std::string_view option,
             std::string_view effect) {
  const auto item = page.open("li");
  page.leaf("b", {}, what);
  page.text(" ");
  if (!option.empty()) {
    write_name(page, option);
    page.text(" ");
  }
  page.text(effect);
}

void omitted(Markup& page, const LeftOut& left) {
  if (!left.by_budget.empty()) {
    lacking(page, "Left out to fit the budget: " + left.by_budget + ".",
            "--budget " + std::to_string(left.budget), "shows more.");
  }
  if (!left.by_limits.empty()) lacking(page, "Limits of the pack.", "", left.by_limits);
}

}  // namespace

void write_wiki_pages(Markup& page, const PackView& pack) {
  if (pack.wiki_pages.empty()) return;
  const Section section(page, "wiki", "Wiki pages", "pages that cite the changed files");
  const auto list = page.open("ul", {{"class", "wiki"}});
  for (const WikiRow& row : pack.wiki_pages) wiki_page(page, row);
}

void write_left_out(Markup& page, const PackView& pack, const LeftOut& left) {
  if (pack.total_changed_files <= 0 && omitted_rows(pack).empty()) return;
  const Section section(page, "left-out", "What is not here, and how to get it",
                        "options of context-delta");
  const auto list = page.open("ul", {{"class", "lacking"}});
  omitted(page, left);
  if (pack.excluded_files > 0) {
    lacking(page,
            grouped(pack.excluded_files) +
                (pack.excluded_files == 1 ? " file that is" : " files that are") +
                " no production source.",
            "--all-files", pack.excluded_files == 1 ? "lists it." : "lists them.");
  }
  if (pack.snippets.empty()) {
    lacking(page, "No snippets.", "--snippets",
            "shows the first changed lines of the first files.");
  }
  if (pack.wiki_pages.empty()) {
    lacking(page, "No wiki pages.", "--wiki DIR",
            "lists the pages of DIR that cite changed files.");
  }
}

void write_footer(Markup& page) {
  const auto footer = page.open("footer");
  page.leaf(
      "p", {},
      "\u201cProven\u201d claims that a call names this definition in this commit, not that it "
      "runs. \u201cGuessed\u201d callers may call another definition of the name.");
}

}  // namespace context_delta::render
