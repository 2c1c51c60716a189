#include "render/text.h"

#include <algorithm>
#include <utility>

#include "render/display_text.h"
#include "render/left_out.h"
#include "render/pack_view.h"
#include "render/short_name.h"
#include "render/text_page.h"
#include "render/wording.h"
#include "utils/text_lines.h"

namespace context_delta::render {
namespace {

void heading(TextPage& page, const std::string& title, std::string_view remark) {
  page.blank_line();
  const std::size_t room = page.width() - title.size() - 2;
  page.line({{title, Ink::BOLD},
             {"  "},
             {shortened_end(remark, room, page.mark("\u2026", "...")), Ink::DIM}});
}

void omitted_line(TextPage& page, std::int64_t omitted, std::string_view one,
                  std::string_view many) {
  if (omitted <= 0) return;
  page.line({{"  "},
             {std::string(page.mark("\u2026 ", "... ")) + counted(omitted, one, many), Ink::DIM}});
}

Ink status_ink(std::string_view status) {
  if (status == "added" || status == "copied") return Ink::GREEN;
  if (status == "deleted") return Ink::RED;
  if (status == "renamed") return Ink::CYAN;
  return Ink::YELLOW;
}

std::string status_letter(std::string_view status) {
  if (status.empty()) return " ";
  return std::string(
      1, static_cast<char>(status[0] >= 'a' && status[0] <= 'z' ? status[0] - 32 : status[0]));
}

void comparison(TextPage& page, const PackView& pack) {
  if (!pack.base_branch || !pack.target_branch) return;
  page.flow(
      {{{*pack.target_branch, Ink::BOLD}, {" since it left "}, {*pack.base_branch, Ink::BOLD}},
       {{counted(pack.commit_count, "commit", "commits")}}});
}

void totals(TextPage& page, const PackView& pack) {
  if (pack.files.empty() && pack.total_changed_files == 0) return;
  const FileTotals sum = file_totals(pack);
  const std::string minus(page.mark("\u2212", "-"));
  const std::int64_t stale = stale_pages(pack);
  page.flow(
      {{{counted(pack.total_changed_files, "file", "files") + " changed "},
        {"+" + std::to_string(sum.additions), Ink::GREEN},
        {" "},
        {minus + std::to_string(sum.deletions), Ink::RED},
        {pack.files_omitted > 0 ? " in those listed" : ""}},
       {{counted(pack.total_changed_symbols, "changed symbol", "changed symbols")}},
       {{counted(sum.references, "reference", "references") + " from other files"}},
       {{stale > 0 ? counted(stale, "stale wiki page", "stale wiki pages") : "", Ink::YELLOW}}});
}

void excluded(TextPage& page, const PackView& pack) {
  if (pack.excluded_files <= 0 || pack.message) return;
  page.paragraph(counted(pack.excluded_files, "more file is", "more files are") +
                     " no production source: tests, documents, generated (--all-files lists " +
                     (pack.excluded_files == 1 ? "it)" : "them)"),
                 Ink::DIM);
}

void files(TextPage& page, const PackView& pack) {
  if (pack.files.empty() && pack.files_omitted <= 0) return;
  heading(page, "Files", "the most depended on first");
  Table table = {{{}, {false, Shrink::MIDDLE}, {true}, {true}, {true}, {true}}, {}};
  table.rows.push_back({{""}, {""}, {""}, {""}, {"symbols", Ink::DIM}, {"references", Ink::DIM}});
  const std::string_view arrow = page.mark(" \u2192 ", " -> ");
  for (const FileRow& file : pack.files) {
    const Ink quiet = file.references == 0 ? Ink::DIM : Ink::PLAIN;
    table.rows.push_back(
        {{status_letter(file.status), status_ink(file.status)},
         {file_name(file, arrow)},
         {file.additions == 0 ? "" : "+" + std::to_string(file.additions), Ink::GREEN},
         {file.deletions == 0
              ? ""
              : std::string(page.mark("\u2212", "-")) + std::to_string(file.deletions),
          Ink::RED},
         {std::to_string(file.symbols), file.symbols == 0 ? Ink::DIM : Ink::PLAIN},
         {std::to_string(file.references), quiet}});
  }
  const auto widths = page.fitted_widths(table, 2);
  for (const Pieces& cells : table.rows) page.row(table, cells, widths, 2);
  omitted_line(page, pack.files_omitted, "more file", "more files");
}

/// The signature, when it says more than the kind and name beside it.
std::string signature_cell(const SymbolRow& symbol) {
  const std::string name(last_name(symbol.fqn));
  const bool says_no_more = symbol.signature == symbol.fqn || symbol.signature == name ||
                            symbol.signature == symbol.kind + " " + name;
  return says_no_more ? "" : symbol.signature;
}

Table symbol_table(const std::vector<SymbolRow>& symbols) {
  Table table = {{{true}, {false, Shrink::END}, {false, Shrink::START}, {false, Shrink::END}}, {}};
  for (const SymbolRow& symbol : symbols) {
    table.rows.push_back({{line_range(symbol.line, symbol.end_line), Ink::DIM},
                          {symbol.kind, Ink::CYAN},
                          {std::string(beyond_file(symbol.fqn, symbol.file)), Ink::PLAIN},
                          {signature_cell(symbol), Ink::DIM}});
  }
  return table;
}

constexpr std::size_t SIGNATURE = 3;  // column of symbol_table()
constexpr std::size_t LEAST_SIGNATURE = 30;

/// Whether a signature does not fit.
bool cuts_signatures(const Table& table, const std::vector<std::size_t>& widths) {
  return std::any_of(table.rows.begin(), table.rows.end(), [&](const Pieces& cells) {
    return display_width(cells[SIGNATURE].text) > widths[SIGNATURE];
  });
}

/// The beginning of a signature mostly repeats the name: the room is better spent on that.
void drop_signatures(Table& table) {
  for (Pieces& cells : table.rows) cells[SIGNATURE].text.clear();
}

void symbols(TextPage& page, const PackView& pack) {
  if (pack.symbols.empty() && pack.symbols_omitted <= 0) return;
  heading(page, "Changed symbols", "with the lines they span");
  Table table = symbol_table(pack.symbols);
  auto widths = page.fitted_widths(table, 4);
  if (widths[SIGNATURE] < LEAST_SIGNATURE && cuts_signatures(table, widths)) {
    drop_signatures(table);
    widths = page.fitted_widths(table, 4);
  }
  const std::string* file = nullptr;
  for (std::size_t i = 0; i < pack.symbols.size(); ++i) {
    const SymbolRow& symbol = pack.symbols[i];
    if (file == nullptr || *file != symbol.file) {
      page.line({{"  "},
                 {shortened_middle(symbol.file, page.width() - 14, page.mark("\u2026", "...")),
                  Ink::BOLD},
                 {"  "},
                 {symbol.status == "modified" ? "" : symbol.status, status_ink(symbol.status)}});
    }
    file = &symbol.file;
    page.row(table, table.rows[i], widths, 4);
  }
  omitted_line(page, pack.symbols_omitted, "more symbol", "more symbols");
}

/// Callers in the ink of what ties them to the symbol above.
Table caller_table(const std::vector<CallerRow>& callers, std::string_view mark, Ink evidence) {
  Table table = {{{}, {false, Shrink::START}, {false, Shrink::MIDDLE}}, {}};
  for (const CallerRow& caller : callers) {
    table.rows.push_back({{std::string(mark), evidence},
                          {std::string(beyond_file(caller.fqn, caller.file)), evidence},
                          {caller.file + ":" + std::to_string(caller.call_line), Ink::DIM}});
  }
  return table;
}

void called_line(TextPage& page, const std::string& fqn) {
  page.line(
      {{"  "}, {shortened_start(fqn, page.width() - 2, page.mark("\u2026", "...")), Ink::BOLD}});
}

void callers(TextPage& page, const PackView& pack) {
  if (pack.callers.empty() && pack.callers_omitted <= 0) return;
  heading(page, "Callers", "each proven by a call edge");
  const Table table = caller_table(pack.callers, page.mark("\u25cf", "*"), Ink::GREEN);
  const auto widths = page.fitted_widths(table, 4);
  for (std::size_t i = 0; i < pack.callers.size(); ++i) {
    if (i == 0 || pack.callers[i].calls != pack.callers[i - 1].calls) {
      called_line(page, pack.callers[i].calls);
    }
    page.row(table, table.rows[i], widths, 4);
  }
  omitted_line(page, pack.callers_omitted, "more caller", "more callers");
}

void neighbours(TextPage& page, const PackView& pack) {
  if (pack.neighbours.empty() && pack.neighbours_omitted <= 0) return;
  heading(page, "Possible callers", "guessed: they may call another definition of the name");
  const Table table = caller_table(pack.neighbours, "?", Ink::YELLOW);
  const auto widths = page.fitted_widths(table, 6);
  for (std::size_t i = 0; i < pack.neighbours.size(); ++i) {
    const CallerRow& caller = pack.neighbours[i];
    const bool other_callee = i == 0 || caller.calls != pack.neighbours[i - 1].calls;
    if (other_callee) called_line(page, caller.calls);
    if (other_callee || doubt(caller) != doubt(pack.neighbours[i - 1])) {
      page.paragraph(doubt(caller), Ink::YELLOW, 4);
    }
    page.row(table, table.rows[i], widths, 6);
  }
  omitted_line(page, pack.neighbours_omitted, "more possible caller", "more possible callers");
}

void snippet(TextPage& page, const SnippetRow& row) {
  const std::string ellipsis(page.mark("\u2026", "..."));
  const std::string lines = ":" + line_range(row.line, row.end_line);
  page.line({{"  "},
             {shortened_middle(row.file, page.width() - 2 - lines.size(), ellipsis), Ink::BOLD},
             {lines, Ink::BOLD}});
  const std::size_t digits = std::to_string(row.end_line).size();
  const std::string bar(page.mark(" \u2502 ", " | "));
  std::int64_t number = row.line;
  for (const std::string_view line : text_lines::split_lines(row.content)) {
    const std::string shown = std::to_string(number++);
    const std::string padding(4 + digits - std::min(digits, shown.size()), ' ');
    const std::size_t room = page.width() - 4 - digits - 3;
    page.line(
        {{padding + shown + bar, Ink::DIM}, {shortened_end(plain_line(line), room, ellipsis)}});
  }
}

void snippets(TextPage& page, const PackView& pack) {
  if (pack.snippets.empty()) return;
  heading(page, "First changed lines", "as the reviewed commit has them");
  bool first = true;
  for (const SnippetRow& row : pack.snippets) {
    if (!std::exchange(first, false)) page.blank_line();
    snippet(page, row);
  }
}

void wiki_pages(TextPage& page, const PackView& pack) {
  if (pack.wiki_pages.empty()) return;
  heading(page, "Wiki pages", "built from the changed files");
  for (const WikiRow& row : pack.wiki_pages) {
    page.line({{"  "},
               row.stale ? Piece{"stale   ", Ink::YELLOW} : Piece{"current ", Ink::GREEN},
               {shortened_end(row.title.empty() ? row.page : row.title, page.width() - 10,
                              page.mark("\u2026", "..."))}});
    page.paragraph(row.page + (verdict(row).empty() ? "" : ": " + verdict(row)), Ink::DIM, 10);
  }
}

void closing(TextPage& page, const PackView& pack, const LeftOut& left) {
  if (!left.by_budget.empty()) {
    page.blank_line();
    page.paragraph("Left out to fit the budget: " + left.by_budget + " (" +
                       counted(pack.tokens_used, "token", "tokens") + " used). --budget " +
                       std::to_string(left.budget) + " shows more.",
                   Ink::YELLOW);
  }
  if (left.by_limits.empty()) return;
  page.blank_line();
  page.paragraph(left.by_limits, Ink::DIM);
}

/// What must be known before the rows are read.
void remarks(TextPage& page, const PackView& pack, const ReportStyle& style) {
  for (const std::string& remark : style.remarks) page.paragraph(plain_text(remark), Ink::DIM);
  if (pack.message) page.paragraph(with_option_names(*pack.message), Ink::PLAIN);
  if (pack.warning) page.paragraph("warning: " + *pack.warning, Ink::YELLOW);
  if (pack.error) page.paragraph("error: " + *pack.error, Ink::RED);
}

}  // namespace

std::string render_text(const json::Mapping& pack, const ReportStyle& style) {
  const PackView view = read_pack(pack, plain_text);
  TextPage page(style);
  comparison(page, view);
  totals(page, view);
  excluded(page, view);
  remarks(page, view, style);
  files(page, view);
  symbols(page, view);
  callers(page, view);
  neighbours(page, view);
  wiki_pages(page, view);
  snippets(page, view);
  closing(page, view, left_out(pack, style));
  return page.finish();
}

}  // namespace context_delta::render
