#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "indexer/rows/catalogue.h"
#include "indexer/rows/dispatches.h"
#include "indexer/rows/file_rows.h"

namespace context_delta::indexer {

/// The rows of the index, written within the update's transaction.
class IndexWriter {
 public:
  explicit IndexWriter(const storage::Database& database);

  /// Removes everything of the commit indexed before; facts stay.
  void clear();

  std::int64_t language_id(std::string_view name);
  std::int64_t add_blob(const CatalogueFile& file, const EncodedFacts& compressed_facts);

  /// Marks stored facts as in use.
  void use_blob(std::int64_t blob);
  /// Marks stored facts as those of no file from this update on.
  void leave_blob(std::int64_t blob);

  /// Writes the rows of a resolved file in place of those it had. Its calls are left to
  /// write_all_calls when `all_calls_follow`. `facts_changed`: not only what the rules say of it.
  /// Returns how many of the calls came or went.
  std::int64_t write_file(const CatalogueFile& file, const FileRows& rows, bool facts_changed,
                          bool all_calls_follow);
  /// The rows of a file that is not indexed: none but its own.
  void write_empty(std::int64_t file);
  /// Removes a file and its rows.
  void remove(const OldFile& file);
  void write_file_row(const CatalogueFile& file);

  /// What the file's last resolution stored.
  std::vector<PackedCall> calls_of(std::int64_t file);
  std::vector<Use> uses_of(std::int64_t file);

  /// Gives the definitions of a file new numbers in the calls of files that are not resolved
  /// again. `numbers[old index]` is the new index.
  void renumber(std::int64_t file, const std::vector<DefinitionIndex>& numbers,
                std::span<const std::int64_t> callers);

  /// The files whose calls may be dispatched to definitions of a file that are no more: `numbers`
  /// has NOWHERE for them.
  std::vector<std::int64_t> callers_of_lost(std::int64_t file,
                                            const std::vector<DefinitionIndex>& numbers);
  /// Gives the definitions of a file new numbers in all dispatches.
  void renumber_dispatches(std::int64_t file, const std::vector<DefinitionIndex>& numbers) {
    dispatches_.renumber(file, numbers);
  }
  void drop_unused_dispatches() { dispatches_.drop_unused(); }

  /// Fills the table of calls, which is empty, from what the files' resolutions stored.
  void write_all_calls();

  void finish(std::string_view commit, std::string_view languages);

 private:
  void write_symbols(std::int64_t file, const FileRows& rows);
  void write_scopes(std::int64_t file, const FileRows& rows);
  void write_segments(std::int64_t file, const FileRows& rows);
  bool has_scopes(std::int64_t file, const FileRows& rows);
  std::vector<PackedCall> packed_calls(const FileRows& rows);
  std::int64_t note_id(std::string_view rule, std::string_view why);
  void erase_symbols(std::int64_t file);
  void erase_calls(std::int64_t file, std::span<const PackedCall> calls);
  void insert_calls(std::int64_t file, std::span<const PackedCall> calls);
  void write_resolution(std::int64_t file, const FileRows& rows, std::span<const PackedCall> calls);
  void store_calls(std::int64_t file, std::span<const PackedCall> calls);

  const storage::Database& database_;
  std::map<std::pair<std::string, std::string>, std::int64_t> notes_;
  std::set<std::int64_t> constructions_;  // notes of the rule CONSTRUCTION
  std::int64_t generation_ = 0;
  Dispatches dispatches_;
  storage::RowInserter insert_symbols_, insert_scopes_, insert_segments_, insert_calls_;
  storage::Statement insert_blob_, erase_call_, insert_resolution_, select_calls_, select_uses_,
      update_calls_, insert_file_, use_blob_, leave_blob_;
};

}  // namespace context_delta::indexer
