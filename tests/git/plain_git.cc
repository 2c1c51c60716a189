#include "plain_git.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

#include "utils/utf8.h"

namespace context_delta::test {
namespace {

std::vector<std::string> fields_of(const std::string& text) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (auto end = text.find('\0'); end != std::string::npos; end = text.find('\0', start)) {
    fields.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return fields;
}

/// What a patch with a line of context shows of the new text: each run of added lines, and for
/// lines that are only deleted the one after them, or the last.
std::vector<git_utils::LineSpan> spans_of(const GitRepository& repository, const std::string& from,
                                          const std::string& to) {
  std::vector<git_utils::LineSpan> spans;
  std::istringstream diff(repository.git({"diff", "-U1", "--no-color", from, to}));
  std::int64_t next = 0, added = 0;
  bool in_hunk = false, deleted = false;
  const auto end_run = [&](bool at_end) {
    const std::int64_t line = at_end ? next - 1 : next;
    if (added > 0) spans.push_back({next - added, next - 1});
    if (added == 0 && deleted && line > 0) spans.push_back({line, line});
    added = 0;
    deleted = false;
  };
  for (std::string line; std::getline(diff, line);) {
    if (line.starts_with("@@ ")) {
      end_run(true);
      long start = 0, count = 1;
      std::sscanf(line.c_str() + line.find('+'), "+%ld,%ld", &start, &count);
      next = start + (count == 0 ? 1 : 0);
      in_hunk = true;
    } else if (in_hunk && line.starts_with('+')) {
      ++added;
      ++next;
    } else if (in_hunk && line.starts_with('-')) {
      deleted = true;
    } else if (in_hunk && line.starts_with(' ')) {
      end_run(false);
      ++next;
    }
  }
  end_run(true);
  return spans;
}

std::int64_t count_of(const std::string& text) { return text == "-" ? 0 : std::stoll(text); }

std::map<std::string, std::pair<std::int64_t, std::int64_t>> counts(
    const std::vector<std::string>& fields) {
  std::map<std::string, std::pair<std::int64_t, std::int64_t>> result;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const auto first = fields[i].find('\t'), second = fields[i].find('\t', first + 1);
    const std::pair numbers(count_of(fields[i].substr(0, first)),
                            count_of(fields[i].substr(first + 1, second - first - 1)));
    std::string path = fields[i].substr(second + 1);
    if (path.empty()) path = fields[i += 2];
    result[path] = numbers;
  }
  return result;
}

}  // namespace

std::vector<PlainFile> plain_comparison(const GitRepository& repository, const std::string& base,
                                        const std::string& head) {
  const std::map<char, std::string> statuses = {{'A', "added"},   {'M', "modified"},
                                                {'D', "deleted"}, {'R', "renamed"},
                                                {'C', "copied"},  {'T', "type_changed"}};
  const std::string from = repository.git({"merge-base", base, head});
  const std::string empty = repository.git({"hash-object", "-t", "blob", "-w", "/dev/null"});
  const auto raw =
      fields_of(repository.git({"diff", "--raw", "--no-abbrev", "-z", "-M", from, head}));
  const auto numbers =
      counts(fields_of(repository.git({"diff", "--numstat", "-z", "-M", from, head})));
  std::vector<PlainFile> files;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    std::istringstream record(raw[i]);
    std::string old_mode, mode, old_id, id, status;
    record >> old_mode >> mode >> old_id >> id >> status;
    PlainFile file;
    file.change.status = statuses.at(status[0]);
    if (status[0] == 'R' || status[0] == 'C') file.change.old_path = utf8::path_text(raw[++i]);
    const std::string path = raw[++i];
    file.change.path = utf8::path_text(path);
    std::tie(file.change.additions, file.change.deletions) = numbers.at(path);
    const bool is_new = status[0] == 'A' || status[0] == 'T';
    if (mode.starts_with("1") && !mode.starts_with("16")) {
      file.spans = spans_of(repository, is_new ? empty : old_id, id);
    }
    files.push_back(std::move(file));
  }
  std::sort(files.begin(), files.end(),
            [](const PlainFile& a, const PlainFile& b) { return a.change.path < b.change.path; });
  return files;
}

std::string described(const git_utils::FileChange& change,
                      const std::vector<git_utils::LineSpan>& spans) {
  std::string text = change.status + " " + change.old_path.value_or("") + " > " + change.path +
                     " +" + std::to_string(change.additions) + " -" +
                     std::to_string(change.deletions);
  for (const auto& [start, end] : spans) {
    text += " ";
    text += std::to_string(start) + "-" + std::to_string(end);
  }
  return text;
}

std::vector<std::string> our_comparison(const git_utils::Git& git, const std::string& base,
                                        const std::string& head) {
  git_history::History history(git);
  const auto changes = history.branch_changes(base, head, "target_branch");
  auto spans =
      history.changed_line_spans(changes.base_commit, changes.head_commit, changes.files, true);
  std::vector<std::string> lines;
  for (const git_utils::FileChange& change : changes.files) {
    lines.push_back(described(change, spans[change.path]));
  }
  return lines;
}

}  // namespace context_delta::test
