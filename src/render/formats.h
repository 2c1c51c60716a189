#pragma once

#include <span>
#include <string>
#include <string_view>

#include "render/report_style.h"
#include "utils/json.h"

/// The formats a pack can be written in: one table, from which options and their help are made.
namespace context_delta::render {

struct Format {
  std::string_view name;
  std::string_view what;  ///< a few words for a list of formats
  bool for_programs;      ///< errors are told in the format's own terms
  /// A pack of any of its three shapes. Ends with a line feed.
  std::string (*render)(const json::Mapping& pack, const ReportStyle& style);
};

/// The formats; the first is the one for a person at a terminal.
std::span<const Format> formats();

/// The format of a name; null when there is none.
const Format* find_format(std::string_view name);

/// All names, in the table's order, joined by '|'.
std::string_view format_names();

}  // namespace context_delta::render
