#include "indexer/rows/index_writer.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>

#include "indexer/world/keys.h"
#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

using storage::Statement;
using storage::SYMBOL_BITS;
using storage::symbol_id;

/// Calls that are sorted in memory at once.
constexpr std::int64_t MOST_CALLS_A_PASS = 1 << 20;

void write_kinds(const storage::Database& database) {
  Statement insert(database, "INSERT OR REPLACE INTO kinds VALUES(?1, ?2)");
  for (int kind = 0; kind <= static_cast<int>(Kind::MACRO); ++kind) {
    insert.bind(1, kind).bind(2, kind_name(static_cast<Kind>(kind))).run();
  }
  insert.bind(1, storage::MODULE_KIND).bind(2, "module").run();
}

std::int64_t call_evidence(const FileRows::Call& call, std::int64_t note) {
  if (call.proven) return storage::call_evidence(false, note, 0, 1);
  const auto candidates = std::clamp<std::int64_t>(call.candidates, 1, storage::MOST_CANDIDATES);
  return storage::call_evidence(true, note, std::max(call.rank, 0), candidates);
}

/// Calls of one group follow each other in the table.
std::int64_t group_of(std::int64_t callee) { return callee < 0 ? callee : callee >> SYMBOL_BITS; }

std::vector<PackedCall> difference(std::span<const PackedCall> all,
                                   std::span<const PackedCall> without) {
  std::vector<PackedCall> rest;
  std::set_difference(all.begin(), all.end(), without.begin(), without.end(),
                      std::back_inserter(rest));
  return rest;
}

}  // namespace

IndexWriter::IndexWriter(const storage::Database& database)
    : database_(database),
      dispatches_(database),
      insert_symbols_(database, "INSERT INTO symbols", 10),
      insert_scopes_(database, "INSERT INTO scopes", 4),
      insert_segments_(database, "INSERT INTO segments", 5),
      insert_calls_(database, "INSERT OR IGNORE INTO calls", 4),
      insert_blob_(database, "INSERT INTO blobs VALUES(NULL, ?1, ?2, ?3, ?4, 0, ?5, ?6)"),
      erase_call_(database,
                  "DELETE FROM calls WHERE callee = ?1 AND caller = ?2 AND line = ?3 "
                  "AND evidence = ?4"),
      insert_resolution_(database,
                         "INSERT OR REPLACE INTO resolutions VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)"),
      select_calls_(database, "SELECT calls FROM resolutions WHERE file = ?1"),
      select_uses_(database, "SELECT uses FROM resolutions WHERE file = ?1"),
      update_calls_(database, "UPDATE resolutions SET calls = ?2 WHERE file = ?1"),
      insert_file_(database,
                   "INSERT OR REPLACE INTO files VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)"),
      use_blob_(database, "UPDATE blobs SET unused = 0 WHERE id = ?1 AND unused <> 0"),
      leave_blob_(database, "UPDATE blobs SET unused = ?2 WHERE id = ?1") {
  Statement row(database, "SELECT id, rule, why FROM notes");
  while (row.step()) {
    notes_[{std::string(row.text(1)), std::string(row.text(2))}] = row.integer(0);
    if (row.text(1) == CONSTRUCTION) constructions_.insert(row.integer(0));
  }
  generation_ = database.integer("SELECT generation + 1 FROM state");
  write_kinds(database);
}

void IndexWriter::clear() {
  storage::drop_indexes(database_);
  database_.execute(
      ("UPDATE blobs SET unused = " + std::to_string(generation_) + " WHERE unused = 0").c_str());
  database_.execute(
      "DELETE FROM files; DELETE FROM resolutions; DELETE FROM scopes; DELETE FROM symbols;"
      "DELETE FROM segments; DELETE FROM calls; DELETE FROM notes");
  dispatches_.clear();
  notes_.clear();
  constructions_.clear();
}

std::int64_t IndexWriter::language_id(std::string_view name) {
  Statement(database_, "INSERT OR IGNORE INTO languages(name) VALUES(?1)").bind(1, name).run();
  Statement row(database_, "SELECT id FROM languages WHERE name = ?1");
  row.bind(1, name).step();
  return row.integer(0);
}

std::int64_t IndexWriter::add_blob(const CatalogueFile& file,
                                   const EncodedFacts& compressed_facts) {
  insert_blob_.bind_blob(1, file.object).bind(2, file.claim->id);
  file.language == 0 ? insert_blob_.bind_null(3) : insert_blob_.bind(3, file.language);
  file.problem ? insert_blob_.bind(4, *file.problem) : insert_blob_.bind_null(4);
  insert_blob_.bind_blob(5, compressed_facts.shared)
      .bind_blob(6, compressed_facts.references)
      .run();
  return database_.integer("SELECT last_insert_rowid()");
}

