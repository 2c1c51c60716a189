#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "render/report_style.h"
#include "utils/json.h"

namespace context_delta::render {

/// The first line of every report: invisible, and how a later report finds the comment to replace.
inline constexpr std::string_view MARKDOWN_MARKER = "<!-- context-delta -->";

/// The most a report takes, in bytes of UTF-8. Hosts cut comments off at 65,536 characters, which
/// some of them count in UTF-16 units; bytes are never fewer than either.
inline constexpr std::size_t MOST_MARKDOWN_BYTES = 60'000;

/// A pack of any shape, whatever made it, as Markdown for the comment of a pull request. Text of
/// the repository stands in code spans and fences (markdown_text.h). Rows for which the comment has
/// no room are left out at the end of their sections and counted at the end of the report. Ends
/// with a line feed.
std::string render_markdown(const json::Mapping& pack, const ReportStyle& style);

}  // namespace context_delta::render
