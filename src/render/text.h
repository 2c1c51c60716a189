#pragma once

#include <string>

#include "render/report_style.h"
#include "utils/json.h"

namespace context_delta::render {

/// A pack of any shape, whatever made it, as text for a person. Text of the repository is
/// neutralised (plain_text()), lines fit the width unless a single word does not. Ends with a line
/// feed.
std::string render_text(const json::Mapping& pack, const ReportStyle& style);

}  // namespace context_delta::render
