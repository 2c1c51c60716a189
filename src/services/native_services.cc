#include "services/native_services.h"

#include "tool_handlers/context_delta/handler.h"
#include "tool_handlers/context_docs.h"
#include "tool_handlers/quality_impact.h"
#include "workers/context_builder.h"

namespace context_delta::services {

static_assert(ContextServices<NativeServices>);

// The git object knows the repository, so the root that the component hands along is not read.
git_history::BranchChanges NativeServices::branch_changes(
    const RepoRoot&, const std::optional<std::string>& base_branch,
    const std::optional<std::string>& target_branch, std::string_view) {
  return history_.branch_changes(base_branch, target_branch, target_parameter_, base_parameter_);
}

std::string NativeServices::resolve_commit(const RepoRoot&, std::string_view revision) {
  return git_utils::resolve_commit(git_, revision);
}

git_history::LineSpans NativeServices::changed_line_spans(const RepoRoot&,
                                                          const std::string& base_commit,
                                                          const std::string& head_commit,
                                                          const std::vector<FileChange>& files,
                                                          bool merge_base) {
  return history_.changed_line_spans(base_commit, head_commit, files, merge_base);
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
  return repository_changes::count_symbols_on_lines(db, ranges, kinds);
}

std::vector<storage::Caller> NativeServices::callers_of(const IndexHandle& repository,
                                                        const std::vector<std::int64_t>& ids,
                                                        bool guessed, std::int64_t limit) {
  return repository.index.callers_of(ids, guessed, limit);
}

std::int64_t NativeServices::estimate_tokens(std::string_view text) {
  return context_builder::estimate_tokens(text);
}

std::optional<std::string> NativeServices::read_repo_text(const RepoRoot& root,
                                                          const std::string& path,
                                                          std::int64_t most_characters) {
  return context_docs::read_repo_text(root, path, most_characters);
}

json::Mapping NativeServices::guessed_caller_row(const Caller& caller) {
  return quality_impact::guessed_caller_row(caller);
}

json::List NativeServices::pages_citing(WikiLens lens, KeptPaths<NativeServices>& paths) {
  return lens->pages_citing([&paths] { return paths.next(); });
}

}  // namespace context_delta::services

namespace context_delta {
template json::Mapping handle_build_delta_context_pack(services::NativeServices&,
                                                       const Request<services::NativeServices>&);
}
