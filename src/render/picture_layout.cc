#include "render/picture_layout.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

namespace context_delta::render {
namespace {

constexpr std::size_t MOST_SYMBOLS = 16;
constexpr std::size_t USUAL_FILES = 8;
constexpr std::size_t MOST_CALLERS = 24;
constexpr std::int64_t GAP = 10;

using CallerKey = std::pair<std::string_view, std::string_view>;

CallerKey key_of(const CallerRow& row) { return {row.fqn, row.file}; }

/// The positions whose `wanted` is true, until `chosen` has `most`.
template <class Wanted>
void choose(std::set<std::size_t>& chosen, std::size_t count, std::size_t most, Wanted wanted) {
  for (std::size_t i = 0; i < count && chosen.size() < most; ++i) {
    if (wanted(i)) chosen.insert(i);
  }
}

std::set<std::size_t> chosen_symbols(const LinkedPack& linked) {
  std::set<std::size_t> chosen;
  const std::size_t count = linked.symbols.size();
  choose(chosen, count, MOST_SYMBOLS, [&](std::size_t i) {
    return !linked.symbols[i].callers.empty() || !linked.symbols[i].neighbours.empty();
  });
  std::set<std::size_t> files;
  for (const std::size_t i : chosen) files.insert(linked.symbols[i].file);
  choose(chosen, count, MOST_SYMBOLS,
         [&](std::size_t i) { return files.insert(linked.symbols[i].file).second; });
  choose(chosen, count, MOST_SYMBOLS, [](std::size_t) { return true; });
  return chosen;
}

std::set<std::size_t> chosen_files(const LinkedPack& linked, const std::set<std::size_t>& symbols) {
  std::set<std::size_t> chosen;
  for (const std::size_t i : symbols) chosen.insert(linked.symbols[i].file);
  choose(chosen, linked.files.size(), USUAL_FILES,
         [&](std::size_t i) { return linked.files[i].row != nullptr; });
  return chosen;
}

struct Candidate {
  const CallerRow* row;
  std::string anchor;
  bool proven;
};

/// The `rank`th caller of a symbol, proven ones first; its row is null when there are not so many.
Candidate candidate(const LinkedPack& linked, const LinkedSymbol& symbol, std::size_t rank) {
  if (rank < symbol.callers.size()) {
    const std::size_t row = symbol.callers[rank];
    return {&linked.pack->callers[row], caller_anchor(row, true), true};
  }
  rank -= symbol.callers.size();
  if (rank >= symbol.neighbours.size()) return {nullptr, "", false};
  const std::size_t row = symbol.neighbours[rank];
  return {&linked.pack->neighbours[row], caller_anchor(row, false), false};
}

/// Calls between nodes of the picture while they are chosen.
class CallerChoice {
 public:
  explicit CallerChoice(Picture& picture) : picture_(picture) {}

  /// Adds a call, and its caller while there is room for one more.
  void add(std::size_t symbol, const Candidate& call) {
    const auto [place, added] = callers_.try_emplace(key_of(*call.row), picture_.callers.size());
    if (added && picture_.callers.size() == MOST_CALLERS) {
      callers_.erase(place);
      return;
    }
    if (added) picture_.callers.push_back({.row = call.row, .anchor = call.anchor});
    const std::size_t caller = place->second;
    picture_.callers[caller].proven |= call.proven;
    // Proven candidates come first, so a pair that is there already is as good.
    if (pairs_.insert({symbol, caller}).second) {
      picture_.calls.push_back({symbol, caller, call.proven});
    }
  }

 private:
  Picture& picture_;
  std::map<CallerKey, std::size_t> callers_;
  std::set<std::pair<std::size_t, std::size_t>> pairs_;
};

/// Every symbol gets its first caller before any gets its second.
void choose_callers(Picture& picture, const LinkedPack& linked) {
  CallerChoice choice(picture);
  bool any = true;
  for (std::size_t rank = 0; any; ++rank) {
    any = false;
    for (std::size_t i = 0; i < picture.symbols.size(); ++i) {
      const LinkedSymbol& symbol = linked.symbols[picture.symbols[i].what];
      const Candidate call = candidate(linked, symbol, rank);
      if (call.row == nullptr) continue;
      any = true;
      choice.add(i, call);
    }
  }
}

/// Callers in the order of the symbols they call, so that few lines cross; ties as chosen.
void sort_callers(Picture& picture) {
  const std::size_t count = picture.callers.size();
  std::vector<std::int64_t> sums(count, 0);
  std::vector<std::int64_t> numbers(count, 0);
  for (const PictureCall& call : picture.calls) {
    sums[call.caller] += static_cast<std::int64_t>(call.symbol);
    ++numbers[call.caller];
  }
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return sums[a] * numbers[b] < sums[b] * numbers[a];
  });
  std::vector<std::size_t> place(count);
  std::vector<PictureCaller> sorted;
  for (std::size_t i = 0; i < count; ++i) {
    place[order[i]] = i;
    sorted.push_back(std::move(picture.callers[order[i]]));
  }
  picture.callers = std::move(sorted);
  for (PictureCall& call : picture.calls) call.caller = place[call.caller];
  std::sort(picture.calls.begin(), picture.calls.end(), [](const auto& a, const auto& b) {
    return std::pair(a.symbol, a.caller) < std::pair(b.symbol, b.caller);
  });
}

