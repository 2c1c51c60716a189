#pragma once

#include "render/html_markup.h"
#include "render/linked_pack.h"

namespace context_delta::render {

/// The section that has, file by file, the changed symbols with their callers and the snippets;
/// then the callers of symbols that the pack does not list. Nothing when the pack has none of them.
void write_details(Markup& page, const LinkedPack& linked);

}  // namespace context_delta::render
