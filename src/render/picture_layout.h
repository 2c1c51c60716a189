#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "render/linked_pack.h"

/// Which files, symbols and callers a picture of the change shows, and how high each stands. Whole
/// numbers throughout: the picture is the same on every machine.
namespace context_delta::render {

inline constexpr std::int64_t FILE_HEIGHT = 50;
inline constexpr std::int64_t SYMBOL_HEIGHT = 42;
inline constexpr std::int64_t CALLER_HEIGHT = 42;

struct PictureNode {
  std::size_t what = 0;  ///< position in the LinkedPack's files or symbols
  std::int64_t top = 0;
};

struct PictureCaller {
  const CallerRow* row = nullptr;
  std::string anchor;   ///< id of the caller's first row on the page
  bool proven = false;  ///< by at least one of its calls shown
  std::int64_t top = 0;
};

struct PictureCall {
  std::size_t symbol = 0;  ///< position in Picture::symbols
  std::size_t caller = 0;  ///< position in Picture::callers
  bool proven = false;
};

struct Picture {
  std::vector<PictureNode> files;
  std::vector<PictureNode> symbols;
  std::vector<PictureCaller> callers;
  std::vector<PictureCall> calls;  ///< by symbol; one between two nodes, a proven one if there is
  std::size_t all_callers = 0;     ///< different callers that the pack lists
  std::int64_t height = 0;
};

/// A picture of at most 16 symbols, their files (others up to 8 files in all) and 24 callers:
/// symbols with callers go before others, proven calls before guessed ones, each in the pack's
/// order. Without symbols it is empty.
Picture picture_layout(const LinkedPack& linked);

/// Tops for boxes of one height in a column, at least `gap` apart, from 0 to `room` as far as there
/// is room: in the order given, and as close to the tops wished for as that allows.
std::vector<std::int64_t> spread(const std::vector<std::int64_t>& wished, std::int64_t height,
                                 std::int64_t gap, std::int64_t room);

/// The id on the page of a proven or guessed caller's row.
std::string caller_anchor(std::size_t row, bool proven);

}  // namespace context_delta::render
