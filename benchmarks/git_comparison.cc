#include <iostream>
#include <sstream>
#include <string>

#include "utils/git_utils.h"
#include "workers/git_history.h"

namespace context_delta {
namespace {

/// What a pack asks git for, in its order: the changed files and their changed lines.
void compare(const git_utils::Git& git, const std::string& base, const std::string& head) {
  git_history::History history(git);
  git_utils::resolve_commit(git, "HEAD");
  const auto changes = history.branch_changes(base, head, "target_branch");
  const auto spans =
      history.changed_line_spans(changes.base_commit, changes.head_commit, changes.files, true);
  std::string text;
  for (const git_utils::FileChange& change : changes.files) {
    json::Mapping row = git_history::change_row(change);
    json::List lines;
    if (const auto found = spans.find(change.path); found != spans.end()) {
      for (const auto& [start, end] : found->second) {
        lines.push_back(json::List{json::Value(start), json::Value(end)});
      }
    }
    row.set("spans", std::move(lines));
    text += json_text(row) + "\n";
  }
  std::cout << text << std::endl;
}

}  // namespace
}  // namespace context_delta

/// Compares the pairs of revisions on its standard input ("BASE HEAD", one pair a line): each
/// changed file with its changed lines as a line of JSON, and an empty line after each pair.
int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: git_comparison REPOSITORY < PAIRS\n";
    return 2;
  }
  try {
    for (std::string line; std::getline(std::cin, line);) {
      std::string base, head;
      std::istringstream(line) >> base >> head;
      context_delta::compare(context_delta::git_utils::Git(arguments[1]), base, head);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "git_comparison: " << error.what() << "\n";
    return 1;
  }
}
