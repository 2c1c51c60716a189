#pragma once

#include "render/html_markup.h"
#include "render/linked_pack.h"

namespace context_delta::render {

/// The table of the changed files by impact, with bars. Nothing when the pack has no file.
void write_files(Markup& page, const LinkedPack& linked);

}  // namespace context_delta::render
