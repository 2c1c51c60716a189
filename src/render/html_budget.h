#pragma once

#include "render/html_markup.h"
#include "render/report_style.h"
#include "utils/json.h"

namespace context_delta::render {

/// The section that says where the budget went: one bar, and its parts in words. Nothing for a pack
/// that took no token.
void write_budget(Markup& page, const json::Mapping& pack, std::int64_t tokens_used,
                  const ReportStyle& style);

}  // namespace context_delta::render