void IndexWriter::use_blob(std::int64_t blob) { use_blob_.bind(1, blob).run(); }

void IndexWriter::leave_blob(std::int64_t blob) {
  leave_blob_.bind(1, blob).bind(2, generation_).run();
}

std::int64_t IndexWriter::write_file(const CatalogueFile& file, const FileRows& rows,
                                     bool facts_changed, bool all_calls_follow) {
  const std::int64_t id = file.file.id;
  if (facts_changed || !has_scopes(id, rows)) {
    if (file.before != nullptr) erase_symbols(id);
    write_symbols(id, rows);
    write_scopes(id, rows);
    write_segments(id, rows);
  }
  const std::vector<PackedCall> calls = packed_calls(rows);
  std::int64_t changed = std::ssize(calls);
  if (!all_calls_follow) {
    const std::vector<PackedCall> before = calls_of(id);
    const std::vector<PackedCall> gone = difference(before, calls);
    const std::vector<PackedCall> come = difference(calls, before);
    erase_calls(id, gone);
    insert_calls(id, come);
    changed = std::ssize(gone) + std::ssize(come);
  }
  write_resolution(id, rows, calls);
  return changed;
}

void IndexWriter::write_resolution(std::int64_t file, const FileRows& rows,
                                   std::span<const PackedCall> calls) {
  std::int64_t proven = 0;
  std::int64_t guessed = 0;
  for (const PackedCall& call : calls) {
    if (constructions_.contains(storage::note_of(call.evidence))) continue;
    ++(storage::is_guessed(call.evidence) ? guessed : proven);
  }
  const std::string keys = pack_keys(rows.dependencies);
  const std::string packed = pack_calls(calls);
  const std::string uses = pack_uses(rows.uses);
  insert_resolution_.bind(1, file)
      .bind(2, std::ssize(rows.facts->definitions))
      .bind(3, proven)
      .bind(4, guessed)
      .bind_blob(5, keys)
      .bind_blob(6, packed)
      .bind_blob(7, uses)
      .run();
}

void IndexWriter::write_empty(std::int64_t file) {
  erase_symbols(file);
  erase_calls(file, calls_of(file));
  Statement(database_, "DELETE FROM resolutions WHERE file = ?1").bind(1, file).run();
}

void IndexWriter::remove(const OldFile& file) {
  write_empty(file.id);
  Statement(database_, "DELETE FROM files WHERE id = ?1").bind(1, file.id).run();
}

void IndexWriter::write_file_row(const CatalogueFile& file) {
  insert_file_.bind(1, file.file.id).bind(2, file.file.path).bind_blob(3, file.object);
  insert_file_.bind(4, file.claim->id);
  file.blob == 0 ? insert_file_.bind_null(5) : insert_file_.bind(5, file.blob);
  file.language == 0 ? insert_file_.bind_null(6) : insert_file_.bind(6, file.language);
  file.problem ? insert_file_.bind(7, *file.problem) : insert_file_.bind_null(7);
  insert_file_.bind(8, file.symbols).bind(9, file.references).run();
}

std::vector<PackedCall> IndexWriter::calls_of(std::int64_t file) {
  std::vector<PackedCall> calls;
  if (select_calls_.bind(1, file).step()) calls = unpack_calls(select_calls_.blob(0));
  select_calls_.reset();
  return calls;
}

std::vector<Use> IndexWriter::uses_of(std::int64_t file) {
  std::vector<Use> uses;
  if (select_uses_.bind(1, file).step()) uses = unpack_uses(select_uses_.blob(0));
  select_uses_.reset();
  return uses;
}

void IndexWriter::renumber(std::int64_t file, const std::vector<DefinitionIndex>& numbers,
                           std::span<const std::int64_t> callers) {
  // All old rows go before the first new one comes: a new number may be another's old one.
  std::vector<std::pair<std::int64_t, std::vector<PackedCall>>> renumbered;
  for (const std::int64_t caller : callers) {
    const std::vector<PackedCall> before = calls_of(caller);
    std::vector<PackedCall> calls = before;
    for (PackedCall& call : calls) {
      if (call.callee >> SYMBOL_BITS != file) continue;
      const auto index = static_cast<std::size_t>((call.callee & storage::MOST_SYMBOLS) - 1);
      call.callee = symbol_id(file, numbers.at(index) + 1);
    }
    std::sort(calls.begin(), calls.end());
    erase_calls(caller, difference(before, calls));
    store_calls(caller, calls);
    renumbered.emplace_back(caller, difference(calls, before));
  }
  for (const auto& [caller, calls] : renumbered) insert_calls(caller, calls);
}

