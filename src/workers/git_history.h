#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "utils/git_utils.h"
#include "utils/json.h"
#include "workers/branch_names.h"

/// What a branch changed since it left its base, by git.
namespace context_delta::git_history {

using git_utils::FileChange;
using git_utils::GitHistoryError;
using git_utils::LineSpan;

/// The kinds of symbols that count as changed when their lines are.
inline constexpr std::array<std::string_view, 12> CHANGE_KINDS = {
    "function", "method", "constructor", "class", "struct",   "interface",
    "enum",     "union",  "trait",       "type",  "variable", "macro"};

/// The most symbols that are listed for one file.
inline constexpr std::int64_t SYMBOLS_PER_ROW = 50;

/// The comparison of a branch with its base.
struct BranchChanges {
  std::vector<FileChange> files;  ///< by path, in byte order
  std::string base_branch;        ///< as named, or as chosen when none was named
  std::string head_branch;        ///< the branch reviewed; a short commit id when HEAD is detached
  std::int64_t commit_count = 0;  ///< commits of the head that the base lacks
  std::string base_commit;        ///< what the base names, not the merge base
  std::string head_commit;
  std::optional<std::string> note;  ///< a remark on the comparison, for a person
  bool has_several_bases = false;   ///< merge bases; compared with the first that git names
  /// Files without counts and spans, since a partial clone has not fetched their texts.
  std::size_t without_texts = 0;
};

/// The changed line spans of each file, in the order of the file, by path.
using LineSpans = std::unordered_map<std::string, std::vector<LineSpan>>;

/// The changed line spans of some files, in the order the paths were given.
using LineRanges = std::vector<std::pair<std::string, std::vector<LineSpan>>>;

/// Compares branches of one repository. One object serves one pack: the line spans that the
/// comparison reads along with the names are kept until changed_line_spans asks for them.
class History {
 public:
  explicit History(const git_utils::Git& git) : git_(git) {}

  /// What `target_branch` (null: what is checked out) changed since it left `base_branch` (null:
  /// the remote's default branch, else main, else master), from their merge base.
  /// `head_parameter` is the name under which errors speak of the target branch; the base is
  /// spoken of as "base_branch" or, when `base_parameter` says so, under that name.
  /// Raises GitHistoryError when the two cannot be compared.
  BranchChanges branch_changes(const std::optional<std::string>& base_branch,
                               const std::optional<std::string>& target_branch,
                               std::string_view head_parameter,
                               std::string_view base_parameter = "base_branch");

  /// The same for names that are resolved already, so that other work can hang on the same ids.
  BranchChanges branch_changes(const Sides& sides);

  /// The changed lines of `files` between two commits, from their merge base when `merge_base`.
  /// Lines are those of the new version, as a diff with one line of context shows them; where lines
  /// are only deleted it is the one line that took their place (the last line when the end was
  /// deleted). Raises GitHistoryError.
  LineSpans changed_line_spans(std::string_view base_commit, std::string_view head_commit,
                               std::span<const FileChange> files, bool merge_base);

 private:
  struct Read {  // what one comparison has read
    std::string base_commit, head_commit;
    bool merge_base = false;
    LineSpans spans;
  };
  const git_utils::Git& git_;
  std::optional<Read> read_;
};

/// Why a file is not production source. The texts are constants.
struct SourceExclusion {
  std::string_view file_class;  ///< test, document, generated or asset
  std::string_view rule;        ///< what the rule is called
  std::string_view pattern;     ///< of the rule, which the path matched
};

/// The first rule that tells that a file is a test, a document, generated or a binary asset; null
/// for production source. Decided by the path and `language` alone, the index's name for the file's
/// language ("python", "cpp", ...), null when it knows none: what is in a language is no document
/// and no asset by its name.
std::optional<SourceExclusion> source_exclusion(std::string_view path,
                                                std::optional<std::string_view> language);

/// Whether a file is production source, by source_exclusion(). What no rule names is: build files,
/// workflows, settings, schemas, vendored code that people edit.
bool is_source_path(std::string_view path, std::optional<std::string_view> language);

/// The ranges of `paths`, in their order, for the symbol queries of the index. Paths without spans
/// are left out.
LineRanges line_ranges(const LineSpans& spans, std::span<const std::string> paths);

/// A new row for a change: path, status, old_path (renames and copies only), additions, deletions.
json::Mapping change_row(const FileChange& change);

}  // namespace context_delta::git_history
