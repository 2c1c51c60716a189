#include "storage/graph.h"

#include <array>
#include <string>

#include "storage/database.h"
#include "storage/schema.h"
#include "utils/json.h"

namespace context_delta::storage {
namespace {

constexpr std::string_view SIZE = R"(
SELECT (SELECT count(*) FROM files WHERE language IS NOT NULL AND problem IS NULL),
       coalesce(sum(symbols), 0), coalesce(sum(proven), 0), coalesce(sum(guessed), 0)
FROM resolutions)";

constexpr std::string_view SYMBOLS = R"(
SELECT files.path, symbols.name,
       CASE WHEN scopes.whole THEN scopes.qualifier ELSE scopes.qualifier || symbols.name END,
       kinds.name, first_line, first_line + lines
FROM files
CROSS JOIN symbols ON symbols.id > files.id << ?1 AND symbols.id < (files.id + 1) << ?1
JOIN scopes ON scopes.id = (files.id << ?1 | symbols.scope)
JOIN kinds ON kinds.id = symbols.kind
ORDER BY files.path, first_line, symbols.id)";

// A call is exported once: of the two ends that a call of a class has, the class.
constexpr std::string_view CALLS = R"(
WITH edges AS (
  SELECT callee, caller, line, evidence FROM calls WHERE callee > 0
  UNION ALL
  SELECT targets.symbol, caller, line, evidence
  FROM calls CROSS JOIN targets ON targets.dispatch = -calls.callee WHERE callee < 0)
SELECT caller_file.path, caller.name, caller.first_line, edges.line,
       callee_file.path, callee.name, callee.first_line, edges.evidence & 1 = 0, notes.rule
FROM edges
CROSS JOIN symbols AS caller ON caller.id = edges.caller
CROSS JOIN files AS caller_file ON caller_file.id = edges.caller >> ?1
CROSS JOIN symbols AS callee ON callee.id = edges.callee
CROSS JOIN files AS callee_file ON callee_file.id = edges.callee >> ?1
JOIN notes ON notes.id = edges.evidence >> 1 & 1023
WHERE notes.rule <> 'construction'
ORDER BY caller_file.path, edges.line, edges.caller, edges.evidence & 1, edges.evidence >> 11,
         callee_file.path, edges.callee, notes.rule, notes.why)";

enum class Form { TEXT, NUMBER, TRUTH };

struct Field {
  std::string_view name;
  Form form;
};

constexpr std::array<Field, 6> SYMBOL_FIELDS = {{{"file", Form::TEXT},
                                                 {"name", Form::TEXT},
                                                 {"fqn", Form::TEXT},
                                                 {"kind", Form::TEXT},
                                                 {"start_line", Form::NUMBER},
                                                 {"end_line", Form::NUMBER}}};

constexpr std::array<Field, 9> CALL_FIELDS = {{{"caller_file", Form::TEXT},
                                               {"caller_name", Form::TEXT},
                                               {"caller_start_line", Form::NUMBER},
                                               {"call_line", Form::NUMBER},
                                               {"callee_file", Form::TEXT},
                                               {"callee_name", Form::TEXT},
                                               {"callee_start_line", Form::NUMBER},
                                               {"proven", Form::TRUTH},
                                               {"rule", Form::TEXT}}};

void append_value(std::string& line, const Statement& row, int column, Form form) {
  switch (form) {
    case Form::TEXT:
      return json::append_quoted(line, row.text(column));
    case Form::NUMBER:
      line += std::to_string(row.integer(column));
      return;
    case Form::TRUTH:
      line += row.integer(column) != 0 ? "true" : "false";
      return;
  }
}

template <std::size_t N>
void export_rows(const Database& db, std::string_view sql, const std::array<Field, N>& fields,
                 const LineSink& sink) {
  Statement statement(db, sql);
  statement.bind(1, SYMBOL_BITS);
  std::string line;
  while (statement.step()) {
    line.assign(1, '{');
    for (std::size_t i = 0; i < N; ++i) {
      line += i == 0 ? "\"" : ", \"";
      line += fields[i].name;
      line += "\": ";
      append_value(line, statement, static_cast<int>(i), fields[i].form);
    }
    line += '}';
    sink(line);
  }
}

}  // namespace

GraphSize graph_size(const Database& db) {
  Statement row(db, SIZE);
  row.step();
  return {.files = row.integer(0),
          .symbols = row.integer(1),
          .proven_calls = row.integer(2),
          .guessed_calls = row.integer(3)};
}

void export_symbols(const Database& db, const LineSink& sink) {
  export_rows(db, SYMBOLS, SYMBOL_FIELDS, sink);
}

void export_calls(const Database& db, const LineSink& sink) {
  export_rows(db, CALLS, CALL_FIELDS, sink);
}

}  // namespace context_delta::storage
