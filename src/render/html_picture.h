#pragma once

#include "render/html_markup.h"
#include "render/linked_pack.h"

namespace context_delta::render {

/// The section with the picture of the change, files to symbols to callers, as an inline SVG: its
/// boxes link to the rows of the page. Nothing when the pack lists no symbol.
void write_picture(Markup& page, const LinkedPack& linked);

}  // namespace context_delta::render
