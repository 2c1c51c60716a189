#include "render/formats.h"

#include <array>

#include "render/html.h"
#include "render/json_line.h"
#include "render/markdown.h"
#include "render/text.h"

namespace context_delta::render {
namespace {

std::string json(const json::Mapping& pack, const ReportStyle&) { return render_json(pack); }

constexpr std::array FORMATS = {
    Format{"text", "for a person at a terminal", false, render_text},
    Format{"json", "for a program, on one line", true, json},
    Format{"markdown", "for a pull-request comment", false, render_markdown},
    Format{"html", "a page for a browser", false, render_html},
};

std::string joined_names() {
  std::string names;
  for (const Format& format : FORMATS) {
    names.append(names.empty() ? "" : "|").append(format.name);
  }
  return names;
}

}  // namespace

std::span<const Format> formats() { return FORMATS; }

const Format* find_format(std::string_view name) {
  for (const Format& format : FORMATS) {
    if (format.name == name) return &format;
  }
  return nullptr;
}

std::string_view format_names() {
  static const std::string names = joined_names();
  return names;
}

}  // namespace context_delta::render
