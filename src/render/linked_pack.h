#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "render/pack_view.h"

/// The rows of a pack tied together: whose symbol, whose caller, whose snippet. All numbers are
/// positions in the lists of the PackView.
namespace context_delta::render {

struct LinkedSymbol {
  std::size_t row = 0;
  std::size_t file = 0;  ///< position in LinkedPack::files
  std::vector<std::size_t> callers = {};
  std::vector<std::size_t> neighbours = {};
  /// The first symbol with the same qualified name; itself when it is the first. Caller rows name
  /// their callee and nothing else, so they stand with the first.
  std::size_t first_namesake = 0;
};

struct LinkedFile {
  std::string path;
  const FileRow* row = nullptr;  ///< null when only rows of other lists name the file
  std::vector<std::size_t> symbols = {};
  std::vector<std::size_t> snippets = {};

  bool has_details() const { return !symbols.empty() || !snippets.empty(); }
};

struct LinkedPack {
  const PackView* pack = nullptr;
  std::vector<LinkedFile> files;      ///< in the order of the rows, then as symbols name them
  std::vector<LinkedSymbol> symbols;  ///< as in the pack
  /// Of symbols that the pack does not list.
  std::vector<std::size_t> loose_callers;
  std::vector<std::size_t> loose_neighbours;
};

/// `pack` outlives the result.
LinkedPack link_rows(const PackView& pack);

}  // namespace context_delta::render
