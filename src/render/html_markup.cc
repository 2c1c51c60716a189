#include "render/html_markup.h"

#include <algorithm>
#include <array>

#include "render/display_text.h"

namespace context_delta::render {
namespace {

void append_escaped(std::string& page, std::string_view text) {
  for (const char character : text) {
    switch (character) {
      case '&':
        page += "&amp;";
        break;
      case '<':
        page += "&lt;";
        break;
      case '>':
        page += "&gt;";
        break;
      case '"':
        page += "&quot;";
        break;
      case '\'':
        page += "&#39;";
        break;
      default:
        page += character;
    }
  }
}

/// Whether a line of the page's source starts with the element: no space between words hangs on it.
bool starts_line(std::string_view name) {
  static constexpr std::array<std::string_view, 19> NAMES = {
      "article", "details", "div",     "dl",      "figure", "footer", "h1",    "h2", "h3", "header",
      "li",      "main",    "section", "summary", "svg",    "table",  "tbody", "tr", "ul"};
  return std::find(NAMES.begin(), NAMES.end(), name) != NAMES.end();
}

}  // namespace

void Markup::begin(std::string_view name, Attributes attributes) {
  if (starts_line(name)) page_ += '\n';
  page_.append("<").append(name);
  for (const Attribute& attribute : attributes) {
    if (!attribute.value) continue;
    page_.append(" ").append(attribute.name).append("=\"");
    append_escaped(page_, plain_text(*attribute.value));
    page_ += '"';
  }
}

Markup::Element Markup::open(std::string_view name, Attributes attributes) {
  begin(name, attributes);
  page_ += '>';
  return {*this, name};
}

void Markup::close(std::string_view name) { page_.append("</").append(name).append(">"); }

void Markup::leaf(std::string_view name, Attributes attributes, std::string_view content) {
  const Element element = open(name, attributes);
  text(content);
}

void Markup::empty(std::string_view name, Attributes attributes) {
  begin(name, attributes);
  page_ += "/>";
}

void Markup::text(std::string_view text) {
  while (!text.empty()) {
    const std::size_t plain = plain_prefix(text);
    append_escaped(page_, text.substr(0, plain));
    text.remove_prefix(plain);
    const std::size_t odd = odd_prefix(text);
    if (odd == 0) continue;
    page_ += "<span class=\"odd\">";
    append_escaped(page_, plain_text(text.substr(0, odd)));
    page_ += "</span>";
    text.remove_prefix(odd);
  }
}

std::string grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  const std::size_t first = number < 0 ? 1 : 0;
  for (std::size_t at = text.size(); at > first + 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::int64_t thousandths(std::int64_t part, std::int64_t whole) {
  if (part <= 0 || whole <= 0) return 0;
  const double ratio = static_cast<double>(part) / static_cast<double>(whole);
  return std::clamp(static_cast<std::int64_t>(std::min(ratio, 1.0) * 1000.0 + 0.5), std::int64_t{1},
                    std::int64_t{1000});
}

std::string percent(std::int64_t thousandths) {
  return std::to_string(thousandths / 10) + "." + std::to_string(thousandths % 10) + "%";
}

}  // namespace context_delta::render
