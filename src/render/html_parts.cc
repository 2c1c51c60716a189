#include "render/html_parts.h"

#include <algorithm>
#include <array>

#include "render/wording.h"

namespace context_delta::render {

Section::Section(Markup& page, std::string_view id, std::string_view title, std::string_view remark)
    : element_(page.open(
          "section", {{"id", std::string(id)}, {"aria-labelledby", std::string(id) + "-title"}})) {
  page.add_heading({std::string(id), std::string(title)});
  page.leaf("h2", {{"id", std::string(id) + "-title"}}, title);
  if (!remark.empty()) page.leaf("p", {{"class", "remark"}}, remark);
}

void write_name(Markup& page, std::string_view name) { page.leaf("code", {}, name); }

namespace {

/// A name whose end from `last` on stands out.
void write_parted(Markup& page, std::string_view name, std::size_t last) {
  const auto code = page.open("code");
  if (last > 0) page.leaf("span", {{"class", "quiet"}}, name.substr(0, last));
  page.leaf("b", {}, name.substr(last));
}

}  // namespace

void write_path(Markup& page, std::string_view path) {
  const std::size_t slash = path.rfind('/');
  write_parted(page, path, slash == path.npos ? 0 : slash + 1);
}

void write_qualified_name(Markup& page, std::string_view fqn) {
  const std::size_t separator = fqn.find_last_of(".:/#");
  write_parted(page, fqn, separator == fqn.npos ? 0 : separator + 1);
}

std::string lines_spanned(const SymbolRow& symbol) {
  return (symbol.end_line > symbol.line ? "lines " : "line ") +
         line_range(symbol.line, symbol.end_line, "\u2013");
}

std::string status_class(std::string_view status) {
  static constexpr std::array<std::string_view, 6> STATUSES = {
      "added", "modified", "deleted", "renamed", "copied", "type_changed"};
  const bool known = std::find(STATUSES.begin(), STATUSES.end(), status) != STATUSES.end();
  return std::string(known ? status : "other");
}

void write_status(Markup& page, std::string_view status) {
  if (status.empty()) return;
  page.leaf("span", {{"class", "status " + status_class(status)}},
            status == "type_changed" ? "type changed" : status);
}

void write_line_counts(Markup& page, std::int64_t additions, std::int64_t deletions) {
  const auto counts = page.open("span", {{"class", "counts"}});
  page.leaf("span", {{"class", "plus"}}, "+" + grouped(additions));
  page.text(" ");
  page.leaf("span", {{"class", "minus"}}, "\u2212" + grouped(deletions));
}

void write_evidence(Markup& page, bool proven) {
  const auto mark = page.open("span", {{"class", proven ? "evidence proven" : "evidence guessed"}});
  page.leaf("span", {{"class", "mark"}, {"aria-hidden", "true"}}, proven ? "\u25cf" : "?");
  page.text(proven ? "proven" : "guessed");
}

void write_legend(Markup& page) {
  const auto line = [&](const char* kind) {
    const auto svg = page.open("svg", {{"class", "line"},
                                       {"viewBox", "0 0 40 10"},
                                       {"width", 40},
                                       {"height", 10},
                                       {"aria-hidden", "true"}});
    page.empty("path", {{"class", std::string("edge ") + kind}, {"d", "M1 5H39"}});
  };
  const auto list = page.open("ul", {{"class", "legend"}});
  {
    const auto item = page.open("li");
    line("proven");
    write_evidence(page, true);
    page.text(": a call edge names this definition");
  }
  {
    const auto item = page.open("li");
    line("guessed");
    write_evidence(page, false);
    page.text(": may call another definition of the name");
  }
}

void write_omitted(Markup& page, std::int64_t omitted, std::string_view one,
                   std::string_view many) {
  if (omitted <= 0) return;
  const auto line = page.open("p", {{"class", "omitted"}});
  page.text("\u2026 and " + grouped(omitted) + " " + std::string(omitted == 1 ? one : many) + ": ");
  page.leaf("a", {{"href", "#left-out"}},
            "how to get " + std::string(omitted == 1 ? "it" : "them"));
}

std::string file_target(const LinkedPack& linked, std::size_t file) {
  return (linked.files[file].has_details() ? "f" : "r") + std::to_string(file);
}

}  // namespace context_delta::render