std::vector<std::int64_t> IndexWriter::callers_of_lost(
    std::int64_t file, const std::vector<DefinitionIndex>& numbers) {
  std::vector<std::int64_t> files;
  Statement row(database_,
                "SELECT DISTINCT symbol, caller >> ?3 FROM targets CROSS JOIN calls "
                "ON callee = -dispatch WHERE symbol >= ?1 AND symbol < ?2");
  row.bind(1, symbol_id(file, 0)).bind(2, symbol_id(file + 1, 0)).bind(3, SYMBOL_BITS);
  while (row.step()) {
    const auto number = static_cast<std::size_t>((row.integer(0) & storage::MOST_SYMBOLS) - 1);
    if (number >= numbers.size() || numbers[number] == NOWHERE) files.push_back(row.integer(1));
  }
  return files;
}

void IndexWriter::write_all_calls() {
  std::map<std::int64_t, std::int64_t> counts;  // by the callee's file, or its dispatch
  Statement row(database_, "SELECT file, calls FROM resolutions");
  while (row.step()) {
    for (const PackedCall& call : unpack_calls(row.blob(1))) ++counts[group_of(call.callee)];
  }
  auto next = counts.begin();
  while (next != counts.end()) {
    const std::int64_t first = next->first;
    std::int64_t total = 0;
    do total += (next++)->second;
    while (next != counts.end() && total + next->second <= MOST_CALLS_A_PASS);
    const std::int64_t last = std::prev(next)->first;

    std::vector<std::array<std::int64_t, 4>> calls;
    calls.reserve(static_cast<std::size_t>(total));
    row.reset();
    while (row.step()) {
      for (const PackedCall& call : unpack_calls(row.blob(1))) {
        const std::int64_t group = group_of(call.callee);
        if (group < first || group > last) continue;
        calls.push_back(
            {call.callee, symbol_id(row.integer(0), call.caller), call.line, call.evidence});
      }
    }
    std::sort(calls.begin(), calls.end());
    insert_calls_.insert(calls.size(), [&](Statement& insert, int parameter, std::size_t index) {
      for (const std::int64_t value : calls[index]) insert.bind(parameter++, value);
    });
  }
}

void IndexWriter::finish(std::string_view commit, std::string_view languages) {
  Statement(database_, "UPDATE state SET commit_id = ?1, languages = ?2, generation = ?3")
      .bind(1, commit)
      .bind(2, languages)
      .bind(3, generation_)
      .run();
}

void IndexWriter::write_symbols(std::int64_t file, const FileRows& rows) {
  Definition module;
  module.name = "<module>";
  module.last_line = module.first_line;
  module.most_arguments = 0;
  const auto bind = [&](Statement& insert, int parameter, std::size_t number) {
    const Definition& symbol = number == 0 ? module : rows.facts->definitions[number - 1];
    const auto kind = number == 0 ? storage::MODULE_KIND : static_cast<std::int64_t>(symbol.kind);
    insert.bind(parameter, symbol_id(file, static_cast<std::int64_t>(number)))
        .bind(parameter + 1, symbol.name)
        .bind(parameter + 2, kind)
        .bind(parameter + 3, std::int64_t{number == 0 ? 0 : rows.scopes_of[number - 1]})
        .bind(parameter + 4, symbol.first_line)
        .bind(parameter + 5, symbol.last_line - symbol.first_line)
        .bind(parameter + 6, symbol.traits)
        .bind(parameter + 7, symbol.least_arguments)
        .bind(parameter + 8, symbol.most_arguments)
        .bind(parameter + 9, symbol.signature);
  };
  insert_symbols_.insert(rows.facts->definitions.size() + 1, bind);
}

void IndexWriter::write_scopes(std::int64_t file, const FileRows& rows) {
  insert_scopes_.insert(rows.scopes.size(),
                        [&](Statement& insert, int parameter, std::size_t number) {
                          const FileRows::Scope& scope = rows.scopes[number];
                          insert.bind(parameter, symbol_id(file, static_cast<std::int64_t>(number)))
                              .bind(parameter + 1, scope.container)
                              .bind(parameter + 2, scope.qualifier)
                              .bind(parameter + 3, scope.whole ? 1 : 0);
                        });
}

