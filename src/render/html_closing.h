#pragma once

#include <cstdint>
#include <optional>

#include "render/html_markup.h"
#include "render/pack_view.h"
#include "render/report_style.h"

namespace context_delta::render {

/// The wiki pages that cite changed files, stale ones marked. Nothing when there are none.
void write_wiki_pages(Markup& page, const PackView& pack);

/// What the pack does not have and the option that brings it. `enough` is the budget with which
/// little would be left out, in the pack's own tokens. Nothing for a pack that neither changes
/// files nor omits any row.
void write_left_out(Markup& page, const PackView& pack, std::optional<std::int64_t> enough,
                    const ReportStyle& style);

/// What the page's words claim.
void write_footer(Markup& page);

}  // namespace context_delta::render
