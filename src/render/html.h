#pragma once

#include <string>

#include "render/report_style.h"
#include "utils/json.h"

namespace context_delta::render {

/// A pack of any shape, whatever made it, as one page for a browser: without scripts, without
/// anything from elsewhere, well-formed as HTML and as XML. Text of the repository is never markup
/// (Markup). Ends with a line feed.
std::string render_html(const json::Mapping& pack, const ReportStyle& style);

}  // namespace context_delta::render
