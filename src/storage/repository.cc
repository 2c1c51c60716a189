#include "storage/repository.h"

#include <cstdlib>
#include <system_error>

#include <unistd.h>

#include "storage/schema.h"
#include "utils/utf8.h"

namespace context_delta::storage {
namespace {

namespace fs = std::filesystem;

/// Whether an index in `folder` can be written. A link there may point anywhere: it is not used.
bool is_usable(const fs::path& folder) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(folder, error);
  if (!fs::exists(status)) return access(folder.parent_path().c_str(), W_OK | X_OK) == 0;
  if (!fs::is_directory(status) || access(folder.c_str(), W_OK | X_OK) != 0) return false;
  const fs::path file = folder / "index.sqlite";
  const fs::file_status file_status = fs::symlink_status(file, error);
  return !fs::exists(file_status) ||
         (fs::is_regular_file(file_status) && access(file.c_str(), W_OK) == 0);
}

fs::path cache_folder() {
  const char* cache = std::getenv("XDG_CACHE_HOME");
  if (cache != nullptr && cache[0] == '/') return fs::path(cache);
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return fs::path(home) / ".cache";
  return fs::temp_directory_path() / ("context-delta-" + std::to_string(getuid()));
}

/// A short name for a path that differs between paths.
std::string digest(std::string_view path) {
  std::uint64_t hash = 0xCBF29CE484222325u;
  for (const char byte : path) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
  std::string text;
  for (int shift = 60; shift >= 0; shift -= 4) text += "0123456789abcdef"[hash >> shift & 15];
  return text;
}

const fs::path& with_folder(const fs::path& path) {
  std::error_code error;
  if (path.has_parent_path()) fs::create_directories(path.parent_path(), error);
  if (error) {
    throw IndexError("cannot create the folder of the index " + utf8::path_text(path.native()) +
                         ": " + error.message() + "; name another file with --index",
                     IndexError::Cause::OTHER);
  }
  return path;
}

// One row for each caller of each symbol: how many times it calls does not matter, the best
// evidence does. The number of a guess is the smaller the likelier; proven calls are even.
constexpr std::string_view CALLERS = R"(
WITH
wanted AS (SELECT DISTINCT value AS id FROM json_each(?1)),
sought AS (  -- what calls of each of them may name
  SELECT id, id AS name FROM wanted
  UNION ALL
  SELECT id, -dispatch FROM wanted CROSS JOIN targets ON symbol = id),
by_caller AS (
  SELECT sought.id AS callee, caller,
         max(evidence & 1 = 0) AS proven,
         coalesce(min(line) FILTER (WHERE evidence & 1 = 0), min(line)) AS call_line,
         min(evidence) AS evidence
  FROM sought CROSS JOIN calls ON calls.callee = sought.name
  GROUP BY sought.id, caller),
of_kind AS (
  SELECT by_caller.*, files.path,
         caller >> ?4 = callee >> ?4 AS same_file,
         rtrim(files.path, replace(files.path, '/', '')) =
           rtrim(own.path, replace(own.path, '/', '')) AS same_folder
  FROM by_caller
  JOIN files ON files.id = caller >> ?4
  JOIN files AS own ON own.id = callee >> ?4
  WHERE by_caller.proven = ?2),
ranked AS (
  SELECT *,
         count(*) OVER (PARTITION BY callee) AS total,
         row_number() OVER (PARTITION BY callee
           ORDER BY CASE ?2 WHEN 0 THEN evidence >> 11 END, same_file DESC, same_folder DESC, path,
                    caller) AS position
  FROM of_kind)
SELECT callee, total,
       CASE WHEN scopes.whole THEN scopes.qualifier ELSE scopes.qualifier || symbols.name END,
       symbols.name, kinds.name, path, symbols.first_line, call_line,
       notes.rule, notes.why, 1 + (evidence >> 11 & 4095)
FROM ranked
JOIN symbols ON symbols.id = caller
JOIN scopes ON scopes.id = (caller >> ?4 << ?4 | symbols.scope)
JOIN kinds ON kinds.id = symbols.kind
JOIN notes ON notes.id = evidence >> 1 & 1023
WHERE position <= ?3
ORDER BY callee, position)";

Caller caller_of_row(const Statement& row) {
  Caller caller;
  caller.of = row.integer(0);
  caller.total = row.integer(1);
  caller.fqn = row.text(2);
  caller.name = row.text(3);
  caller.kind = row.text(4);
  caller.path = row.text(5);
  caller.line = row.integer(6);
  caller.call_line = row.integer(7);
  return caller;
}

std::string json_list(std::span<const std::int64_t> numbers) {
  std::string text = "[";
  for (const std::int64_t number : numbers) {
    if (text.size() > 1) text += ',';
    text += std::to_string(number);
  }
  return text + "]";
}

}  // namespace

fs::path default_index_path(const fs::path& common_git_directory) {
  const fs::path folder = common_git_directory / "context-delta";
  if (is_usable(folder)) return folder / "index.sqlite";
  return cache_folder() / "context-delta" / digest(common_git_directory.native()) / "index.sqlite";
}

Repository::Repository(const fs::path& path, CancelFlag cancelled)
    : db(with_folder(path), cancelled) {
  prepare_index(db);
}

std::optional<std::string> Repository::commit() const {
  Statement statement(db, "SELECT commit_id FROM state");
  if (!statement.step() || statement.is_null(0)) return std::nullopt;
  return std::string(statement.text(0));
}

Transaction Repository::begin_reading() const { return {db, Transaction::Mode::READ}; }

std::vector<Caller> Repository::callers_of(std::span<const std::int64_t> ids, bool guessed,
                                           std::int64_t limit) const {
  const std::string list = json_list(ids);
  Statement statement(db, CALLERS);
  statement.bind(1, list).bind(2, guessed ? 0 : 1).bind(3, limit).bind(4, SYMBOL_BITS);
  std::vector<Caller> callers;
  while (statement.step()) {
    callers.push_back(caller_of_row(statement));
    if (!guessed) continue;
    callers.back().relation = statement.text(8);
    callers.back().why = statement.text(9);
    callers.back().candidates = statement.integer(10);
  }
  return callers;
}

}  // namespace context_delta::storage
