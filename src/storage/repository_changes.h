#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "utils/git_utils.h"

namespace context_delta::storage {
class Database;
}

/// What the index knows of changed files and lines: one SQL statement a query, whatever the number
/// of files. All raise storage::IndexError when the index cannot be read.
namespace context_delta::repository_changes {

/// How much of the index depends on a file.
struct FileImpact {
  std::int64_t references = 0;  ///< proven references from other files into its symbols
  std::int64_t symbols = 0;     ///< symbols it defines
  std::optional<std::string> language;
};

/// A symbol that lies on changed lines.
struct SymbolOnLines {
  std::int64_t id = 0;
  std::string path;
  std::int64_t start_line = 1;
  std::int64_t end_line = 1;
  std::string fqn;
  std::string name;
  std::string kind;
  std::optional<std::string> signature;
};

/// Paths with the lines asked for (git_history::line_ranges makes them).
using LineRanges = std::vector<std::pair<std::string, std::vector<git_utils::LineSpan>>>;

/// The impact of those of `paths` that the index knows.
std::unordered_map<std::string, FileImpact> file_impact(const storage::Database& db,
                                                        std::span<const std::string> paths);

/// The symbols of `kinds` on these lines, at most `per_file` of each file, by path, first line, id.
/// A line belongs to the innermost symbol of the change kinds around it, and to each that starts on
/// it: a class is listed only when its first line or lines of it outside its members changed.
std::vector<SymbolOnLines> symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                            std::span<const std::string_view> kinds,
                                            std::int64_t per_file);

struct SymbolCount {
  std::int64_t all = 0;
  std::int64_t beyond = 0;  ///< those of each file after its first `per_file`
};

/// How many symbols symbols_on_lines would list without a limit per file, and how many of them it
/// does not.
SymbolCount count_symbols(const storage::Database& db, const LineRanges& ranges,
                          std::span<const std::string_view> kinds, std::int64_t per_file);
std::int64_t count_symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                    std::span<const std::string_view> kinds);

}  // namespace context_delta::repository_changes
