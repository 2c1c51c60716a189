#include <algorithm>
#include <array>

#include "utils/git_state.h"
#include "utils/git_utils.h"

namespace context_delta::git_utils {
namespace {

bool has_control_characters(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

}  // namespace

// The revisions go to git's standard input, where nothing is taken for an option or a path.
Git::Command commits_command(std::span<const std::string> revisions) {
  Git::Command command{{"cat-file", "--batch-check=%(objectname)"}, View::REPOSITORY};
  for (const std::string& revision : revisions) {
    // No revision has control characters; "?" is none either.
    const bool is_sent = !revision.empty() && !has_control_characters(revision);
    command.input += (is_sent ? revision : "?") + "^{commit}\n";
  }
  return command;
}

std::vector<std::optional<std::string>> commits_found(const Git::Output& output) {
  std::vector<std::optional<std::string>> commits;
  std::string_view text = output.out;
  for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    const std::string_view line = text.substr(0, end);
    commits.push_back(is_object_id(line) ? std::optional<std::string>(line) : std::nullopt);
    text.remove_prefix(end + 1);
  }
  return commits;
}

GitHistoryError unborn_head_error(const Git& git) {
  const Git::Output head = git.run(std::array<std::string, 3>{"symbolic-ref", "--short", "HEAD"});
  const std::string branch = head.out.substr(0, head.out.find('\n'));
  const std::string what = branch.empty() ? "HEAD" : "branch " + in_quotes(branch);
  return GitHistoryError(what + " has no commit yet in " + shown(git.root().string()) +
                         ": commit first, or check out a branch that has commits");
}

std::string resolve_commit(const Git& git, std::string_view revision) {
  const Git::Command command = commits_command(std::array<std::string, 1>{std::string(revision)});
  const Git::Output output = std::move(git.run(std::span(&command, 1)).front());
  const auto commits = commits_found(output);
  if (!commits.empty() && commits.front()) return *commits.front();
  if (revision == "HEAD") throw unborn_head_error(git);
  throw GitHistoryError(in_quotes(revision) + " is no commit of " + shown(git.root().string()) +
                        ": see " + advised(git, "branch --all"));
}

}  // namespace context_delta::git_utils
