#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace context_delta::cli {

/// One line of a configuration file that says something.
struct ConfigEntry {
  std::size_t line = 1;  ///< counted from 1
  std::string key;       ///< empty when the line has none
  std::string value;     ///< a text, a number as written, "true" or "false"
  std::string problem;   ///< why the line is not understood; empty when it is
};

/// Most bytes of a configuration file that is read.
inline constexpr std::size_t MOST_CONFIG_BYTES = 64 * 1024;

/// The entries of a text in TOML, as far as presets need it: one `key = value` a line, where the
/// value is a text in "quotation marks" or 'apostrophes', an integer, true or false, and comments
/// begin with '#'. Other lines (tables, arrays, dates) are entries with a problem.
std::vector<ConfigEntry> read_config(std::string_view text);

}  // namespace context_delta::cli
