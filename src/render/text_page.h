#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "render/report_style.h"

/// The lines, colours and columns that a text is made of.
namespace context_delta::render {

/// How a piece of text stands out: what the terminal is told in its SGR parameter.
enum class Ink : unsigned char {
  PLAIN = 0,
  BOLD = 1,
  DIM = 2,
  RED = 31,
  GREEN = 32,
  YELLOW = 33,
  MAGENTA = 35,
  CYAN = 36,
};

struct Piece {
  std::string text;
  Ink ink = Ink::PLAIN;
};

using Pieces = std::vector<Piece>;

/// What becomes of a column for which there is no room.
enum class Shrink : unsigned char { NEVER, START, MIDDLE, END };

struct Column {
  bool right = false;  ///< aligned to the right
  Shrink shrink = Shrink::NEVER;
};

/// Rows of cells, one piece each; all rows have as many cells as there are columns.
struct Table {
  std::vector<Column> columns;
  std::vector<Pieces> rows;
};

/// The text being written, line by line.
class TextPage {
 public:
  explicit TextPage(const ReportStyle& style);

  /// Columns of a line.
  std::size_t width() const { return width_; }
  /// `fancy` where the style allows characters beyond ASCII, `simple` elsewhere.
  std::string_view mark(std::string_view fancy, std::string_view simple) const;

  /// A line, without spaces at its end.
  void line(const Pieces& pieces);
  /// A line in one ink, broken at spaces; every line of it is indented.
  void paragraph(std::string_view text, Ink ink, std::size_t indent = 0);
  /// Parts with dots between them; a part that does not fit begins the next line.
  void flow(const std::vector<Pieces>& parts);
  void blank_line();

  /// Column widths that let the rows of `table`, indented, fit a line: columns that may lose their
  /// end give way first, the widest before the others.
  std::vector<std::size_t> fitted_widths(const Table& table, std::size_t indent) const;
  /// The row in these widths, two spaces between columns.
  void row(const Table& table, const Pieces& cells, const std::vector<std::size_t>& widths,
           std::size_t indent);

  std::string finish() { return std::move(text_); }

 private:
  std::string_view ellipsis() const { return mark("\u2026", "..."); }

  std::size_t width_;
  bool colour_;
  bool unicode_;
  std::string text_;
};

}  // namespace context_delta::render
