#include "workers/missing_texts.h"

#include <span>
#include <sstream>
#include <string_view>

#include "utils/utf8.h"

namespace context_delta::git_history {
namespace {

using git_utils::Git;
using git_utils::View;

std::string status_of(char letter) {
  switch (letter) {
    case 'A':
      return "added";
    case 'D':
      return "deleted";
    case 'T':
      return "type_changed";
    default:
      return "modified";
  }
}

bool has_text(std::string_view mode) {
  return !mode.ends_with("000000") && !mode.ends_with("160000");
}

// A changed file, and the objects of its texts.
struct Change {
  DiffFile file;
  std::vector<std::string> texts;
};

// ":MODE MODE ID ID STATUS\0PATH\0" one after another.
std::vector<Change> changes_in(std::string_view raw) {
  std::vector<Change> changes;
  while (raw.starts_with(':')) {
    const auto end = raw.find('\0');
    const auto path_end = raw.find('\0', end + 1);
    if (path_end == raw.npos) break;
    std::istringstream fields{std::string(raw.substr(1, end - 1))};
    std::string old_mode, new_mode, old_object, new_object;
    char letter = 'M';
    fields >> old_mode >> new_mode >> old_object >> new_object >> letter;
    Change change;
    change.file.change.path = utf8::path_text(raw.substr(end + 1, path_end - end - 1));
    change.file.change.status = status_of(letter);
    if (has_text(old_mode)) change.texts.push_back(old_object);
    if (has_text(new_mode)) change.texts.push_back(new_object);
    change.file.old_object = std::move(old_object);
    change.file.new_object = std::move(new_object);
    changes.push_back(std::move(change));
    raw.remove_prefix(path_end + 1);
  }
  return changes;
}

// For each object asked for, in order, whether it is missing.
std::vector<bool> missing(const Git& git, const std::string& objects) {
  const Git::Command command{
      {"cat-file", "--batch-check=%(objecttype)"}, View::OBJECTS, objects, {}};
  const Git::Output output = git.run(std::span(&command, 1)).front();
  std::vector<bool> result;
  std::istringstream lines(output.out);
  for (std::string line; std::getline(lines, line);) result.push_back(line.ends_with(" missing"));
  return result;
}

}  // namespace

std::vector<DiffFile> changes_without_texts(const Git& git, const std::vector<std::string>& range) {
  Git::Command command{{"diff", "--raw", "-z", "--no-renames", "--no-abbrev", "--no-ext-diff",
                        "--ignore-submodules=none", "--end-of-options"},
                       View::OBJECTS,
                       {},
                       {}};
  command.arguments.insert(command.arguments.end(), range.begin(), range.end());
  command.arguments.push_back("--");
  const Git::Output output = git.run(std::span(&command, 1)).front();
  if (output.status != 0) return {};
  std::vector<Change> changes = changes_in(output.out);
  std::string objects;
  for (const Change& change : changes) {
    for (const std::string& text : change.texts) objects += text + "\n";
  }
  const std::vector<bool> is_missing = missing(git, objects);
  std::vector<DiffFile> files;
  std::size_t asked = 0;
  for (Change& change : changes) {
    bool lacks = false;
    for (std::size_t i = 0; i < change.texts.size(); ++i, ++asked) {
      lacks = lacks || (asked < is_missing.size() && is_missing[asked]);
    }
    if (lacks) files.push_back(std::move(change.file));
  }
  if (files.size() > MOST_MISSING_TEXTS) files.clear();
  return files;
}

std::string all_but(const std::string& path) {
  return ":(top,exclude,literal)" + utf8::path_bytes(path);
}

}  // namespace context_delta::git_history
