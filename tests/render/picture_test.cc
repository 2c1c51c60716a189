#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "render/picture_layout.h"
#include "render/sample_packs.h"
#include "render/token_use.h"

namespace context_delta::render {
namespace {

TEST(TokenUse, PricesRowsAndPages) {
  const json::Mapping pack = test::full_pack();
  std::int64_t rows = 0;
  for (const SectionUse& use : token_use(pack)) {
    EXPECT_GT(use.tokens, 0) << use.key;
    rows += use.rows;
  }
  EXPECT_EQ(rows, 4 + 3 + 3 + 3 + 1 + 2);
}

PackView large_pack(int files, int callers) {
  PackView pack;
  for (int i = 0; i < files; ++i) {
    const std::string path = std::to_string(i) + ".py";
    pack.files.emplace_back().path = path;
    SymbolRow& symbol = pack.symbols.emplace_back();
    symbol.fqn = "s" + path;
    symbol.file = path;
    for (int c = 0; c < callers; ++c) {
      CallerRow row;
      row.fqn = "c" + std::to_string((i * callers + c) % 50);
      row.file = "c.py";
      row.calls = "s" + path;
      (c % 2 == 0 ? pack.callers : pack.neighbours).push_back(row);
    }
  }
  return pack;
}

TEST(Picture, IsBoundedAndPrefersProof) {
  const PackView pack = large_pack(300, 4);
  const LinkedPack linked = link_rows(pack);
  const Picture picture = picture_layout(linked);
  EXPECT_EQ(picture.symbols.size(), 16U);
  EXPECT_EQ(picture.callers.size(), 24U);
  EXPECT_EQ(picture.all_callers, 50U);
  EXPECT_LE(picture.files.size(), 24U);
  std::set<std::pair<std::size_t, std::size_t>> pairs;
  for (const PictureCall& call : picture.calls) {
    EXPECT_TRUE(pairs.insert({call.symbol, call.caller}).second);
    const std::string& callee = pack.symbols[picture.symbols[call.symbol].what].fqn;
    const auto& rows = call.proven ? pack.callers : pack.neighbours;
    EXPECT_TRUE(std::any_of(rows.begin(), rows.end(), [&](const CallerRow& row) {
      return row.calls == callee && row.fqn == picture.callers[call.caller].row->fqn;
    }));
  }
}

TEST(Picture, SpreadsBoxes) {
  using Tops = std::vector<std::int64_t>;
  EXPECT_EQ(spread({}, 10, 2, 100), Tops());
  EXPECT_EQ(spread({30}, 10, 2, 100), Tops({30}));
  EXPECT_EQ(spread({30, 30}, 10, 2, 100), Tops({24, 36}));
  EXPECT_EQ(spread({0, 0, 90}, 10, 2, 100), Tops({0, 12, 90}));
  EXPECT_EQ(spread({99, 99}, 10, 2, 100), Tops({78, 90}));
}

RC_GTEST_PROP(Picture, NeverLetsBoxesOverlap, ()) {
  const auto wished =
      *rc::gen::container<std::vector<std::int64_t>>(rc::gen::inRange<std::int64_t>(-50, 500));
  const auto tops = spread(wished, 40, 10, 400);
  RC_ASSERT(tops.size() == wished.size());
  for (std::size_t i = 0; i < tops.size(); ++i) {
    RC_ASSERT(tops[i] >= (i == 0 ? 0 : tops[i - 1] + 50));
    const bool fits = wished.size() * 50 <= 410;
    RC_ASSERT(!fits || tops[i] + 40 <= 400);
  }
}

}  // namespace
}  // namespace context_delta::render
