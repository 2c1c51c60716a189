#include "workers/diff_parser.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "utils/utf8.h"

namespace context_delta::git_history {
namespace {

using git_utils::FileChange;
using git_utils::GitHistoryError;

constexpr std::size_t MOST_NAME_BYTES = 1024 * 1024;

[[noreturn]] void fail(std::string_view what, std::string_view text) {
  throw GitHistoryError("git printed a diff that cannot be read: " + git_utils::shown(what) + ": " +
                        git_utils::shown(text));
}

std::string_view status_name(char letter) {
  switch (letter) {
    case 'A':
      return "added";
    case 'M':
      return "modified";
    case 'D':
      return "deleted";
    case 'R':
      return "renamed";
    case 'C':
      return "copied";
    case 'T':
      return "type_changed";
    default:
      return {};
  }
}

// Takes a word and the blank after it off `text`.
std::string_view next_word(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(std::min(text.size(), word.size() + 1));
  return word;
}

bool is_same_object(std::string_view object, std::string_view expected) {
  return object == expected || object.find_first_not_of('0') == std::string_view::npos;
}

struct Range {
  std::int64_t start, count;
};

std::optional<std::int64_t> parsed_number(std::string_view text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end || number < 0) return std::nullopt;
  return number;
}

// "-START,COUNT" or "-START", which means one line.
std::optional<Range> parsed_range(std::string_view text, char sign) {
  if (!text.starts_with(sign)) return std::nullopt;
  const auto comma = text.find(',');
  const auto start = parsed_number(text.substr(1, comma - 1));
  const auto count = comma == std::string_view::npos ? 1 : parsed_number(text.substr(comma + 1));
  if (!start || !count) return std::nullopt;
  return Range{*start, *count};
}

}  // namespace

void DiffParser::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    if (in_records_) {
      feed_records(bytes);
    } else {
      feed_patch(bytes);
    }
  }
}

std::vector<DiffFile> DiffParser::finish() {
  const bool has_patch = files_.empty() || !in_records_;
  const bool is_whole =
      has_patch && !record_ && text_.empty() && !in_content_ && old_left_ == 0 && new_left_ == 0;
  if (!is_whole) fail("it is cut off", text_);
  return std::move(files_);
}

void DiffParser::feed_records(std::string_view& bytes) {
  const auto end = bytes.find('\0');
  text_ += bytes.substr(0, end);
  if (text_.size() > MOST_NAME_BYTES) fail("too long a name", text_);
  if (end == std::string_view::npos) return bytes.remove_prefix(bytes.size());
  bytes.remove_prefix(end + 1);
  take_field();
  text_.clear();
}

// Raw records with their paths; an empty field ends them.
void DiffParser::take_field() {
  if (record_) {
    take_path();
  } else if (text_.empty()) {
    in_records_ = false;
  } else if (text_.starts_with(':')) {
    record_ = text_;
  } else {
    fail("unknown record", text_);
  }
}

// ":OLD_MODE NEW_MODE OLD_OBJECT NEW_OBJECT STATUS" and a path, of renames and copies the second.
void DiffParser::take_path() {
  std::string_view record = *record_;
  next_word(record);
  next_word(record);
  const std::string_view old_object = next_word(record), new_object = next_word(record);
  if (record.empty() || status_name(record[0]).empty()) fail("unknown record", *record_);
  if ((record[0] == 'R' || record[0] == 'C') && !old_path_) {
    old_path_ = utf8::path_text(text_);
    return;
  }
  FileChange change{utf8::path_text(text_), std::string(status_name(record[0])),
                    std::exchange(old_path_, std::nullopt)};
  files_.push_back({std::move(change), std::string(old_object), std::string(new_object), {}});
  is_type_change_.push_back(record[0] == 'T');
  record_.reset();
}

