#include "render/html_picture.h"

#include <algorithm>
#include <string>

#include "render/display_text.h"
#include "render/html_parts.h"
#include "render/picture_layout.h"
#include "render/wording.h"

namespace context_delta::render {
namespace {

constexpr std::int64_t BOX_WIDTH = 300;
constexpr std::int64_t COLUMN_STEP = 440;
constexpr std::int64_t WIDTH = 2 * COLUMN_STEP + BOX_WIDTH;
constexpr std::int64_t MARGIN = 4;  // for the outline of a box with the focus
constexpr std::int64_t HEAD = 40;
constexpr std::size_t NAME_COLUMNS = 35;   // at 12.5 px
constexpr std::size_t SMALL_COLUMNS = 40;  // at 11 px
constexpr std::string_view ELLIPSIS = "\u2026";

struct Box {
  std::int64_t column;
  std::int64_t top;
  std::int64_t height;
};

std::int64_t middle(std::int64_t top, std::int64_t height) { return HEAD + top + height / 2; }

/// A text in the picture, already fit for its room.
void label(Markup& page, std::int64_t x, std::int64_t y, const char* kind, std::string_view text) {
  page.leaf("text", {{"x", x}, {"y", y}, {"class", kind}}, plain_text(text));
}

/// The frame of a box; what follows is drawn in its own coordinates and clipped to it.
Markup::Element frame(Markup& page, const Box& box) {
  return page.open("svg", {{"x", box.column * COLUMN_STEP},
                           {"y", HEAD + box.top},
                           {"width", BOX_WIDTH},
                           {"height", box.height}});
}

void outline(Markup& page, const Box& box) {
  page.empty("rect", {{"class", "box"},
                      {"x", 1},
                      {"y", 1},
                      {"width", BOX_WIDTH - 2},
                      {"height", box.height - 2},
                      {"rx", 7}});
}

std::string base_name(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? path : path.substr(slash + 1);
}

std::string folder(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? "" : path.substr(0, slash + 1);
}

std::string facts(const LinkedFile& file) {
  if (file.row == nullptr) return "not among the files listed";
  return counted(file.row->references, "reference", "references") + ", +" +
         std::to_string(file.row->additions) + " \u2212" + std::to_string(file.row->deletions);
}

void file_box(Markup& page, const LinkedPack& linked, const PictureNode& node,
              std::int64_t most_references) {
  const LinkedFile& file = linked.files[node.what];
  const std::string status = file.row == nullptr ? "" : file.row->status;
  const Box box{0, node.top, FILE_HEIGHT};
  const auto link = page.open("a", {{"href", "#" + file_target(linked, node.what)},
                                    {"class", "node file " + status_class(status)}});
  page.leaf("title", {}, plain_text(file.path + ": " + status + ", " + facts(file)));
  const auto inside = frame(page, box);
  outline(page, box);
  page.empty("rect",
             {{"class", "stripe"}, {"x", 5}, {"y", 8}, {"width", 4}, {"height", 34}, {"rx", 2}});
  label(page, 15, 19, "name",
        shortened_middle(plain_text(base_name(file.path)), NAME_COLUMNS, ELLIPSIS));
  label(page, 15, 35, "small",
        shortened_middle(plain_text(folder(file.path)), SMALL_COLUMNS, ELLIPSIS));
  if (file.row == nullptr || file.row->references <= 0) return;
  const std::int64_t length =
      thousandths(file.row->references, most_references) * (BOX_WIDTH - 30) / 1000;
  page.empty("rect", {{"class", "impact"},
                      {"x", 15},
                      {"y", 41},
                      {"width", std::max<std::int64_t>(length, 2)},
                      {"height", 4},
                      {"rx", 2}});
}

/// Rows of callers that the picture has no line for.
std::size_t callers_not_shown(const LinkedSymbol& symbol, const Picture& picture,
                              std::size_t place) {
  const auto shown = static_cast<std::size_t>(
      std::count_if(picture.calls.begin(), picture.calls.end(),
                    [&](const PictureCall& call) { return call.symbol == place; }));
  return symbol.callers.size() + symbol.neighbours.size() - shown;
}

void symbol_box(Markup& page, const SymbolRow& symbol, const PictureNode& node,
                std::size_t more_callers) {
  const Box box{1, node.top, SYMBOL_HEIGHT};
  const auto link =
      page.open("a", {{"href", "#s" + std::to_string(node.what)}, {"class", "node symbol"}});
  const std::string lines = lines_spanned(symbol);
  page.leaf("title", {},
            plain_text(symbol.fqn + ": " + symbol.kind + ", " + symbol.file + ", " + lines));
  const auto inside = frame(page, box);
  outline(page, box);
  label(page, 14, 17, "name", shortened_start(plain_text(symbol.fqn), NAME_COLUMNS, ELLIPSIS));
  label(page, 14, 33, "small",
        shortened_end(plain_text(symbol.kind), SMALL_COLUMNS - 26, ELLIPSIS) + ", " + lines);
  if (more_callers == 0) return;
  label(page, BOX_WIDTH - 12, 33, "more",
        "+" + counted(static_cast<std::int64_t>(more_callers), "call", "calls"));
}

void caller_box(Markup& page, const PictureCaller& caller) {
  const Box box{2, caller.top, CALLER_HEIGHT};
  const CallerRow& row = *caller.row;
  const std::string place = ":" + std::to_string(row.call_line);
  const auto link =
      page.open("a", {{"href", "#" + caller.anchor},
                      {"class", caller.proven ? "node caller proven" : "node caller guessed"}});
  page.leaf("title", {},
            plain_text(row.fqn + ": " + (caller.proven ? "proven" : "guessed") + " caller, " +
                       row.file + place));
  const auto inside = frame(page, box);
  outline(page, box);
  label(page, 13, 26, "mark", caller.proven ? "\u25cf" : "?");
  label(page, 30, 17, "name", shortened_start(plain_text(row.fqn), NAME_COLUMNS - 2, ELLIPSIS));
  const std::size_t room = SMALL_COLUMNS - 2 - std::min<std::size_t>(place.size(), 20);
  label(page, 30, 33, "small", shortened_middle(plain_text(row.file), room, ELLIPSIS) + place);
}

/// A line from the right side of a box to the left side of one in the next column.
void edge(Markup& page, const char* kind, std::int64_t column, std::int64_t from, std::int64_t to) {
  const std::int64_t start = column * COLUMN_STEP + BOX_WIDTH;
  const std::int64_t end = (column + 1) * COLUMN_STEP;
  const std::string bend = std::to_string((start + end) / 2);
  page.empty("path", {{"class", std::string("edge ") + kind},
                      {"d", "M" + std::to_string(start) + " " + std::to_string(from) + "C" + bend +
                                " " + std::to_string(from) + " " + bend + " " + std::to_string(to) +
                                " " + std::to_string(end) + " " + std::to_string(to)}});
}

/// A symbol with all its lines: one group, so that pointing at the symbol brings them out.
void knot(Markup& page, const LinkedPack& linked, const Picture& picture, std::size_t symbol) {
  const PictureNode& node = picture.symbols[symbol];
  const auto group = page.open("g", {{"class", "knot"}});
  const std::int64_t height = middle(node.top, SYMBOL_HEIGHT);
  for (const PictureNode& file : picture.files) {
    if (file.what != linked.symbols[node.what].file) continue;
    edge(page, "holds", 0, middle(file.top, FILE_HEIGHT), height);
  }
  for (const PictureCall& call : picture.calls) {
    if (call.symbol != symbol) continue;
    edge(page, call.proven ? "proven" : "guessed", 1, height,
         middle(picture.callers[call.caller].top, CALLER_HEIGHT));
  }
  symbol_box(page, linked.pack->symbols[node.what], node,
             callers_not_shown(linked.symbols[node.what], picture, symbol));
}

std::string column_title(std::string_view what, std::size_t shown, std::int64_t all) {
  return std::string(what) + " \u00b7 " + grouped(static_cast<std::int64_t>(shown)) + " of " +
         grouped(all);
}

void column_titles(Markup& page, const LinkedPack& linked, const Picture& picture) {
  const PackView& pack = *linked.pack;
  const auto at_least = [](std::int64_t number, std::size_t shown) {
    return std::max(number, static_cast<std::int64_t>(shown));
  };
  label(page, 2, 18, "column",
        column_title("Changed files", picture.files.size(),
                     at_least(pack.total_changed_files, picture.files.size())));
  label(page, COLUMN_STEP + 2, 18, "column",
        column_title("Changed symbols", picture.symbols.size(),
                     at_least(pack.total_changed_symbols, picture.symbols.size())));
  label(page, 2 * COLUMN_STEP + 2, 18, "column",
        picture.callers.empty() ? "Callers \u00b7 none listed"
                                : column_title("Callers", picture.callers.size(),
                                               static_cast<std::int64_t>(picture.all_callers)) +
                                      " listed");
}

std::string description(const Picture& picture) {
  std::int64_t proven = 0;
  for (const PictureCall& call : picture.calls) proven += call.proven ? 1 : 0;
  const auto calls = static_cast<std::int64_t>(picture.calls.size());
  return "Lines lead from " +
         counted(static_cast<std::int64_t>(picture.files.size()), "changed file", "changed files") +
         " to " +
         counted(static_cast<std::int64_t>(picture.symbols.size()), "changed symbol",
                 "changed symbols") +
         " and on to " +
         counted(static_cast<std::int64_t>(picture.callers.size()), "caller", "callers") + ": " +
         counted(proven, "proven call", "proven calls") + " (solid lines) and " +
         counted(calls - proven, "guessed call", "guessed calls") +
         " (dashed lines). The lists below the picture hold the same in words.";
}

void drawing(Markup& page, const LinkedPack& linked, const Picture& picture) {
  const std::int64_t height = HEAD + picture.height;
  const auto svg = page.open(
      "svg", {{"class", "picture"},
              {"viewBox", std::to_string(-MARGIN) + " 0 " + std::to_string(WIDTH + 2 * MARGIN) +
                              " " + std::to_string(height + MARGIN)},
              {"role", "group"},
              {"aria-labelledby", "drawing-title drawing-words"}});
  page.leaf("title", {{"id", "drawing-title"}}, "Changed files, changed symbols and their callers");
  page.leaf("desc", {{"id", "drawing-words"}}, description(picture));
  column_titles(page, linked, picture);
  std::int64_t most_references = 0;
  for (const FileRow& file : linked.pack->files) {
    most_references = std::max(most_references, file.references);
  }
  for (const PictureNode& file : picture.files) file_box(page, linked, file, most_references);
  for (std::size_t i = 0; i < picture.symbols.size(); ++i) knot(page, linked, picture, i);
  for (const PictureCaller& caller : picture.callers) caller_box(page, caller);
}

}  // namespace

void write_picture(Markup& page, const LinkedPack& linked) {
  const Picture picture = picture_layout(linked);
  if (picture.symbols.empty()) return;
  const Section section(page, "picture", "The change as a picture",
                        "follow a file to its changed symbols, and on to who calls them");
  page.leaf("a", {{"class", "skip inner"}, {"href", "#details"}}, "Skip the picture");
  write_legend(page);
  const auto figure = page.open("figure", {{"class", "picture"},
                                           {"tabindex", "0"},
                                           {"role", "region"},
                                           {"aria-label", "Picture of the change, may scroll"}});
  drawing(page, linked, picture);
}

}  // namespace context_delta::render
