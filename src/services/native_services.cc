#include "services/native_services.h"

#include <utility>

#include "tool_handlers/context_delta/handler.h"
#include "tool_handlers/quality_impact.h"
#include "workers/context_builder.h"

namespace context_delta::services {

static_assert(ContextServices<NativeServices>);

// The review knows the repository and what the names mean, so what the component hands along of
// them is not read.
git_history::BranchChanges NativeServices::branch_changes(const RepoRoot&,
                                                          const std::optional<std::string>&,
                                                          const std::optional<std::string>&,
                                                          std::string_view) {
  return review_.changes();
}

std::string NativeServices::resolve_commit(const RepoRoot&, std::string_view revision) {
  if (revision == "HEAD") return review_.sides().head.commit;
  return git_utils::resolve_commit(review_.git(), revision);
}

git_history::LineSpans NativeServices::changed_line_spans(const RepoRoot&,
                                                          const std::string& base_commit,
                                                          const std::string& head_commit,
                                                          const std::vector<FileChange>& files,
                                                          bool merge_base) {
  return review_.history().changed_line_spans(base_commit, head_commit, files, merge_base);
}

bool NativeServices::is_source_path(const std::string& path, const Language& language) {
  return git_history::is_source_path(path, language);
}

git_history::LineRanges NativeServices::line_ranges(const Spans& spans,
                                                    const std::vector<std::string>& paths) {
  return git_history::line_ranges(spans, paths);
}

json::Mapping NativeServices::change_row(const FileChange& change) {
  return git_history::change_row(change);
}

NativeServices::Impact NativeServices::file_impact(const storage::Database& db,
                                                   const std::vector<std::string>& paths) {
  return repository_changes::file_impact(db, paths);
}

std::vector<repository_changes::SymbolOnLines> NativeServices::symbols_on_lines(
    const storage::Database& db, const LineRanges& ranges, Kinds kinds, std::int64_t per_file) {
  return repository_changes::symbols_on_lines(db, ranges, kinds, per_file);
}

std::int64_t NativeServices::count_symbols_on_lines(const storage::Database& db,
                                                    const LineRanges& ranges, Kinds kinds) {
  const auto count = repository_changes::count_symbols(db, ranges, kinds, symbols_per_row());
  beyond_.symbols += count.beyond;
  return count.all;
}

std::vector<storage::Caller> NativeServices::callers_of(const IndexHandle& repository,
                                                        const std::vector<std::int64_t>& ids,
                                                        bool guessed, std::int64_t limit) {
  std::vector<storage::Caller> callers = repository.index.callers_of(ids, guessed, limit);
  std::int64_t& beyond = guessed ? beyond_.neighbours : beyond_.callers;
  for (std::size_t i = 0; i < callers.size(); ++i) {  // those of one symbol follow each other
    const bool is_first = i == 0 || callers[i].of != callers[i - 1].of;
    beyond += (is_first ? callers[i].total : 0) - 1;
  }
  return callers;
}

std::int64_t NativeServices::estimate_tokens(std::string_view text) {
  return context_builder::estimate_tokens(text);
}

std::optional<std::string> NativeServices::read_repo_text(const RepoRoot&, const std::string& path,
                                                          std::int64_t most_characters) {
  return texts_.read(path, most_characters);
}

json::Mapping NativeServices::guessed_caller_row(const Caller& caller) {
  return quality_impact::guessed_caller_row(caller);
}

json::List NativeServices::pages_citing(WikiLens lens, KeptPaths<NativeServices>& paths) {
  // A page that cites the old name of a renamed file is concerned too.
  std::unordered_map<std::string_view, std::string_view> old_paths;
  for (const FileChange& change : review_.changes().files) {
    if (change.old_path) old_paths.emplace(change.path, *change.old_path);
  }
  std::optional<std::string> old_path;
  return lens->pages_citing([&]() -> std::optional<std::string> {
    if (old_path) return std::exchange(old_path, std::nullopt);
    std::optional<std::string> path = paths.next();
    const auto found = path ? old_paths.find(*path) : old_paths.end();
    if (found != old_paths.end()) old_path = found->second;
    return path;
  });
}

}  // namespace context_delta::services

namespace context_delta {
template json::Mapping handle_build_delta_context_pack(services::NativeServices&,
                                                       const Request<services::NativeServices>&);
}
