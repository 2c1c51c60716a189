#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "storage/repository.h"
#include "utils/cancellation.h"
#include "utils/git_utils.h"

/// Brings an index to a commit.
namespace context_delta::indexer {

struct Language;

using context_delta::Cancelled;

inline constexpr std::string_view WAITING = "waiting for another process that updates the index";

struct UpdateOptions {
  std::span<const Language* const> languages = {};  ///< none: languages()
  unsigned threads = 0;                             ///< 0: as many as the machine runs at once
  /// Called on the calling thread, often. `phase` is "parsing", "resolving", "writing", or WAITING
  /// with a total of 0.
  std::function<void(std::string_view phase, std::int64_t done, std::int64_t total)> progress = {};
  CancelFlag cancelled = nullptr;
  std::int64_t most_file_bytes = 4 << 20;  ///< longer files are skipped
  int patience_seconds = 600;  ///< how long to wait for another process that updates the index
};

/// A file that a language claims but that is not indexed.
struct SkippedFile {
  std::string path;
  std::string reason;  ///< "larger than 4194304 bytes", "binary", ...
};

struct UpdateReport {
  bool up_to_date = false;    ///< the index answered for the commit already; all counts are 0
  std::int64_t files = 0;     ///< files that the index covers
  std::int64_t parsed = 0;    ///< blobs parsed
  std::int64_t reused = 0;    ///< blobs of added or changed files whose facts were stored before
  std::int64_t resolved = 0;  ///< files whose references were tied to definitions
  std::int64_t again = 0;     ///< of these, files whose text did not change
  std::int64_t in_vain = 0;   ///< of those again, files of which every edge came out as before
  std::int64_t edges = 0;     ///< edges that came or went
  std::vector<SkippedFile> skipped = {};  ///< all of the commit, by path
};

/// Makes the index of `repository` answer for `commit` (a full id), in one transaction: readers
/// see the index before or after. Two updates at once take turns. A damaged index is replaced.
/// Raises storage::IndexError (the index is as before), git_utils::GitHistoryError, Cancelled.
UpdateReport update(storage::Repository& repository, const git_utils::Git& git,
                    std::string_view commit, const UpdateOptions& options = {});

/// The files that the index skipped, by path.
std::vector<SkippedFile> skipped_files(const storage::Repository& repository);

}  // namespace context_delta::indexer
