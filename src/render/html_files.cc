#include "render/html_files.h"

#include <algorithm>

#include "render/html_parts.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

constexpr std::size_t UNFOLDED_FILES = 40;

/// The largest numbers of the table: what bars are drawn against.
struct Scale {
  std::int64_t references = 0;
  std::int64_t symbols = 0;
  double lines = 0;
};

double changed_lines(const FileRow& file) {
  return static_cast<double>(std::max<std::int64_t>(file.additions, 0)) +
         static_cast<double>(std::max<std::int64_t>(file.deletions, 0));
}

Scale scale_of(const PackView& pack) {
  Scale scale;
  for (const FileRow& file : pack.files) {
    scale.references = std::max(scale.references, file.references);
    scale.symbols = std::max(scale.symbols, file.symbols);
    scale.lines = std::max(scale.lines, changed_lines(file));
  }
  return scale;
}

void bar_part(Markup& page, const char* kind, std::int64_t start, std::int64_t length) {
  if (length <= 0) return;
  page.empty(
      "rect",
      {{"class", kind}, {"x", percent(start)}, {"width", percent(length)}, {"height", "100%"}});
}

Markup::Element bar(Markup& page) {
  return page.open("svg", {{"class", "bar"}, {"aria-hidden", "true"}});
}

void number_cell(Markup& page, std::int64_t number, std::int64_t most, const char* kind) {
  const auto cell = page.open("td", {{"class", number <= 0 ? "number none" : "number"}});
  page.leaf("span", {{"class", "figure"}}, grouped(number));
  const auto drawn = bar(page);
  bar_part(page, kind, 0, thousandths(number, most));
}

void lines_cell(Markup& page, const FileRow& file, double most) {
  const auto cell = page.open("td", {{"class", "number lines"}});
  write_line_counts(page, file.additions, file.deletions);
  const auto share = [&](std::int64_t lines) {
    if (lines <= 0 || most <= 0) return std::int64_t{0};
    const auto part = static_cast<std::int64_t>(static_cast<double>(lines) / most * 1000.0);
    return std::max<std::int64_t>(part, 5);
  };
  const auto drawn = bar(page);
  const std::int64_t added = share(file.additions);
  bar_part(page, "added", 0, added);
  bar_part(page, "deleted", added, share(file.deletions));
}

void file_row(Markup& page, const LinkedPack& linked, std::size_t place, const Scale& scale) {
  const LinkedFile& file = linked.files[place];
  const auto row = page.open("tr", {{"id", "r" + std::to_string(place)}});
  {
    const auto head = page.open("th", {{"scope", "row"}});
    if (file.has_details()) {
      const auto link = page.open("a", {{"href", "#" + file_target(linked, place)}});
      write_path(page, file.path);
    } else {
      write_path(page, file.path);
    }
    page.text(" ");
    write_status(page, file.row->status);
    if (file.row->old_path && *file.row->old_path != file.path) {
      const auto was = page.open("span", {{"class", "was"}});
      page.text("was ");
      write_name(page, *file.row->old_path);
    }
  }
  number_cell(page, file.row->references, scale.references, "references");
  number_cell(page, file.row->symbols, scale.symbols, "symbols");
  lines_cell(page, *file.row, scale.lines);
}

void table(Markup& page, const LinkedPack& linked, const std::vector<std::size_t>& places,
           std::size_t first, std::size_t last, const Scale& scale) {
  const auto files = page.open("table", {{"class", "files"}});
  page.leaf("caption", {{"class", "unseen"}},
            first == 0 ? "Changed files by impact" : "More changed files by impact");
  {
    const auto head = page.open("thead");
    const auto row = page.open("tr");
    page.leaf("th", {{"scope", "col"}}, "File");
    page.leaf("th", {{"scope", "col"}, {"class", "number"}}, "References");
    page.leaf("th", {{"scope", "col"}, {"class", "number"}}, "Symbols");
    page.leaf("th", {{"scope", "col"}, {"class", "number"}}, "Lines");
  }
  const auto body = page.open("tbody");
  for (std::size_t i = first; i < last; ++i) file_row(page, linked, places[i], scale);
}

}  // namespace

void write_files(Markup& page, const LinkedPack& linked) {
  const PackView& pack = *linked.pack;
  if (pack.files.empty() && pack.files_omitted <= 0) return;
  const Section section(page, "files", "Files by impact",
                        "most depended on first: references come from other files and are proven; "
                        "symbols are all that the file defines");
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < linked.files.size(); ++i) {
    if (linked.files[i].row != nullptr) places.push_back(i);
  }
  const Scale scale = scale_of(pack);
  const std::size_t unfolded = std::min(UNFOLDED_FILES, places.size());
  if (unfolded > 0) table(page, linked, places, 0, unfolded, scale);
  if (places.size() > unfolded) {
    const auto rest = page.open("details", {{"class", "more"}});
    const auto number = static_cast<std::int64_t>(places.size() - unfolded);
    page.leaf("summary", {}, grouped(number) + (number == 1 ? " more file" : " more files"));
    table(page, linked, places, unfolded, places.size(), scale);
  }
  write_omitted(page, pack.files_omitted, "more file", "more files");
}

}  // namespace context_delta::render
