#include "workers/git_history.h"

#include <algorithm>
#include <unordered_set>

#include "workers/branch_names.h"
#include "workers/diff_parser.h"
#include "workers/missing_texts.h"

namespace context_delta::git_history {
namespace {

using git_utils::Git;
using git_utils::in_quotes;
using git_utils::shown;
using git_utils::View;

// Every setting that could change the output is named, although none of the repository's is read.
// One line of context: without any, git aligns a few files in another way than `git diff --numstat`
// does, and the end of a text cannot be told.
Git::Command diff_command(const std::vector<std::string>& range,
                          const std::vector<DiffFile>& without) {
  Git::Command command{{"diff",
                        "--raw",
                        "-z",
                        "-p",
                        "--unified=1",
                        "--no-abbrev",
                        "--full-index",
                        "--find-renames=50%",
                        "-l1000",
                        "--diff-algorithm=myers",
                        "--indent-heuristic",
                        "--inter-hunk-context=0",
                        "--ignore-submodules=none",
                        "--submodule=short",
                        "--src-prefix=a/",
                        "--dst-prefix=b/",
                        "--no-relative",
                        "--no-ext-diff",
                        "--no-textconv",
                        "--no-color",
                        "--end-of-options"},
                       View::OBJECTS};
  command.arguments.insert(command.arguments.end(), range.begin(), range.end());
  command.arguments.push_back("--");
  for (const DiffFile& file : without) command.arguments.push_back(all_but(file.change.path));
  return command;
}

std::vector<std::string> range_of(const Sides& sides, bool merge_base) {
  if (merge_base) return {sides.base.commit + "..." + sides.head.commit};
  return {sides.base.commit, sides.head.commit};
}

// The commits of a branch, counted from `rev-list --parents --boundary` as it comes.
class CommitCounter {
 public:
  void feed(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto end = bytes.find('\n');
      line_ += bytes.substr(0, end);
      if (end == std::string_view::npos) return;
      bytes.remove_prefix(end + 1);
      take_line();
      line_.clear();
    }
  }

  std::int64_t count() const { return count_; }

  // Whether a merge among the commits has a parent that the base has too.
  bool merged_base() const {
    return std::any_of(merged_.begin(), merged_.end(),
                       [&](const std::string& parent) { return boundary_.contains(parent); });
  }

 private:
  void take_line() {
    const std::string_view line = line_;
    if (line.starts_with('-')) {
      boundary_.emplace(line.substr(1, line.find(' ') - 1));
      return;
    }
    ++count_;
    // Ids are of one length: the commit, its first parent, then those merged into it.
    const std::size_t step = std::min(line.find(' '), line.size()) + 1;
    for (std::size_t at = 2 * step; at < line.size(); at += step) {
      merged_.emplace_back(line.substr(at, step - 1));
    }
  }

