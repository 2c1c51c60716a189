#pragma once

#include "render/html_markup.h"
#include "render/left_out.h"
#include "render/pack_view.h"

namespace context_delta::render {

/// The wiki pages that cite changed files, stale ones marked. Nothing when there are none.
void write_wiki_pages(Markup& page, const PackView& pack);

/// What the pack does not have and the option that brings it. Nothing for a pack that neither
/// changes files nor omits any row.
void write_left_out(Markup& page, const PackView& pack, const LeftOut& left);

/// What the page's words claim.
void write_footer(Markup& page);

}  // namespace context_delta::render
