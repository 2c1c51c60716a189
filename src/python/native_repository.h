#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "indexer/update.h"
#include "python/object.h"
#include "services/index_at.h"
#include "storage/repository.h"
#include "storage/repository_changes.h"

namespace context_delta::python {

/// The index that the queries of a NativeRepository read, as Python sees it.
struct NativeDatabase {
  std::filesystem::path path;
};

/// `context_delta.Repository`: a git repository with an index of our own. Holds no connection:
/// each operation opens one, so any thread may use it at any time. All operations but the first
/// four release the interpreter lock while they work and raise ValueError once it is closed.
class NativeRepository {
 public:
  /// Finds the repository that holds `path`. `index` is the index file; None: the default one.
  /// Raises GitHistoryError.
  NativeRepository(const Object& path, const Object& index);

  const std::filesystem::path& root() const { return root_; }
  /// The git directory that all of its work trees share.
  const std::filesystem::path& common_directory() const { return common_directory_; }
  const NativeDatabase& db() const { return db_; }
  void close() { closed_ = true; }
  void check_open() const;

  /// Brings the index to the commit that is checked out. `progress` is None or called as
  /// progress(phase, done, total), ten times a second at most; what it raises ends the update,
  /// as does KeyboardInterrupt, and leaves the index as it was.
  indexer::UpdateReport update(const Object& progress) const;

  std::vector<storage::Caller> callers_of(const std::vector<std::int64_t>& ids, bool guessed,
                                          std::int64_t limit) const;
  std::map<std::string, repository_changes::FileImpact> file_impact(
      const std::vector<std::string>& paths) const;
  /// `ranges` maps paths to lists of (first line, last line).
  std::vector<repository_changes::SymbolOnLines> symbols_on_lines(
      const std::map<std::string, std::vector<std::pair<std::int64_t, std::int64_t>>>& ranges,
      std::int64_t per_file) const;

 private:
  std::filesystem::path root_, common_directory_;
  NativeDatabase db_;
  bool closed_ = false;
};

/// Brings an index to a commit as NativeRepository::update() does. The interpreter lock must not be
/// held when it is called; `progress` must outlive it. Raises when this thread updates an index.
services::Update updater(const Object& progress);

}  // namespace context_delta::python
