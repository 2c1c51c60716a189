#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/fields.h"

/// The contract: what the component requires of the services that know git, the index and the
/// working tree. Three kinds exist and no more: native, a host server's, and the scripted ones of
/// the tests.
///
/// A services type names the kinds of its values. Opaque ones travel back unchanged to the service
/// that made them.
///
///   Repository     the index handle; its field `db` is what the index queries take
///   RepoRoot       where the repository is
///   Branch         a branch name; Commit: a commit, comparable with !=
///   BranchChanges, FileChange, SymbolOnLines, Caller   records with the fields of fields.h
///   Path           of a file: hashable, ordered by code points
///   Impact         mapping from Path to a record of references, symbols and language
///   Language       string or null; default-constructed it is null
///   Spans          mapping from Path to a sequence of line spans (start, end: from 1, inclusive)
///   LineRanges     opaque; Kinds: opaque
///   SymbolId       ordered and hashable
///   WikiLens       tested for null as a condition
///   Pages          list of wiki page entries; default-constructed it is empty
///   Value          any JSON value; Row: a mapping of them in insertion order, with set() and at()
///   Integer        of lines, counts and tokens; Flag: tested for truth where it is used
///   GitHistoryError the one exception that becomes the error result; error_text() gives its text
///
/// Whatever an operation throws, unless it is a GitHistoryError, passes through the component.
namespace context_delta {

/// The paths of the kept files in impact order, one at a time, readable once.
template <class Services>
class KeptPaths {
 public:
  explicit KeptPaths(std::span<const typename Services::FileChange> files) : files_(files) {}

  /// The next path; null after the last.
  std::optional<typename Services::Path> next() {
    if (files_.empty()) return std::nullopt;
    std::optional<typename Services::Path> path(field::path(files_.front()));
    files_ = files_.subspan(1);
    return path;
  }

  /// The files whose paths have not been given yet.
  std::span<const typename Services::FileChange> rest() const { return files_; }

 private:
  std::span<const typename Services::FileChange> files_;
};

/// What the git service answers.
template <class S>
concept GitHistoryServices = requires(
    S& services, const typename S::RepoRoot& root, const std::optional<typename S::Branch>& branch,
    const typename S::Commit& commit, std::string_view text, const typename S::FileChange& change,
    const std::vector<typename S::FileChange>& files, bool merge_base, const typename S::Path& path,
    const typename S::Language& language, const typename S::Spans& spans,
    const std::vector<typename S::Path>& paths, const typename S::GitHistoryError& error) {
  /// What target_branch (null: what is checked out) changed since it left base_branch (null:
  /// the repository's default). The last argument is the name under which errors speak of the
  /// target. Once per pack, first.
  {
    services.branch_changes(root, branch, branch, text)
    } -> std::convertible_to<typename S::BranchChanges>;

  /// The commit of a revision, here always "HEAD". Only when a target branch is named.
  { services.resolve_commit(root, text) } -> std::convertible_to<typename S::Commit>;
  { commit != commit } -> std::convertible_to<bool>;

  /// The changed lines of the kept files (base commit, head commit, files in impact order),
  /// since the head left the base. A path may be absent or empty: nothing to show of it.
  {
    services.changed_line_spans(root, commit, commit, files, merge_base)
    } -> std::convertible_to<typename S::Spans>;

  /// Whether a file is production source. Once per changed file, only when asked for.
  { services.is_source_path(path, language) } -> std::convertible_to<bool>;

  /// The ranges of these paths in the form that the symbol queries take.
  { services.line_ranges(spans, paths) } -> std::convertible_to<typename S::LineRanges>;

  /// A new row of a change: "path", status, old path of a rename, additions, deletions.
  { services.change_row(change) } -> std::convertible_to<typename S::Row>;

  /// The kinds of symbols that count as changed.
  { services.change_kinds() } -> std::convertible_to<typename S::Kinds>;
  /// The most symbols to read of one file.
  { services.symbols_per_row() } -> std::convertible_to<typename S::Integer>;

  {typename S::Value(error_text(error))};
};

/// What the index answers, each in one query whatever the number of files or symbols.
template <class S>
concept RepositoryIndexServices = requires(S& services, const typename S::Repository& repository,
                                           const std::vector<typename S::Path>& paths,
                                           const typename S::LineRanges& ranges,
                                           const typename S::Kinds& kinds,
                                           const typename S::Integer& limit,
                                           const std::vector<typename S::SymbolId>& ids,
                                           bool guessed) {
  /// The impact of the files that the index knows. Once per pack, with all changed files.
  { services.file_impact(field::db(repository), paths) } -> std::convertible_to<typename S::Impact>;

  /// The symbols of these kinds on these lines, at most `limit` for each file.
  {
    services.symbols_on_lines(field::db(repository), ranges, kinds, limit)
    } -> std::convertible_to<std::vector<typename S::SymbolOnLines>>;

  /// How many there are without that limit.
  {
    services.count_symbols_on_lines(field::db(repository), ranges, kinds)
    } -> std::convertible_to<typename S::Integer>;

  /// At most `limit` callers for each id, proven or guessed, in the index's order.
  {
    services.callers_of(repository, ids, guessed, limit)
    } -> std::convertible_to<std::vector<typename S::Caller>>;
};

/// The smaller services.
template <class S>
concept SupportingServices = requires(S& services, const typename S::RepoRoot& root,
                                      const typename S::Path& path,
                                      const typename S::Caller& caller, const typename S::Row& row,
                                      const typename S::Pages& pages,
                                      const typename S::WikiLens& lens, KeptPaths<S>& kept_paths,
                                      std::int64_t most_characters) {
  /// Estimated tokens of a text, never negative.
  { services.estimate_tokens(json_text(row)) } -> std::convertible_to<typename S::Integer>;
  { services.estimate_tokens(json_text(pages)) } -> std::convertible_to<typename S::Integer>;

  /// A file's text in the working tree as UTF-8, or null when there is none to show.
  {
    services.read_repo_text(root, path, most_characters)
    } -> std::convertible_to<std::optional<std::string>>;

  /// A new row of a guessed caller, with its "relation" and "reason".
  { services.guessed_caller_row(caller) } -> std::convertible_to<typename S::Row>;

  /// The wiki pages built from these files.
  { services.pages_citing(lens, kept_paths) } -> std::convertible_to<typename S::Pages>;
};

/// Everything the component asks for.
template <class S>
concept ContextServices =
    GitHistoryServices<S> && RepositoryIndexServices<S> && SupportingServices<S>;

}  // namespace context_delta
