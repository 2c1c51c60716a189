#pragma once

#include <vector>

#include "render/html_markup.h"
#include "render/pack_view.h"
#include "render/report_style.h"

namespace context_delta::render {

/// The head of the page: what was compared, the figures at a glance, the way to the sections.
void write_overview(Markup& page, const PackView& pack, const std::vector<Heading>& headings);

/// What must be read before the rest: error, warning, the message of a pack without changes.
void write_notices(Markup& page, const PackView& pack, const ReportStyle& style);

}  // namespace context_delta::render
