#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "utils/git_utils.h"

namespace context_delta::git_history {

/// One file of a diff, as read from git's output.
struct DiffFile {
  git_utils::FileChange change;
  std::string old_object, new_object;  ///< ids; all zeros for what is not there
  /// Lines of the new text: runs of added lines, and for lines that are only deleted the one that
  /// took their place (the last line when the end was deleted).
  std::vector<git_utils::LineSpan> spans;
};

/// Reads the output of `git diff --raw -z -p -U1 --no-abbrev --full-index` as it comes: names and
/// statuses from the raw records, line counts and spans from the lines of the patch. With a line of
/// context the counts are those of `git diff --numstat`, and lines deleted from the end of a file
/// can be told from others. Memory grows with the number of files and spans, never with the lines
/// of the diff.
class DiffParser {
 public:
  /// Raises GitHistoryError for what git never prints.
  void feed(std::string_view bytes);

  /// The files in git's order, once all output was fed. Raises GitHistoryError when it was cut off.
  std::vector<DiffFile> finish();

 private:
  void feed_records(std::string_view& bytes);
  void feed_patch(std::string_view& bytes);
  void take_field();
  void take_path();
  void take_line();
  void start_section();
  void check_section(std::string_view objects);
  void take_hunk(std::string_view header);
  void take_content(char first);
  void end_run(bool at_end);

  std::vector<DiffFile> files_;
  std::vector<bool> is_type_change_;
  bool in_records_ = true;
  std::string text_;                          // a field of a record or a line of a header, so far
  std::optional<std::string> record_;         // the record whose paths are to come
  std::optional<std::string> old_path_;       // of a rename or copy, whose new path is to come
  std::size_t current_ = 0;                   // the file of the section
  bool has_section_ = false;                  // whether there was a section yet
  bool is_second_half_ = false;               // of a type change: the new file
  std::int64_t old_left_ = 0, new_left_ = 0;  // lines of the hunk still to come
  bool in_content_ = false;                   // within a line of a hunk
  std::int64_t new_line_ = 0;                 // number of the next line of the new text
  std::int64_t added_ = 0, deleted_ = 0;      // lines since the last line of context
};

}  // namespace context_delta::git_history
