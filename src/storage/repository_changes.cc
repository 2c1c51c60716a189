#include "storage/repository_changes.h"

#include "storage/database.h"
#include "storage/schema.h"
#include "utils/json.h"

namespace context_delta::repository_changes {
namespace {

using storage::Statement;

constexpr std::string_view IMPACT = R"(
SELECT files.path, files."references", files.symbols, languages.name
FROM json_each(?1) AS wanted
CROSS JOIN files ON files.path = wanted.value
JOIN languages ON languages.id = files.language)";

// Kinds are looked up and numbers read out of JSON once, not for each row. No segment of a file
// that meets a range ends further behind it than the file's longest one is long: the end of what
// has to be read.
constexpr std::string_view HITS = R"(
WITH
asked AS MATERIALIZED (
  SELECT id FROM kinds WHERE name IN (SELECT value FROM json_each(?2))),
changed AS MATERIALIZED (
  SELECT files.id AS file, path.value ->> 1 AS ranges,
    (SELECT max(last_line - first_line) FROM segments WHERE segments.file = files.id) AS longest
  FROM json_each(?1) AS path CROSS JOIN files ON files.path = path.value ->> 0),
ranges AS MATERIALIZED (
  SELECT file, longest, range.value ->> 0 AS first_line, range.value ->> 1 AS last_line
  FROM changed CROSS JOIN json_each(changed.ranges) AS range),
hits AS (
  SELECT DISTINCT segments.file, segments.symbol
  FROM ranges CROSS JOIN segments ON segments.file = ranges.file
    AND segments.last_line BETWEEN ranges.first_line AND ranges.last_line + ranges.longest
    AND segments.first_line <= ranges.last_line
  WHERE segments.kind IN asked)
)";

constexpr std::string_view COUNT = R"(
SELECT coalesce(sum(number), 0), coalesce(sum(max(number - ?3, 0)), 0)
FROM (SELECT count(*) AS number FROM hits GROUP BY file))";

constexpr std::string_view LIST = R"(,
numbered AS (
  SELECT symbols.*, hits.file AS file, row_number() OVER (
    PARTITION BY hits.file ORDER BY symbols.first_line, symbols.id) AS position
  FROM hits CROSS JOIN symbols ON symbols.id = (hits.file << ?4 | hits.symbol))
SELECT numbered.id, files.path, first_line, first_line + lines,
       CASE WHEN scopes.whole THEN scopes.qualifier ELSE scopes.qualifier || numbered.name END,
       numbered.name, kinds.name, nullif(signature, '')
FROM numbered
JOIN files ON files.id = numbered.file
JOIN scopes ON scopes.id = (numbered.file << ?4 | numbered.scope)
JOIN kinds ON kinds.id = numbered.kind
WHERE position <= ?3
ORDER BY files.path, position)";

std::string json_list(std::span<const std::string_view> texts) {
  std::string json = "[";
  for (const std::string_view text : texts) {
    if (json.size() > 1) json += ',';
    json::append_quoted(json, text);
  }
  return json + "]";
}

/// [[path, [[start, end], ...]], ...]
std::string json_ranges(const LineRanges& ranges) {
  std::string json = "[";
  for (const auto& [path, spans] : ranges) {
    if (json.size() > 1) json += ',';
    json += '[';
    json::append_quoted(json, path);
    char before = '[';
    json += ',';
    for (const git_utils::LineSpan& span : spans) {
      json += before;
      json += '[' + std::to_string(span.start) + ',' + std::to_string(span.end) + ']';
      before = ',';
    }
    json += before == '[' ? "[]]" : "]]";
  }
  return json + "]";
}

SymbolOnLines symbol_of_row(const Statement& row) {
  SymbolOnLines symbol;
  symbol.id = row.integer(0);
  symbol.path = row.text(1);
  symbol.start_line = row.integer(2);
  symbol.end_line = row.integer(3);
  symbol.fqn = row.text(4);
  symbol.name = row.text(5);
  symbol.kind = row.text(6);
  if (!row.is_null(7)) symbol.signature = std::string(row.text(7));
  return symbol;
}

}  // namespace

std::unordered_map<std::string, FileImpact> file_impact(const storage::Database& db,
                                                        std::span<const std::string> paths) {
  const std::vector<std::string_view> views(paths.begin(), paths.end());
  const std::string list = json_list(views);
  Statement statement(db, IMPACT);
  statement.bind(1, list);
  std::unordered_map<std::string, FileImpact> impacts;
  while (statement.step()) {
    impacts[std::string(statement.text(0))] = {.references = statement.integer(1),
                                               .symbols = statement.integer(2),
                                               .language = std::string(statement.text(3))};
  }
  return impacts;
}

std::vector<SymbolOnLines> symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                            std::span<const std::string_view> kinds,
                                            std::int64_t per_file) {
  const std::string list = json_ranges(ranges);
  const std::string kind_list = json_list(kinds);
  Statement statement(db, std::string(HITS) + std::string(LIST));
  statement.bind(1, list).bind(2, kind_list).bind(3, per_file).bind(4, storage::SYMBOL_BITS);
  std::vector<SymbolOnLines> symbols;
  while (statement.step()) symbols.push_back(symbol_of_row(statement));
  return symbols;
}

SymbolCount count_symbols(const storage::Database& db, const LineRanges& ranges,
                          std::span<const std::string_view> kinds, std::int64_t per_file) {
  const std::string list = json_ranges(ranges);
  const std::string kind_list = json_list(kinds);
  Statement statement(db, std::string(HITS) + std::string(COUNT));
  statement.bind(1, list).bind(2, kind_list).bind(3, per_file);
  if (!statement.step()) return {};
  return {.all = statement.integer(0), .beyond = statement.integer(1)};
}

std::int64_t count_symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                    std::span<const std::string_view> kinds) {
  return count_symbols(db, ranges, kinds, 0).all;
}

}  // namespace context_delta::repository_changes
