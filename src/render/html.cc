#include "render/html.h"

#include <string>

#include "render/display_text.h"
#include "render/html_budget.h"
#include "render/html_closing.h"
#include "render/html_details.h"
#include "render/html_files.h"
#include "render/html_markup.h"
#include "render/html_overview.h"
#include "render/html_picture.h"
#include "render/html_style.h"
#include "render/left_out.h"
#include "render/linked_pack.h"
#include "render/pack_view.h"

namespace context_delta::render {
namespace {

std::string title(const PackView& pack) {
  if (!pack.target_branch || !pack.base_branch) return "Context Delta";
  return *pack.target_branch + " since " + *pack.base_branch + " \u00b7 Context Delta";
}

void head(Markup& page, const PackView& pack) {
  const auto element = page.open("head");
  page.empty("meta", {{"charset", "utf-8"}});
  page.empty("meta", {{"http-equiv", "Content-Security-Policy"},
                      {"content", "default-src 'none'; img-src data:; style-src '" +
                                      std::string(HTML_STYLE_HASH) +
                                      "'; base-uri 'none'; form-action 'none'"}});
  page.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  page.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  page.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  page.leaf("title", {}, plain_text(title(pack)));
  page.empty("link", {{"rel", "icon"},
                      {"href",
                       "data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' "
                       "viewBox='0 0 16 16'%3E%3Cpath fill='%233451b2' d='M8 1l7 13H1z'/"
                       "%3E%3C/svg%3E"}});
  const auto style = page.open("style");
  page.trusted(HTML_STYLE);
}

/// The sections, in the order in which a reviewer needs them.
void sections(Markup& page, const json::Mapping& pack, const PackView& view,
              const ReportStyle& style) {
  const LinkedPack linked = link_rows(view);
  const auto main = page.open("main", {{"id", "main"}, {"tabindex", "-1"}});
  write_notices(page, view, style);
  write_budget(page, pack, view.tokens_used, style);
  write_files(page, linked);
  write_picture(page, linked);
  write_details(page, linked);
  write_wiki_pages(page, view);
  write_left_out(page, view, left_out(pack, style));
}

}  // namespace

std::string render_html(const json::Mapping& pack, const ReportStyle& style) {
  // Rows are tied together by their texts as they are; Markup makes them fit to be shown.
  const PackView view = read_pack(pack, [](std::string_view text) { return std::string(text); });
  Markup main;
  sections(main, pack, view, style);
  Markup page;
  page.trusted("<!DOCTYPE html>\n");
  {
    const auto html = page.open("html", {{"lang", "en"}});
    head(page, view);
    const auto body = page.open("body");
    page.leaf("a", {{"class", "skip"}, {"href", "#main"}}, "Skip to the report");
    write_overview(page, view, main.headings());
    page.trusted(main.finish());
    write_footer(page);
  }
  page.trusted("\n");
  return page.finish();
}

}  // namespace context_delta::render
