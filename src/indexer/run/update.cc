#include "indexer/update.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "indexer/run/update_run.h"
#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

using storage::IndexError;
using storage::Statement;
using storage::Transaction;

/// How long one try for the index's lock lasts, before cancellation is looked at.
constexpr int TRY_MILLISECONDS = 200;

struct State {
  std::optional<std::string> commit;
  std::string languages;
};

State state_of(const storage::Database& database) {
  Statement row(database, "SELECT commit_id, languages FROM state");
  State state;
  if (!row.step()) return state;
  if (!row.is_null(0)) state.commit = std::string(row.text(0));
  state.languages = row.text(1);
  return state;
}

Transaction begin_writing(const storage::Database& database, const UpdateOptions& options) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(options.patience_seconds);
  database.set_patience(TRY_MILLISECONDS);
  while (true) {
    check_cancelled(options.cancelled);
    try {
      return {database, Transaction::Mode::WRITE};
    } catch (const IndexError& error) {
      if (error.cause != IndexError::Cause::BUSY || Clock::now() > end) throw;
      if (options.progress) options.progress(WAITING, 0, 0);
    }
  }
}

std::vector<git_utils::TreeFile> sorted_tree(const git_utils::Git& git, std::string_view commit) {
  std::vector<git_utils::TreeFile> tree = git_utils::list_tree(git, commit);
  const auto by_path = [](const auto& a, const auto& b) { return a.path < b.path; };
  if (!std::is_sorted(tree.begin(), tree.end(), by_path)) {
    std::sort(tree.begin(), tree.end(), by_path);
  }
  return tree;
}

UpdateReport update_to(const storage::Database& database, const git_utils::Git& git,
                       std::string_view commit, const std::vector<git_utils::TreeFile>& tree,
                       std::span<const Language* const> table, const UpdateOptions& options) {
  Transaction transaction = begin_writing(database, options);
  const std::string languages = names_and_versions(table);
  const State state = state_of(database);  // another process may have been first
  if (state.commit == commit && state.languages == languages) return {.up_to_date = true};
  UpdateRun run(database, git, tree, table, options, !state.commit || state.languages != languages);
  run.run();
  run.writer().finish(commit, languages);
  transaction.commit();
  return run.report();
}

/// Moves the log into the file when no reader needs it: it would be as large as the index.
void shrink_log(const storage::Database& database) {
  try {
    database.set_patience(0);
    database.integer("PRAGMA wal_checkpoint(TRUNCATE)");
  } catch (const IndexError& error) {
    // A reader holds an older state. The next update tries again.
    if (error.cause != IndexError::Cause::BUSY) throw;
  }
}

}  // namespace

UpdateReport update(storage::Repository& repository, const git_utils::Git& git,
                    std::string_view commit, const UpdateOptions& options) {
  const storage::Database& database = repository.db;
  const auto table = options.languages.empty() ? languages() : options.languages;
  const State state = state_of(database);
  if (state.commit == commit && state.languages == names_and_versions(table)) {
    return {.up_to_date = true};
  }
  const std::vector<git_utils::TreeFile> tree = sorted_tree(git, commit);
  database.execute("PRAGMA cache_size = -65536");
  const auto bring_up_to_date = [&] {
    return update_to(database, git, commit, tree, table, options);
  };
  const auto start_over = [&] {
    database.reset();
    storage::prepare_index(database);
    return bring_up_to_date();
  };
  UpdateReport report;
  try {
    report = bring_up_to_date();
  } catch (const IndexError& error) {
    if (error.cause != IndexError::Cause::DAMAGED) throw;
    report = start_over();
  } catch (const DamagedData&) {
    report = start_over();
  }
  shrink_log(database);
  database.execute("PRAGMA cache_size = -8192");
  database.set_patience(storage::PATIENCE_MILLISECONDS);
  return report;
}

std::vector<SkippedFile> skipped_files(const storage::Repository& repository) {
  Statement row(repository.db,
                "SELECT path, problem FROM files WHERE problem IS NOT NULL ORDER BY path");
  std::vector<SkippedFile> files;
  while (row.step()) files.push_back({std::string(row.text(0)), std::string(row.text(1))});
  return files;
}

}  // namespace context_delta::indexer