  std::string line_;
  std::int64_t count_ = 0;
  std::vector<std::string> merged_;
  std::unordered_set<std::string> boundary_;
};

[[noreturn]] void fail_on_diff(const Git& git, const Sides& sides, const Git::Output& output) {
  const std::string both = in_quotes(sides.base.name) + " and " + in_quotes(sides.head.name);
  // Where history cannot be read to its end, git tells of no merge base too.
  if (output.errors.find("no merge base") == std::string::npos ||
      git_utils::lacks_objects(output.errors)) {
    git_utils::fail_on_objects(git, "comparing " + both, output);
  }
  const std::string what = "no merge base of " + both + " in " + shown(git.root().string());
  if (git.is_shallow()) {
    throw GitHistoryError(what + ": its history is cut off (shallow clone): run " +
                          git_utils::advised(git, "fetch --unshallow"));
  }
  throw GitHistoryError(what + ": their histories are unrelated: name another " +
                        sides.base_parameter);
}

struct Comparison {
  std::vector<DiffFile> files;
  std::int64_t commit_count = 0;
  bool merged_base = false;
  bool has_several_bases = false;
  std::size_t without_texts = 0;  ///< files
};

// The commits are counted while the diff runs; that takes no time of its own on short branches.
// `without` are files that the diff must not read, and that are listed as they are here.
Comparison compare(const Git& git, const Sides& sides, bool merge_base, bool count_commits,
                   const std::vector<DiffFile>& without = {}) {
  DiffParser parser;
  CommitCounter counter;
  std::vector<Git::Streamed> commands = {{diff_command(range_of(sides, merge_base), without),
                                          [&](std::string_view bytes) { parser.feed(bytes); }}};
  if (count_commits) {
    commands.push_back({{{"rev-list", "--parents", "--boundary", "--end-of-options",
                          sides.base.commit + ".." + sides.head.commit, "--"},
                         View::OBJECTS},
                        [&](std::string_view bytes) { counter.feed(bytes); }});
  }
  const std::vector<Git::Output> outputs = git.stream(commands);
  if (outputs[0].status != 0 && without.empty() && git_utils::is_partial_clone(git)) {
    const auto missing = changes_without_texts(git, range_of(sides, merge_base));
    if (!missing.empty()) return compare(git, sides, merge_base, count_commits, missing);
  }
  for (const Git::Output& output : outputs) {
    if (output.status != 0) fail_on_diff(git, sides, output);
  }
  Comparison comparison{parser.finish(), counter.count(), counter.merged_base(),
                        outputs[0].errors.find("multiple merge bases") != std::string::npos,
                        without.size()};
  comparison.files.insert(comparison.files.end(), without.begin(), without.end());
  std::stable_sort(
      comparison.files.begin(), comparison.files.end(),
      [](const DiffFile& a, const DiffFile& b) { return a.change.path < b.change.path; });
  return comparison;
}

std::optional<std::string> note_on(const Sides& sides, const Comparison& comparison) {
  std::vector<std::string> remarks;
  const std::string base = in_quotes(sides.base.name);
  const std::string head = in_quotes(sides.head.name);
  if (sides.base.name == sides.head.name) {
    remarks.push_back(head + " is the base branch itself");
  } else if (comparison.commit_count == 0) {
    remarks.push_back(head + " has no commit that " + base + " lacks");
  }
  if (comparison.has_several_bases) {
    remarks.push_back(base + " and " + head +
                      " have several merge bases: compared with the first that git names");
  }
  if (comparison.merged_base) remarks.push_back(base + " was merged into " + head);
  if (comparison.files.empty() && sides.why_base) remarks.push_back(*sides.why_base);
  std::string note;
  for (const std::string& remark : remarks) note += (note.empty() ? "" : "; ") + remark;
  return note.empty() ? std::nullopt : std::optional(note);
}

}  // namespace

BranchChanges History::branch_changes(const std::optional<std::string>& base_branch,
                                      const std::optional<std::string>& target_branch,
                                      std::string_view head_parameter,
                                      std::string_view base_parameter) {
  return branch_changes(find_sides(git_, {base_branch, target_branch, std::string(base_parameter),
                                          std::string(head_parameter)}));
}

BranchChanges History::branch_changes(const Sides& sides) {
  Comparison comparison = compare(git_, sides, true, true);
  BranchChanges changes{{},
                        sides.base.name,
                        sides.head.name,
                        comparison.commit_count,
                        sides.base.commit,
                        sides.head.commit,
                        note_on(sides, comparison),
                        comparison.has_several_bases,
                        comparison.without_texts};
  Read read{sides.base.commit, sides.head.commit, true, {}};
  for (DiffFile& file : comparison.files) {
    read.spans.emplace(file.change.path, std::move(file.spans));
    changes.files.push_back(std::move(file.change));
  }
  read_ = std::move(read);
  return changes;
}

LineSpans History::changed_line_spans(std::string_view base_commit, std::string_view head_commit,
                                      std::span<const FileChange> files, bool merge_base) {
  if (!read_ || read_->base_commit != base_commit || read_->head_commit != head_commit ||
      read_->merge_base != merge_base) {
    for (const std::string_view commit : {base_commit, head_commit}) {
      if (git_utils::is_object_id(commit)) continue;
      throw GitHistoryError("not a full commit id: " + in_quotes(commit));
    }
    const Side base{std::string(base_commit), std::string(base_commit)};
    const Side head{std::string(head_commit), std::string(head_commit)};
    Read read{base.commit, head.commit, merge_base, {}};
    for (DiffFile& file : compare(git_, Sides{base, head, {}}, merge_base, false).files) {
      read.spans.emplace(std::move(file.change.path), std::move(file.spans));
    }
    read_ = std::move(read);
  }
  LineSpans spans;
  for (const FileChange& file : files) {
    const auto found = read_->spans.find(file.path);
    if (found != read_->spans.end() && !found->second.empty()) spans.insert(*found);
  }
  return spans;
}

LineRanges line_ranges(const LineSpans& spans, std::span<const std::string> paths) {
  LineRanges ranges;
  for (const std::string& path : paths) {
    const auto found = spans.find(path);
    if (found != spans.end() && !found->second.empty()) ranges.push_back(*found);
  }
  return ranges;
}

json::Mapping change_row(const FileChange& change) {
  json::Mapping row;
  row.set("path", change.path);
  row.set("status", change.status);
  if (change.old_path) row.set("old_path", *change.old_path);
  row.set("additions", change.additions);
  row.set("deletions", change.deletions);
  return row;
}

}  // namespace context_delta::git_history