void DiffParser::feed_patch(std::string_view& bytes) {
  if (!in_content_ && text_.empty() && (old_left_ > 0 || new_left_ > 0)) {
    take_content(bytes[0]);
    in_content_ = true;
  }
  const auto end = bytes.find('\n');
  if (!in_content_) text_ += bytes.substr(0, end);
  if (text_.size() > 3 * MOST_NAME_BYTES) fail("too long a line", text_);
  if (end == std::string_view::npos) return bytes.remove_prefix(bytes.size());
  bytes.remove_prefix(end + 1);
  if (!std::exchange(in_content_, false)) take_line();
  text_.clear();
}

// A line that starts with a backslash is a remark of git's ("No newline at end of file").
void DiffParser::take_content(char first) {
  FileChange& change = files_[current_].change;
  switch (first) {
    case '-':
      --old_left_;
      ++deleted_;
      ++change.deletions;
      break;
    case '+':
      --new_left_;
      ++added_;
      ++change.additions;
      ++new_line_;
      break;
    case ' ':
      --old_left_;
      --new_left_;
      end_run(false);
      ++new_line_;
      break;
    case '\\':
      return;
    default:
      fail("unknown line in a hunk of " + change.path, std::string_view(&first, 1));
  }
  if (old_left_ < 0 || new_left_ < 0) fail("too long a hunk of " + change.path, text_);
  if (old_left_ == 0 && new_left_ == 0) end_run(true);
}

// What follows the last line of context of a hunk is the end of the text: git shows one line after
// what changed as long as there is one.
void DiffParser::end_run(bool at_end) {
  const std::int64_t added = std::exchange(added_, 0);
  const std::int64_t deleted = std::exchange(deleted_, 0);
  DiffFile& file = files_[current_];
  if (file.change.status == "deleted" || (is_type_change_[current_] && !is_second_half_)) return;
  if (added > 0) {
    file.spans.push_back({new_line_ - added, new_line_ - 1});
  } else if (deleted > 0) {
    const std::int64_t line = at_end ? new_line_ - 1 : new_line_;
    if (line > 0) file.spans.push_back({line, line});
  }
}

void DiffParser::take_line() {
  const std::string_view line = text_;
  if (line.starts_with("diff --git ")) {
    start_section();
  } else if (!has_section_) {
    fail("unknown line", line);
  } else if (line.starts_with("index ")) {
    check_section(line.substr(6));
  } else if (line.starts_with("@@ ")) {
    take_hunk(line.substr(3));
  }
}

// Sections come in the order of the records, two for a type change.
void DiffParser::start_section() {
  if (has_section_ && is_type_change_[current_] && !is_second_half_) {
    is_second_half_ = true;
    return;
  }
  current_ = has_section_ ? current_ + 1 : 0;
  if (current_ >= files_.size()) fail("more files in the patch than records", text_);
  is_second_half_ = false;
  has_section_ = true;
}

// "OLD..NEW MODE". A record whose section git left out is passed over.
void DiffParser::check_section(std::string_view objects) {
  const auto dots = objects.find("..");
  const std::string_view old_object = objects.substr(0, dots);
  std::string_view rest = dots == std::string_view::npos ? "" : objects.substr(dots + 2);
  const std::string_view new_object = next_word(rest);
  for (; current_ < files_.size(); ++current_) {
    if (is_same_object(old_object, files_[current_].old_object) &&
        is_same_object(new_object, files_[current_].new_object)) {
      return;
    }
  }
  fail("a file of the patch is in no record", objects);
}

void DiffParser::take_hunk(std::string_view header) {
  std::string_view rest = header;
  const auto old_range = parsed_range(next_word(rest), '-');
  const auto new_range = parsed_range(next_word(rest), '+');
  if (!old_range || !new_range) fail("unknown hunk", header);
  old_left_ = old_range->count;
  new_left_ = new_range->count;
  // Of no lines, the range names the line before.
  new_line_ = new_range->count == 0 ? new_range->start + 1 : new_range->start;
}

}  // namespace context_delta::git_history
