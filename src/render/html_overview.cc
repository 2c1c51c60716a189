#include "render/html_overview.h"

#include <algorithm>
#include <string>

#include "render/html_parts.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

void headline(Markup& page, const PackView& pack) {
  page.leaf("p", {{"class", "product"}}, "Context Delta");
  const auto heading = page.open("h1");
  if (!pack.base_branch || !pack.target_branch) {
    page.text(pack.error ? "The branches could not be compared" : "Delta context pack");
    return;
  }
  write_name(page, *pack.target_branch);
  page.leaf("span", {{"class", "since"}}, " since it left ");
  write_name(page, *pack.base_branch);
}

/// A figure at a glance; the remark may be empty.
class Tile {
 public:
  Tile(Markup& page, std::string_view label) : group_(page.open("div")) {
    page.leaf("dt", {}, label);
  }

 private:
  Markup::Element group_;
};

void tile(Markup& page, std::string_view label, std::int64_t number, std::string_view remark) {
  const Tile group(page, label);
  page.leaf("dd", {}, grouped(number));
  if (!remark.empty()) page.leaf("dd", {{"class", "remark"}}, remark);
}

std::string of_files(std::int64_t omitted) { return omitted > 0 ? "in the files listed" : ""; }

std::string listed(std::size_t rows, std::int64_t omitted) {
  if (omitted <= 0) return "";
  return grouped(static_cast<std::int64_t>(rows)) + " listed";
}

void lines_tile(Markup& page, const FileTotals& totals, std::int64_t files_omitted) {
  const Tile group(page, "Lines");
  {
    const auto counts = page.open("dd");
    write_line_counts(page, totals.additions, totals.deletions);
  }
  if (files_omitted > 0) page.leaf("dd", {{"class", "remark"}}, of_files(files_omitted));
}

/// A pack looks for the callers of its first symbols only.
void callers_tile(Markup& page, std::string_view label, std::size_t rows, std::int64_t omitted) {
  const std::string remark = listed(rows, omitted);
  tile(page, label,
       bounded_sum(static_cast<std::int64_t>(rows), std::max<std::int64_t>(omitted, 0)),
       remark.empty() ? "of the first symbols" : "of the first symbols, " + remark);
}

void figures(Markup& page, const PackView& pack) {
  const FileTotals totals = file_totals(pack);
  const auto list = page.open("dl", {{"class", "figures"}});
  tile(page, pack.commit_count == 1 ? "Commit" : "Commits", pack.commit_count, "");
  tile(page, pack.total_changed_files == 1 ? "Changed file" : "Changed files",
       pack.total_changed_files, listed(pack.files.size(), pack.files_omitted));
  lines_tile(page, totals, pack.files_omitted);
  tile(page, "Changed symbols", pack.total_changed_symbols,
       listed(pack.symbols.size(), pack.symbols_omitted));
  tile(page, "References from other files", totals.references, of_files(pack.files_omitted));
  callers_tile(page, "Proven callers", pack.callers.size(), pack.callers_omitted);
  callers_tile(page, "Guessed callers", pack.neighbours.size(), pack.neighbours_omitted);
}

void navigation(Markup& page, const std::vector<Heading>& headings) {
  if (headings.size() < 2) return;
  const auto element = page.open("nav", {{"aria-label", "Sections"}});
  const auto list = page.open("ul");
  for (const Heading& heading : headings) {
    const auto item = page.open("li");
    page.leaf("a", {{"href", "#" + heading.id}}, heading.title);
  }
}

void excluded(Markup& page, const PackView& pack) {
  if (pack.excluded_files <= 0 || pack.message) return;
  const bool one = pack.excluded_files == 1;
  const auto line = page.open("p", {{"class", "remark"}});
  page.text(grouped(pack.excluded_files) +
            (one ? " more changed file is" : " more changed files are") +
            " no production source: tests, documents, generated. ");
  write_name(page, "--all-files");
  page.text(one ? " lists it." : " lists them.");
}

void notice(Markup& page, const char* kind, const char* label, const std::string& text) {
  const auto paragraph = page.open("p", {{"class", std::string("notice ") + kind}});
  page.leaf("strong", {}, label);
  page.text(" ");
  page.leaf("bdi", {}, text);
}

}  // namespace

void write_overview(Markup& page, const PackView& pack, const std::vector<Heading>& headings) {
  {
    const auto header = page.open("header");
    headline(page, pack);
    if (pack.commit_count > 0 || pack.total_changed_files > 0) figures(page, pack);
    excluded(page, pack);
  }
  navigation(page, headings);
}

void write_notices(Markup& page, const PackView& pack, const ReportStyle& style) {
  if (pack.error) notice(page, "error", "Error", *pack.error);
  if (pack.warning) notice(page, "warning", "Warning", *pack.warning);
  if (pack.message) notice(page, "message", "Nothing to review", with_option_names(*pack.message));
  for (const std::string& remark : style.remarks) notice(page, "message", "Note", remark);
}

}  // namespace context_delta::render
