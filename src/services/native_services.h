#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "services/delta.h"
#include "services/review.h"
#include "storage/repository.h"
#include "storage/repository_changes.h"
#include "tool_handlers/commit_texts.h"
#include "tool_handlers/context_delta/services.h"
#include "utils/git_utils.h"
#include "utils/json.h"
#include "wiki/wiki_lens.h"
#include "workers/git_history.h"

namespace context_delta::services {

/// The index as the component holds it.
struct IndexHandle {
  const storage::Repository& index;
  const storage::Database& db;
};

/// The component's services over real git and our index. One object serves one pack.
class NativeServices {
 public:
  using Repository = IndexHandle;
  using RepoRoot = std::filesystem::path;
  using Branch = std::string;
  using Commit = std::string;
  using BranchChanges = git_history::BranchChanges;
  using FileChange = git_utils::FileChange;
  using SymbolOnLines = repository_changes::SymbolOnLines;
  using Caller = storage::Caller;
  using Path = std::string;
  using Impact = std::unordered_map<std::string, repository_changes::FileImpact>;
  using Language = std::optional<std::string>;
  using Spans = git_history::LineSpans;
  using LineRanges = git_history::LineRanges;
  using Kinds = std::span<const std::string_view>;
  using SymbolId = std::int64_t;
  using WikiLens = const wiki::WikiLens*;
  using Pages = json::List;
  using Value = json::Value;
  using Row = json::Mapping;
  using Integer = std::int64_t;
  using Flag = bool;
  using GitHistoryError = git_utils::GitHistoryError;

  /// Answers for one comparison: what these services call checked out is its reviewed commit.
  explicit NativeServices(Review& review)
      : review_(review), texts_(review.git(), review.sides().head.commit) {}

  BranchChanges branch_changes(const RepoRoot& root, const std::optional<std::string>& base_branch,
                               const std::optional<std::string>& target_branch,
                               std::string_view head_parameter);
  std::string resolve_commit(const RepoRoot& root, std::string_view revision);
  Spans changed_line_spans(const RepoRoot& root, const std::string& base_commit,
                           const std::string& head_commit, const std::vector<FileChange>& files,
                           bool merge_base);
  bool is_source_path(const std::string& path, const Language& language);
  LineRanges line_ranges(const Spans& spans, const std::vector<std::string>& paths);
  json::Mapping change_row(const FileChange& change);
  Kinds change_kinds() const { return git_history::CHANGE_KINDS; }
  std::int64_t symbols_per_row() const { return git_history::SYMBOLS_PER_ROW; }

  Impact file_impact(const storage::Database& db, const std::vector<std::string>& paths);
  std::vector<SymbolOnLines> symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                              Kinds kinds, std::int64_t per_file);
  std::int64_t count_symbols_on_lines(const storage::Database& db, const LineRanges& ranges,
                                      Kinds kinds);
  std::vector<Caller> callers_of(const IndexHandle& repository,
                                 const std::vector<std::int64_t>& ids, bool guessed,
                                 std::int64_t limit);

  std::int64_t estimate_tokens(std::string_view text);
  std::optional<std::string> read_repo_text(const RepoRoot& root, const std::string& path,
                                            std::int64_t most_characters);
  json::Mapping guessed_caller_row(const Caller& caller);
  json::List pages_citing(WikiLens lens, KeptPaths<NativeServices>& paths);

  /// What the pack counts as left out although no budget would list it.
  const BeyondLimits& beyond_limits() const { return beyond_; }

 private:
  Review& review_;
  context_docs::CommitTexts texts_;
  BeyondLimits beyond_;
};

}  // namespace context_delta::services
