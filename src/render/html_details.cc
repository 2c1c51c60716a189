#include "render/html_details.h"

#include <cstdint>
#include <string>
#include <vector>

#include "render/display_text.h"
#include "render/html_parts.h"
#include "render/picture_layout.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

constexpr std::size_t UNFOLDED_SYMBOLS = 200;  // in files that are open from the start

struct CallerItem {
  const CallerRow* row;
  std::string anchor;
  bool proven;
  bool with_callee;  ///< where the callee has no place of its own on the page
};

void caller(Markup& page, const CallerItem& caller) {
  const auto item =
      page.open("li", {{"id", caller.anchor}, {"class", caller.proven ? "proven" : "guessed"}});
  write_evidence(page, caller.proven);
  page.text(" ");
  write_qualified_name(page, caller.row->fqn);
  page.text(" ");
  page.leaf("code", {{"class", "place"}},
            caller.row->file + ":" + std::to_string(caller.row->call_line));
  if (!caller.with_callee) return;
  page.text(" calls ");
  write_qualified_name(page, caller.row->calls);
}

void callers(Markup& page, const PackView& pack, const std::vector<std::size_t>& proven,
             const std::vector<std::size_t>& guessed, bool with_callee) {
  if (proven.empty() && guessed.empty()) return;
  const auto list = page.open("ul", {{"class", "callers"}});
  for (const std::size_t i : proven) {
    caller(page, {&pack.callers[i], caller_anchor(i, true), true, with_callee});
  }
  std::string said;
  for (const std::size_t i : guessed) {
    const std::string why = doubt(pack.neighbours[i]);
    if (why != said) page.leaf("li", {{"class", "reason"}}, why);
    said = why;
    caller(page, {&pack.neighbours[i], caller_anchor(i, false), false, with_callee});
  }
}

void callers_of(Markup& page, const LinkedPack& linked, std::size_t place) {
  const LinkedSymbol& symbol = linked.symbols[place];
  callers(page, *linked.pack, symbol.callers, symbol.neighbours, false);
  if (symbol.first_namesake == place) return;
  const LinkedSymbol& first = linked.symbols[symbol.first_namesake];
  if (first.callers.empty() && first.neighbours.empty()) return;
  const auto line = page.open("p", {{"class", "remark"}});
  page.text("Callers are listed with ");
  page.leaf("a", {{"href", "#s" + std::to_string(symbol.first_namesake)}},
            "the first symbol of this name");
  page.text(".");
}

void symbol(Markup& page, const LinkedPack& linked, std::size_t place) {
  const SymbolRow& row = linked.pack->symbols[place];
  const auto item = page.open("li", {{"id", "s" + std::to_string(place)}});
  {
    const auto line = page.open("div", {{"class", "symbol"}});
    page.leaf("span", {{"class", "kind"}}, row.kind);
    page.text(" ");
    write_qualified_name(page, row.fqn);
    page.text(" ");
    page.leaf("span", {{"class", "place"}}, lines_spanned(row));
  }
  if (!row.signature.empty() && row.signature != row.fqn) {
    const auto line = page.open("div", {{"class", "signature"}});
    write_name(page, row.signature);
  }
  callers_of(page, linked, place);
}

/// Lines of a snippet are the changed ones; in a file that only lost lines they are the lines that
/// took the place of what was deleted.
void snippet(Markup& page, const SnippetRow& row, bool only_deletions) {
  const auto figure = page.open("figure", {{"class", "snippet"}});
  const std::string lines = line_range(row.line, row.end_line, "\u2013");
  page.leaf(
      "figcaption", {},
      only_deletions ? "Where lines were deleted: line " + lines : "First changed lines: " + lines);
  const auto code = page.open("pre", {{"class", only_deletions ? "beside" : "changed"}});
  // Lines are joined by line feeds: an empty last line is one.
  std::string_view rest = row.content;
  for (std::uint64_t number = static_cast<std::uint64_t>(row.line);; ++number) {
    const std::size_t end = rest.find('\n');
    const auto numbered = page.open("span", {{"class", "line"}});
    page.leaf("span", {{"class", "at"}}, std::to_string(static_cast<std::int64_t>(number)));
    page.leaf("code", {}, plain_line(rest.substr(0, end)));
    if (end == rest.npos) break;
    rest.remove_prefix(end + 1);
  }
}

void file_summary(Markup& page, const LinkedFile& file) {
  const auto summary = page.open("summary");
  {
    const auto heading = page.open("h3");
    write_path(page, file.path);
  }
  if (file.row == nullptr) {
    page.leaf("span", {{"class", "facts"}}, "not among the files listed");
    return;
  }
  write_status(page, file.row->status);
  write_line_counts(page, file.row->additions, file.row->deletions);
  page.leaf(
      "span", {{"class", "facts"}},
      grouped(file.row->references) + (file.row->references == 1 ? " reference" : " references"));
}

void file(Markup& page, const LinkedPack& linked, std::size_t place, bool open) {
  const LinkedFile& rows = linked.files[place];
  const auto details =
      page.open("details", {{"class", "file"},
                            {"id", "f" + std::to_string(place)},
                            {"open", open ? std::optional<std::string>("open") : std::nullopt}});
  file_summary(page, rows);
  for (const std::size_t i : rows.snippets) {
    const bool only_deletions =
        rows.row != nullptr && rows.row->additions == 0 && rows.row->deletions > 0;
    snippet(page, linked.pack->snippets[i], only_deletions);
  }
  if (rows.symbols.empty()) return;
  const auto list = page.open("ul", {{"class", "symbols"}});
  for (const std::size_t i : rows.symbols) symbol(page, linked, i);
}

void loose_callers(Markup& page, const LinkedPack& linked) {
  if (linked.loose_callers.empty() && linked.loose_neighbours.empty()) return;
  page.leaf("h3", {}, "Callers of symbols that are not listed");
  callers(page, *linked.pack, linked.loose_callers, linked.loose_neighbours, true);
}

}  // namespace

void write_details(Markup& page, const LinkedPack& linked) {
  const PackView& pack = *linked.pack;
  if (pack.symbols.empty() && pack.callers.empty() && pack.neighbours.empty() &&
      pack.snippets.empty() && pack.symbols_omitted <= 0) {
    return;
  }
  const Section section(page, "details", "Changed symbols and their callers",
                        "symbols on the changed lines, with the lines they span");
  std::size_t symbols = 0;
  for (std::size_t i = 0; i < linked.files.size(); ++i) {
    if (!linked.files[i].has_details()) continue;
    symbols += linked.files[i].symbols.size();
    file(page, linked, i, symbols <= UNFOLDED_SYMBOLS);
  }
  loose_callers(page, linked);
  write_omitted(page, pack.symbols_omitted, "more symbol", "more symbols");
  write_omitted(page, pack.callers_omitted, "more proven caller", "more proven callers");
  write_omitted(page, pack.neighbours_omitted, "more guessed caller", "more guessed callers");
}

}  // namespace context_delta::render
