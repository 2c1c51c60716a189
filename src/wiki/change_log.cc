#include "wiki/change_log.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace context_delta::wiki {
namespace {

std::string_view take_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

/// The lines above the message: `commit ID (from PARENT)<tab>TIP`, `parent ID`, and others. Lines
/// of the message are indented, so none of them can pass for one of these.
std::optional<LoggedCommit> read_header(std::string_view token, std::string_view head) {
  constexpr std::string_view COMMIT = "commit ";
  constexpr std::string_view PARENT = "parent ";
  constexpr std::string_view FROM = " (from ";
  std::string_view first = take_line(token);
  if (!first.starts_with(COMMIT)) return std::nullopt;
  first.remove_prefix(COMMIT.size());
  const std::size_t tab = std::min(first.find('\t'), first.size());
  const bool by_head = tab < first.size() && first.substr(tab + 1) == head;
  first = first.substr(0, tab);
  const std::size_t from = std::min(first.find(FROM), first.size());
  LoggedCommit commit{
      .id = std::string(first.substr(0, from)), .parents = {}, .compared = {}, .by_head = by_head};
  if (from < first.size() && first.ends_with(')')) {
    commit.compared = first.substr(from + FROM.size(), first.size() - from - FROM.size() - 1);
  }
  while (!token.empty()) {
    const std::string_view line = take_line(token);
    if (line.empty()) break;
    if (line.starts_with(PARENT)) commit.parents.emplace_back(line.substr(PARENT.size()));
  }
  return commit;
}

bool is_status(std::string_view text) {
  return text.size() == 1 && text[0] >= 'A' && text[0] <= 'Z';
}

}  // namespace

void LogReader::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\0');
    pending_ += bytes.substr(0, end);
    if (end == bytes.npos) return;
    bytes.remove_prefix(end + 1);
    bytes_read_ += pending_.size() + 1;
    take(pending_);
    pending_.clear();
  }
}

void LogReader::finish_log() {
  if (!pending_.empty()) take(std::exchange(pending_, {}));
}

void LogReader::take(std::string_view token) {
  if (path_next_) {
    path_next_ = false;
    change(token, deleted_);
    return;
  }
  // The status of the first path ends the token of the header.
  const std::size_t line = token.rfind('\n');
  const std::string_view last = token.substr(line == token.npos ? 0 : line + 1);
  if (const std::optional<LoggedCommit> header = read_header(token, head_)) commit(*header);
  path_next_ = is_status(last);
  deleted_ = last == "D";
}

git_utils::Git::Command log_command(const std::string& head,
                                    const std::vector<std::string>& commits) {
  std::string input;
  for (const std::string& commit : commits) input += commit + "\n";
  return {.arguments = {"log",
                        "--pretty=raw",
                        "--no-decorate",
                        "--no-notes",
                        "--no-show-signature",
                        "--no-color",
                        "--diff-merges=separate",
                        "--root",
                        "--name-status",
                        "-z",
                        "--no-renames",
                        "--no-relative",
                        "--ignore-submodules=none",
                        "--no-ext-diff",
                        "--no-textconv",
                        "-O/dev/null",
                        "--source",
                        "--ignore-missing",
                        head,
                        "--stdin",
                        "--"},
          .view = git_utils::is_object_id(head) ? git_utils::View::OBJECTS
                                                : git_utils::View::REPOSITORY,
          .input = std::move(input)};
}

}  // namespace context_delta::wiki
