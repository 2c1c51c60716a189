#include "render/text_page.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "render/display_text.h"

namespace context_delta::render {
namespace {

constexpr std::size_t LEAST_WIDTH = 48;
constexpr std::size_t COMFORTABLE_COLUMN = 20;
constexpr std::size_t LEAST_COLUMN = 8;
constexpr std::size_t COLUMN_GAP = 2;

/// The widest column of these kinds that is still wider than `least`; null when there is none.
std::size_t* widest(const std::vector<Column>& columns, std::vector<std::size_t>& widths,
                    std::initializer_list<Shrink> kinds, std::size_t least) {
  std::size_t* found = nullptr;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const bool shrinks = std::find(kinds.begin(), kinds.end(), columns[i].shrink) != kinds.end();
    if (!shrinks || widths[i] <= least) continue;
    if (found == nullptr || widths[i] > *found) found = &widths[i];
  }
  return found;
}

/// The column to take a character from: what may lose its end goes before what is cut within.
std::size_t* next_to_shrink(const std::vector<Column>& columns, std::vector<std::size_t>& widths) {
  for (const std::size_t least : {COMFORTABLE_COLUMN, LEAST_COLUMN}) {
    if (std::size_t* column = widest(columns, widths, {Shrink::END}, least)) return column;
    const std::initializer_list<Shrink> others = {Shrink::START, Shrink::MIDDLE};
    if (std::size_t* column = widest(columns, widths, others, least)) return column;
  }
  return nullptr;
}

std::string cell_text(const Column& column, const std::string& text, std::size_t width,
                      std::string_view ellipsis) {
  std::string shown = column.shrink == Shrink::START    ? shortened_start(text, width, ellipsis)
                      : column.shrink == Shrink::MIDDLE ? shortened_middle(text, width, ellipsis)
                      : column.shrink == Shrink::END    ? shortened_end(text, width, ellipsis)
                                                        : text;
  const std::size_t used = display_width(shown);
  const std::string padding(width > used ? width - used : 0, ' ');
  return column.right ? padding + shown : shown + padding;
}

}  // namespace

TextPage::TextPage(const ReportStyle& style)
    : width_(std::max(style.width, LEAST_WIDTH)), colour_(style.colour), unicode_(style.unicode) {}

std::string_view TextPage::mark(std::string_view fancy, std::string_view simple) const {
  return unicode_ ? fancy : simple;
}

void TextPage::line(const Pieces& pieces) {
  Pieces kept = pieces;
  while (!kept.empty()) {
    std::string& last = kept.back().text;
    last.erase(last.find_last_not_of(' ') + 1);
    if (!last.empty()) break;
    kept.pop_back();
  }
  for (const Piece& piece : kept) {
    if (!colour_ || piece.ink == Ink::PLAIN || piece.text.empty()) {
      text_ += piece.text;
    } else {
      text_ += "\x1b[" + std::to_string(static_cast<int>(piece.ink)) + "m" + piece.text + "\x1b[0m";
    }
  }
  text_ += '\n';
}

void TextPage::paragraph(std::string_view text, Ink ink, std::size_t indent) {
  for (const std::string& part : wrapped(text, width_ - indent)) {
    line({{std::string(indent, ' ')}, {part, ink}});
  }
}

void TextPage::flow(const std::vector<Pieces>& parts) {
  const Piece separator = {std::string(mark(" \u00b7 ", ", "))};
  Pieces current;
  std::size_t used = 0;
  for (const Pieces& part : parts) {
    std::size_t part_width = 0;
    for (const Piece& piece : part) part_width += display_width(piece.text);
    if (part_width == 0) continue;
    if (used > 0 && used + 3 + part_width > width_) {
      line(std::exchange(current, {}));
      used = 0;
    }
    if (used > 0) current.push_back(separator);
    used += part_width + (used > 0 ? display_width(separator.text) : 0);
    current.insert(current.end(), part.begin(), part.end());
  }
  line(current);
}

void TextPage::blank_line() { text_ += '\n'; }

std::vector<std::size_t> TextPage::fitted_widths(const Table& table, std::size_t indent) const {
  std::vector<std::size_t> widths(table.columns.size(), 0);
  for (const Pieces& cells : table.rows) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      widths[i] = std::max(widths[i], display_width(cells[i].text));
    }
  }
  std::size_t used = indent + COLUMN_GAP * (widths.size() - 1);
  for (const std::size_t width : widths) used += width;
  while (used > width_) {
    std::size_t* column = next_to_shrink(table.columns, widths);
    if (column == nullptr) break;
    --*column;
    --used;
  }
  return widths;
}

void TextPage::row(const Table& table, const Pieces& cells, const std::vector<std::size_t>& widths,
                   std::size_t indent) {
  Pieces pieces = {{std::string(indent, ' ')}};
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) pieces.push_back({std::string(COLUMN_GAP, ' ')});
    pieces.push_back(
        {cell_text(table.columns[i], cells[i].text, widths[i], ellipsis()), cells[i].ink});
  }
  line(pieces);
}

}  // namespace context_delta::render
