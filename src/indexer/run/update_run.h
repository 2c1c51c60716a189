#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "indexer/parse/parsing.h"
#include "indexer/rows/catalogue.h"
#include "indexer/rows/index_writer.h"
#include "indexer/run/index_source.h"
#include "indexer/update.h"
#include "indexer/world/keys.h"

namespace context_delta::indexer {

/// One update within its transaction: tree difference, parsing, staleness, resolving, writing.
class UpdateRun {
 public:
  UpdateRun(const storage::Database& database, const git_utils::Git& git,
            const std::vector<git_utils::TreeFile>& tree,
            std::span<const Language* const> languages, const UpdateOptions& options, bool rebuild);

  /// Writes everything but the commit.
  void run();
  UpdateReport report() const;
  IndexWriter& writer() { return writer_; }

 private:
  /// A blob that added or changed files need.
  struct Job {
    std::vector<std::uint32_t> files;
    bool stored = false;  ///< its facts are in the index
  };
  struct JobResult {
    ParsedText parsed;
    bool missing = false;
    EncodedFacts encoded;
    EncodedFacts compressed;
    std::vector<Defined> definitions;
  };
  class JobWorker;
  class ResolveWorker;

  void load_languages();
  void make_jobs();
  bool find_stored(CatalogueFile& file);
  void parse();
  void take_parsed(const Job& job, JobResult result);
  void collect_stale();
  File file_of(const OldFile& old) const;
  void collect_stale_of(const CatalogueFile& file);
  void choose_dependents();
  void follow_calls_into(std::int64_t file, const std::vector<DefinitionIndex>& numbers);
  void renumber();
  void remove_left();
  void resolve();
  void take_resolved(CatalogueFile& file, const FileRows& rows);
  void forget_uses(std::int64_t file);
  void write_rest();
  void leave_blobs();
  void drop_unused_facts();
  void set_language(CatalogueFile& file, const Language* language);
  void check_cancelled() const;
  void progress(std::string_view phase, std::size_t done, std::size_t total) const;
  unsigned threads() const;

  const storage::Database& database_;
  const git_utils::Git& git_;
  const UpdateOptions& options_;
  std::span<const Language* const> languages_;
  std::mutex lock_;  // of the database connection
  Catalogue catalogue_;
  IndexWriter writer_;
  FactsStore facts_;
  NameTable names_;
  std::map<std::int64_t, const Language*> by_id_;
  std::vector<Job> jobs_;
  StaleKeys stale_;
  std::vector<bool> to_resolve_;  // for each file of the catalogue
  // Of files whose definitions got other indexes: the new ones, and the files that call them.
  std::map<std::int64_t, std::vector<DefinitionIndex>> numbers_;
  std::map<std::int64_t, std::set<std::int64_t>> callers_;
  UpdateReport report_;
};

}  // namespace context_delta::indexer
