#include "render/markdown.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "render/display_text.h"
#include "render/left_out.h"
#include "render/markdown_text.h"
#include "render/pack_view.h"
#include "render/wording.h"
#include "utils/text_lines.h"

namespace context_delta::render {
namespace {

constexpr std::string_view ELLIPSIS = "\u2026";
constexpr std::string_view DASH = "\u2013";
constexpr std::size_t NAME_COLUMNS = 200;
constexpr std::size_t PROSE_COLUMNS = 500;
constexpr std::size_t CODE_COLUMNS = 240;
constexpr std::size_t CLOSING_BYTES = 1'000;
constexpr std::size_t SECTION_BYTES = 200;  // that every section takes beside title and rows

/// At most four bytes for each column: combining characters take none.
std::string within_bytes(std::string text, std::size_t columns) {
  std::size_t end = columns * 4;
  if (text.size() <= end) return text;
  while (end > 0 && (text[end] & 0xC0) == 0x80) --end;
  return text.substr(0, end).append(ELLIPSIS);
}

std::string name_text(const std::string& name) {
  return within_bytes(shortened_middle(name, NAME_COLUMNS, ELLIPSIS), NAME_COLUMNS);
}

std::string name(const std::string& name) { return code_span(name_text(name)); }

std::string sentence(const std::string& text) {
  return prose(within_bytes(shortened_end(text, PROSE_COLUMNS, ELLIPSIS), PROSE_COLUMNS));
}

std::string bold(const std::string& text) { return "**" + text + "**"; }

/// A part of the report that can be folded away, row by row.
struct Section {
  std::string title;      ///< trusted
  bool open = false;      ///< unfolded at first
  std::string head = {};  ///< before the rows
  std::vector<std::string> rows = {};
  std::int64_t omitted = 0;  ///< rows that the pack itself left out
  std::string_view one;
  std::string_view many;
  std::size_t share = 1;  ///< of the room, against those of the other sections
};

/// Bytes of a section with all its rows, at most.
std::size_t whole_size(const Section& section) {
  std::size_t size = SECTION_BYTES + section.title.size() + section.head.size();
  for (const std::string& row : section.rows) size += row.size();
  return size;
}

/// Divides `room` by the sections' shares; what a section does not need goes to the others.
std::vector<std::size_t> rooms(const std::vector<Section>& sections, std::size_t room) {
  std::vector<std::size_t> result(sections.size(), 0);
  std::size_t shares = 0;
  for (const Section& section : sections) shares += section.share;
  for (bool granted = true; std::exchange(granted, false);) {
    for (std::size_t i = 0; i < sections.size(); ++i) {
      const std::size_t need = whole_size(sections[i]);
      if (result[i] > 0 || need > room * sections[i].share / shares) continue;
      result[i] = need;
      room -= need;
      shares -= sections[i].share;
      granted = shares > 0;
    }
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    if (result[i] == 0) result[i] = room * sections[i].share / shares;
  }
  return result;
}

/// Writes as many rows of a section as `room` bytes hold; returns how many.
std::size_t write_section(std::string& report, const Section& section, std::size_t room) {
  const std::string opening = std::string("\n<details") + (section.open ? " open" : "") +
                              ">\n<summary>" + section.title + "</summary>\n" + section.head;
  const auto closing = [&](std::size_t shown) {
    const std::int64_t missing =
        section.omitted + static_cast<std::int64_t>(section.rows.size() - shown);
    const std::string more =
        missing > 0 ? "\n\u2026 and " + counted(missing, "more", "more") + "\n" : "";
    return more + "\n</details>\n";
  };
  std::size_t used = opening.size() + closing(0).size();
  std::size_t shown = 0;
  while (shown < section.rows.size() && used + section.rows[shown].size() <= room) {
    used += section.rows[shown++].size();
  }
  if (shown == 0) return 0;
  report += opening;
  for (std::size_t i = 0; i < shown; ++i) report += section.rows[i];
  report += closing(shown);
  return shown;
}

/// A word as it is, anything else as code.
std::string word_cell(const std::string& text) {
  return prose(text) == text ? text : code_cell(name_text(text));
}

std::string file_row(const FileRow& file) {
  const auto signed_number = [](std::string_view sign, std::int64_t number) {
    return number == 0 ? std::string() : std::string(sign) + std::to_string(number);
  };
  return "| " + word_cell(file.status) + " | " + code_cell(name_text(file_name(file, " \u2192 "))) +
         " | " + signed_number("+", file.additions) + " | " +
         signed_number("\u2212", file.deletions) + " | " + std::to_string(file.symbols) + " | " +
         std::to_string(file.references) + " |\n";
}

Section files(const PackView& pack) {
  Section section{.title = "<b>Files</b>, the most depended on first",
                  .open = true,
                  .head =
                      "\n| | File | + | \u2212 | Symbols | References |\n"
                      "|---|---|--:|--:|--:|--:|\n",
                  .omitted = pack.files_omitted,
                  .one = "file",
                  .many = "files",
                  .share = 30};
  for (const FileRow& file : pack.files) section.rows.push_back(file_row(file));
  return section;
}

std::string symbol_row(const SymbolRow& symbol) {
  const std::string kind = symbol.kind.empty() ? "" : sentence(symbol.kind) + " ";
  const std::string signature =
      symbol.signature.empty() || symbol.signature == symbol.fqn
          ? ""
          : "<br>" + code_span(within_bytes(shortened_end(symbol.signature, CODE_COLUMNS, ELLIPSIS),
                                            CODE_COLUMNS));
  return "- " + kind + name(symbol.fqn) + ", " +
         (symbol.end_line > symbol.line ? "lines " : "line ") +
         line_range(symbol.line, symbol.end_line, DASH) + signature + "\n";
}

Section symbols(const PackView& pack) {
  Section section{.title = "<b>Changed symbols</b>: " + std::to_string(pack.total_changed_symbols),
                  .omitted = pack.symbols_omitted,
                  .one = "symbol",
                  .many = "symbols",
                  .share = 25};
  for (std::size_t i = 0; i < pack.symbols.size(); ++i) {
    const SymbolRow& symbol = pack.symbols[i];
    std::string row;
    if (i == 0 || symbol.file != pack.symbols[i - 1].file) {
      row = "\n" + name(symbol.file) +
            (symbol.status == "modified" ? "" : " (" + sentence(symbol.status) + ")") + "\n\n";
    }
    section.rows.push_back(row + symbol_row(symbol));
  }
  return section;
}

/// Callers below the symbol that they call and, of guessed ones, why they are only guessed.
void caller_rows(Section& section, const std::vector<CallerRow>& callers, std::string_view verb) {
  for (std::size_t i = 0; i < callers.size(); ++i) {
    const CallerRow& caller = callers[i];
    std::string row;
    if (i == 0 || caller.calls != callers[i - 1].calls || doubt(caller) != doubt(callers[i - 1])) {
      const std::string why = doubt(caller);
      row = "\n" + name(caller.calls) + std::string(verb) +
            (why.empty() ? "" : " (" + sentence(why) + ")") + "\n\n";
    }
    const std::string place = name_text(caller.file) + ":" + std::to_string(caller.call_line);
    section.rows.push_back(row + "- " + name(caller.fqn) + " in " + code_span(place) + "\n");
  }
}

Section callers(const PackView& pack) {
  Section section{.title = "<b>Callers</b>, each proven by a call edge",
                  .omitted = pack.callers_omitted,
                  .one = "caller",
                  .many = "callers",
                  .share = 15};
  caller_rows(section, pack.callers, " is called by");
  return section;
}

Section neighbours(const PackView& pack) {
  Section section{
      .title = "<b>Possible callers</b>, guessed: they may call another definition of the name",
      .omitted = pack.neighbours_omitted,
      .one = "possible caller",
      .many = "possible callers",
      .share = 10};
  caller_rows(section, pack.neighbours, " may be called by");
  return section;
}

Section wiki_pages(const PackView& pack) {
  Section section{.title = "<b>Wiki pages</b> built from the changed files: " +
                           std::to_string(stale_pages(pack)) + " stale of " +
                           std::to_string(pack.wiki_pages.size()),
                  .head = "\n",
                  .one = "wiki page",
                  .many = "wiki pages",
                  .share = 10};
  for (const WikiRow& page : pack.wiki_pages) {
    section.rows.push_back("- " + (page.stale ? bold("stale") : std::string("current")) + ": " +
                           (page.title.empty() ? "" : sentence(page.title) + ", ") +
                           name(page.page) +
                           (verdict(page).empty() ? "" : ": " + sentence(verdict(page))) + "\n");
  }
  return section;
}

std::string snippet_row(const SnippetRow& snippet) {
  std::string lines;
  for (const std::string_view line : text_lines::split_lines(snippet.content)) {
    const std::string shown = shortened_end(plain_line(line), CODE_COLUMNS, ELLIPSIS);
    lines += within_bytes(shown, CODE_COLUMNS) + "\n";
  }
  return "\n" + name(snippet.file) + (snippet.end_line > snippet.line ? ", lines " : ", line ") +
         line_range(snippet.line, snippet.end_line, DASH) + "\n\n" +
         fenced(lines, fence_language(snippet.file));
}

Section snippets(const PackView& pack) {
  Section section{.title = "<b>First changed lines</b> of the first files",
                  .one = "snippet",
                  .many = "snippets",
                  .share = 15};
  for (const SnippetRow& snippet : pack.snippets) section.rows.push_back(snippet_row(snippet));
  return section;
}

std::string summary(const PackView& pack) {
  const FileTotals sum = file_totals(pack);
  std::string line =
      bold(counted(pack.total_changed_files, "file", "files") + " changed") + " (+" +
      std::to_string(sum.additions) + " \u2212" + std::to_string(sum.deletions) +
      (pack.files_omitted > 0 ? " in those listed" : "") + ") in " +
      counted(pack.commit_count, "commit", "commits") + " \u00b7 " +
      bold(counted(pack.total_changed_symbols, "changed symbol", "changed symbols")) + " \u00b7 " +
      counted(sum.references, "reference", "references") + " from other files";
  if (const std::int64_t stale = stale_pages(pack); stale > 0) {
    line += " \u00b7 " + bold(counted(stale, "stale wiki page", "stale wiki pages"));
  }
  if (pack.excluded_files > 0) {
    line += " \u00b7 " + counted(pack.excluded_files, "more file is", "more files are") +
            " no production source";
  }
  return line;
}

std::string head(const PackView& pack, const ReportStyle& style) {
  std::string text = std::string(MARKDOWN_MARKER) + "\n";
  if (pack.base_branch && pack.target_branch) {
    text += "### " + name(*pack.target_branch) + " since it left " + name(*pack.base_branch) + "\n";
  }
  if (!pack.files.empty() || pack.total_changed_files > 0) text += "\n" + summary(pack) + "\n";
  const auto remark = [&](std::string_view title, const std::string& words) {
    text += "\n> **" + std::string(title) + "**: " + sentence(words) + "\n";
  };
  if (pack.error) remark("Error", *pack.error);
  if (pack.message) remark("Nothing to review", with_option_names(*pack.message));
  if (pack.warning) remark("Warning", *pack.warning);
  for (const std::string& note : style.remarks) remark("Note", plain_text(note));
  return text;
}

/// What the budget left out of the pack, and what the length of a comment left out of the report.
std::string closing(const LeftOut& left, const std::string& not_shown) {
  std::string text;
  if (!left.by_budget.empty()) {
    text += "\nLeft out to fit the budget: " + left.by_budget + ". `--budget " +
            std::to_string(left.budget) + "` shows more.\n";
  }
  if (!left.by_limits.empty()) text += "\n" + left.by_limits + "\n";
  if (!not_shown.empty()) {
    text += "\nLeft out to fit a comment: " + not_shown + ". `--format text` shows them all.\n";
  }
  return text;
}

}  // namespace

std::string render_markdown(const json::Mapping& pack, const ReportStyle& style) {
  const PackView view = read_pack(pack, plain_text);
  std::string report = head(view, style);
  const std::vector<Section> sections = {files(view),      symbols(view),    callers(view),
                                         neighbours(view), wiki_pages(view), snippets(view)};
  const auto room = rooms(sections, MOST_MARKDOWN_BYTES - CLOSING_BYTES - report.size());
  std::vector<std::string> not_shown;
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const Section& section = sections[i];
    const std::size_t shown = write_section(report, section, room[i]);
    if (shown == section.rows.size()) continue;
    not_shown.push_back(
        counted(static_cast<std::int64_t>(section.rows.size() - shown), section.one, section.many));
  }
  return report + closing(left_out(pack, style), joined(not_shown));
}

}  // namespace context_delta::render
