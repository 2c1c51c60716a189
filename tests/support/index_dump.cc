#include "support/index_dump.h"

#include <algorithm>
#include <iterator>

namespace context_delta::test {
namespace {

constexpr const char* ROWS[] = {
    R"(SELECT 'commit', commit_id, languages FROM state)",
    R"(SELECT 'file', path, hex(files.object), claims.text, languages.name, files.problem, symbols,
              "references", hex(blobs.object), blobs.problem, blobs.unused
       FROM files LEFT JOIN claims ON claims.id = files.claim
       LEFT JOIN languages ON languages.id = files.language
       LEFT JOIN blobs ON blobs.id = files.blob)",
    R"(SELECT 'symbol', path, symbols.id & 1048575, name, kind, container, qualifier, whole,
              first_line, lines, traits, least_arguments, most_arguments, signature
       FROM symbols LEFT JOIN files ON files.id = symbols.id >> 20
       LEFT JOIN scopes ON scopes.id = (symbols.id >> 20 << 20 | scope))",
    R"(SELECT 'scope', path, scopes.id & 1048575, container, qualifier, whole
       FROM scopes LEFT JOIN files ON files.id = scopes.id >> 20)",
    R"(SELECT 'segment', path, last_line, symbol, first_line, kind
       FROM segments LEFT JOIN files ON files.id = file)",
    R"(WITH edges AS (SELECT callee, caller, line, evidence FROM calls WHERE callee > 0
         UNION ALL SELECT symbol, caller, line, evidence
         FROM calls LEFT JOIN targets ON dispatch = -callee WHERE callee < 0)
       SELECT 'call', f.path, callee & 1048575, g.path, caller & 1048575, line, evidence & 1,
              evidence >> 11, rule, why
       FROM edges LEFT JOIN files AS f ON f.id = callee >> 20
       LEFT JOIN files AS g ON g.id = caller >> 20
       LEFT JOIN notes ON notes.id = evidence >> 1 & 1023)",
    R"(SELECT 'resolution', path, resolutions.symbols, proven, guessed, hex(dependencies) FROM resolutions
       LEFT JOIN files ON files.id = file)",
    R"(SELECT 'dispatch', group_concat(place, ' ') FROM
         (SELECT dispatches.id, path || ':' || (symbol & 1048575) AS place
          FROM dispatches LEFT JOIN targets ON dispatch = dispatches.id
          LEFT JOIN files ON files.id = symbol >> 20 ORDER BY place)
       GROUP BY id)",
    R"(SELECT 'index', name FROM sqlite_master)",
};

constexpr int COLUMNS[] = {3, 11, 14, 6, 6, 10, 6, 2, 2};

}  // namespace

std::vector<std::string> index_dump(const storage::Database& database) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < std::size(ROWS); ++i) {
    storage::Statement row(database, ROWS[i]);
    while (row.step()) {
      std::string line;
      for (int column = 0; column < COLUMNS[i]; ++column) {
        line += row.is_null(column) ? std::string("null") : std::string(row.text(column));
        line += '|';
      }
      lines.push_back(std::move(line));
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::string difference(const std::vector<std::string>& first,
                       const std::vector<std::string>& second) {
  std::string text;
  const auto append_rest = [&](char mark, const auto& all, const auto& without) {
    std::vector<std::string> rest;
    std::set_difference(all.begin(), all.end(), without.begin(), without.end(),
                        std::back_inserter(rest));
    for (const std::string& line : rest) text += mark + line + "\n";
  };
  append_rest('-', first, second);
  append_rest('+', second, first);
  return text;
}

}  // namespace context_delta::test