std::int64_t column_height(std::size_t count, std::int64_t height) {
  return static_cast<std::int64_t>(count) * (height + GAP) - (count > 0 ? GAP : 0);
}

/// Tops wished for: the mean of the tops of what a box is tied to; where it is tied to nothing,
/// that of the box before it.
class Wishes {
 public:
  explicit Wishes(std::size_t count) : sums_(count, 0), numbers_(count, 0) {}
  void tie(std::size_t box, std::int64_t top) {
    sums_[box] += top;
    ++numbers_[box];
  }
  std::vector<std::int64_t> tops() const {
    std::vector<std::int64_t> result;
    for (std::size_t i = 0; i < sums_.size(); ++i) {
      const std::int64_t before = result.empty() ? 0 : result.back();
      result.push_back(numbers_[i] == 0 ? before : sums_[i] / numbers_[i]);
    }
    return result;
  }

 private:
  std::vector<std::int64_t> sums_;
  std::vector<std::int64_t> numbers_;
};

template <class Node>
void place(std::vector<Node>& nodes, const Wishes& wishes, std::int64_t height, std::int64_t room) {
  const std::vector<std::int64_t> tops = spread(wishes.tops(), height, GAP, room);
  for (std::size_t i = 0; i < nodes.size(); ++i) nodes[i].top = tops[i];
}

void space_out_symbols(Picture& picture) {
  const auto count = static_cast<std::int64_t>(picture.symbols.size());
  for (std::int64_t i = 0; i < count; ++i) {
    picture.symbols[static_cast<std::size_t>(i)].top =
        count == 1 ? 0 : i * (picture.height - SYMBOL_HEIGHT) / (count - 1);
  }
}

void place_symbols(Picture& picture) {
  Wishes wishes(picture.symbols.size());
  for (const PictureCall& call : picture.calls) {
    wishes.tie(call.symbol, picture.callers[call.caller].top);
  }
  place(picture.symbols, wishes, SYMBOL_HEIGHT, picture.height);
}

void place_callers(Picture& picture) {
  Wishes wishes(picture.callers.size());
  for (const PictureCall& call : picture.calls) {
    wishes.tie(call.caller, picture.symbols[call.symbol].top);
  }
  place(picture.callers, wishes, CALLER_HEIGHT, picture.height);
}

void place_files(Picture& picture, const LinkedPack& linked) {
  Wishes wishes(picture.files.size());
  for (const PictureNode& symbol : picture.symbols) {
    for (std::size_t i = 0; i < picture.files.size(); ++i) {
      if (picture.files[i].what == linked.symbols[symbol.what].file) wishes.tie(i, symbol.top);
    }
  }
  place(picture.files, wishes, FILE_HEIGHT, picture.height);
}

std::size_t different_callers(const PackView& pack) {
  std::set<CallerKey> keys;
  for (const auto* rows : {&pack.callers, &pack.neighbours}) {
    for (const CallerRow& row : *rows) keys.insert(key_of(row));
  }
  return keys.size();
}

}  // namespace

std::vector<std::int64_t> spread(const std::vector<std::int64_t>& wished, std::int64_t height,
                                 std::int64_t gap, std::int64_t room) {
  // Without the boxes before it, a box only must not stand above the one before: neighbours that
  // would are merged into one block at the mean of their wishes.
  struct Block {
    std::int64_t sum;
    std::int64_t count;
  };
  const std::int64_t step = height + gap;
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < wished.size(); ++i) {
    blocks.push_back({wished[i] - static_cast<std::int64_t>(i) * step, 1});
    while (blocks.size() > 1) {
      const Block last = blocks.back();
      Block& before = blocks[blocks.size() - 2];
      if (before.sum * last.count <= last.sum * before.count) break;
      before = {before.sum + last.sum, before.count + last.count};
      blocks.pop_back();
    }
  }
  const auto count = static_cast<std::int64_t>(wished.size());
  const std::int64_t slack = std::max<std::int64_t>(0, room - count * step + gap);
  std::vector<std::int64_t> tops;
  for (const Block& block : blocks) {
    for (std::int64_t i = 0; i < block.count; ++i) {
      const std::int64_t offset = static_cast<std::int64_t>(tops.size()) * step;
      tops.push_back(std::clamp<std::int64_t>(block.sum / block.count, 0, slack) + offset);
    }
  }
  return tops;
}

std::string caller_anchor(std::size_t row, bool proven) {
  return (proven ? "c" : "n") + std::to_string(row);
}

Picture picture_layout(const LinkedPack& linked) {
  Picture picture;
  if (linked.symbols.empty()) return picture;
  const std::set<std::size_t> symbols = chosen_symbols(linked);
  for (const std::size_t i : symbols) picture.symbols.push_back({.what = i});
  for (const std::size_t i : chosen_files(linked, symbols)) picture.files.push_back({.what = i});
  picture.all_callers = different_callers(*linked.pack);
  choose_callers(picture, linked);
  sort_callers(picture);
  picture.height = std::max({column_height(picture.files.size(), FILE_HEIGHT),
                             column_height(picture.symbols.size(), SYMBOL_HEIGHT),
                             column_height(picture.callers.size(), CALLER_HEIGHT)});
  space_out_symbols(picture);
  place_callers(picture);
  place_symbols(picture);
  place_callers(picture);
  place_files(picture, linked);
  return picture;
}

}  // namespace context_delta::render