void IndexWriter::write_segments(std::int64_t file, const FileRows& rows) {
  insert_segments_.insert(
      rows.segments.size(), [&](Statement& insert, int parameter, std::size_t index) {
        const FileRows::Segment& segment = rows.segments[index];
        const auto symbol = static_cast<std::size_t>(segment.definition);
        insert.bind(parameter, file)
            .bind(parameter + 1, segment.last_line)
            .bind(parameter + 2, segment.definition + 1)
            .bind(parameter + 3, segment.first_line)
            .bind(parameter + 4, static_cast<std::int64_t>(rows.facts->definitions[symbol].kind));
      });
}

bool IndexWriter::has_scopes(std::int64_t file, const FileRows& rows) {
  Statement row(database_,
                "SELECT container, qualifier, whole FROM scopes WHERE id >= ?1 AND id < ?2 "
                "ORDER BY id");
  row.bind(1, symbol_id(file, 0)).bind(2, symbol_id(file + 1, 0));
  for (const FileRows::Scope& scope : rows.scopes) {
    if (!row.step() || row.text(0) != scope.container || row.text(1) != scope.qualifier ||
        (row.integer(2) != 0) != scope.whole) {
      return false;
    }
  }
  return !row.step();
}

std::vector<PackedCall> IndexWriter::packed_calls(const FileRows& rows) {
  // Only sets that a call names are stored: the last call that leaves one removes it.
  std::vector<std::int64_t> dispatches(rows.dispatches.size());
  const auto callee_of = [&](const FileRows::Call& call) {
    if (call.dispatch < 0) return call.callee;
    const auto index = static_cast<std::size_t>(call.dispatch);
    if (dispatches[index] == 0) dispatches[index] = dispatches_.id_of(rows.dispatches[index]);
    return -dispatches[index];
  };
  std::vector<PackedCall> calls;
  calls.reserve(rows.calls.size());
  for (const FileRows::Call& call : rows.calls) {
    calls.push_back({.caller = call.caller + 1,
                     .line = call.line,
                     .callee = callee_of(call),
                     .evidence = call_evidence(call, note_id(call.rule, call.why))});
  }
  std::sort(calls.begin(), calls.end());
  calls.erase(std::unique(calls.begin(), calls.end()), calls.end());
  return calls;
}

std::int64_t IndexWriter::note_id(std::string_view rule, std::string_view why) {
  const auto [place, added] =
      notes_.try_emplace({std::string(rule), std::string(why)}, std::ssize(notes_) + 1);
  if (!added) return place->second;
  if (rule == CONSTRUCTION) constructions_.insert(place->second);
  if (place->second >= storage::MOST_NOTES) {
    throw std::logic_error("more rules and reasons than the index can hold");
  }
  Statement(database_, "INSERT INTO notes VALUES(?1, ?2, ?3)")
      .bind(1, place->second)
      .bind(2, rule)
      .bind(3, why)
      .run();
  return place->second;
}

void IndexWriter::erase_symbols(std::int64_t file) {
  for (const char* sql : {"DELETE FROM symbols WHERE id >= ?1 AND id < ?2",
                          "DELETE FROM scopes WHERE id >= ?1 AND id < ?2"}) {
    Statement(database_, sql).bind(1, symbol_id(file, 0)).bind(2, symbol_id(file + 1, 0)).run();
  }
  Statement(database_, "DELETE FROM segments WHERE file = ?1").bind(1, file).run();
}

void IndexWriter::erase_calls(std::int64_t file, std::span<const PackedCall> calls) {
  for (const PackedCall& call : calls) {
    if (call.callee < 0) dispatches_.leave(-call.callee);
    erase_call_.bind(1, call.callee)
        .bind(2, symbol_id(file, call.caller))
        .bind(3, call.line)
        .bind(4, call.evidence)
        .run();
  }
}

void IndexWriter::insert_calls(std::int64_t file, std::span<const PackedCall> calls) {
  insert_calls_.insert(calls.size(), [&](Statement& insert, int parameter, std::size_t index) {
    const PackedCall& call = calls[index];
    insert.bind(parameter, call.callee)
        .bind(parameter + 1, symbol_id(file, call.caller))
        .bind(parameter + 2, call.line)
        .bind(parameter + 3, call.evidence);
  });
}

void IndexWriter::store_calls(std::int64_t file, std::span<const PackedCall> calls) {
  const std::string packed = pack_calls(calls);
  update_calls_.bind(1, file).bind_blob(2, packed).run();
}

}  // namespace context_delta::indexer
