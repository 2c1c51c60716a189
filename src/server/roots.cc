#include "server/roots.h"

#include <algorithm>
#include <fstream>

#include "server/tools.h"
#include "utils/utf8.h"

namespace context_delta::server {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t MOST_LISTED = 8;

bool lies_in(const fs::path& path, const fs::path& folder) {
  const auto [rest, ignored] =
      std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
  return rest == folder.end();
}

std::string text_of(const fs::path& path) { return utf8::path_text(path.native()); }

/// The path in the first line of a file of git's, what stands before it taken off; empty if the
/// file is not like that.
fs::path path_in(const fs::path& file, std::string_view before) {
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  if (!std::getline(stream, line) || !line.starts_with(before)) return {};
  const fs::path path = line.substr(before.size());
  return path.is_absolute() ? path : file.parent_path() / path;
}

/// Whether the main repository knows the work tree: its record names the work tree's `.git`.
bool is_listed_work_tree(const fs::path& root, const fs::path& common_directory) {
  std::error_code error;
  const fs::path record = fs::canonical(path_in(root / ".git", "gitdir: "), error);
  if (error || record.parent_path() != common_directory / "worktrees") return false;
  const fs::path back = fs::weakly_canonical(path_in(record / "gitdir", ""), error);
  return !error && back == root / ".git";
}

}  // namespace

std::string Roots::listed() const {
  std::string text;
  for (std::size_t i = 0; i < std::min(folders_.size(), MOST_LISTED); ++i) {
    text += (i == 0 ? "" : ", ") + text_of(folders_[i]);
  }
  if (folders_.size() <= MOST_LISTED) return text;
  return text + " and " + std::to_string(folders_.size() - MOST_LISTED) + " more";
}

bool Roots::hold(const fs::path& resolved) const {
  return std::any_of(folders_.begin(), folders_.end(),
                     [&](const fs::path& folder) { return lies_in(resolved, folder); });
}

fs::path Roots::folder(const std::optional<std::string>& text, const std::string& parameter) const {
  if (folders_.size() == 1) return folder_below(folders_.front(), text.value_or("."), parameter);
  if (!text) throw ToolError(parameter + " is missing: name a folder in one of " + listed());
  if (!text->starts_with('/')) {
    throw ToolError(parameter + " must be absolute, not " + git_utils::in_quotes(*text) +
                    ": name a folder in one of " + listed());
  }
  return folder_below("/", *text, parameter);
}

fs::path Roots::folder_below(const fs::path& base, const std::string& text,
                             const std::string& parameter) const {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(base / utf8::path_bytes(text), error);
  // Nothing is told about what lies outside, not even whether it exists.
  if (error || !hold(path)) {
    throw ToolError(parameter + " " + git_utils::in_quotes(text) +
                    " lies outside of what this server may read: name a folder in " + listed());
  }
  if (!fs::is_directory(path, error)) {
    throw ToolError(parameter + " " + git_utils::in_quotes(text) + " is no folder in " + listed());
  }
  return path;
}

void Roots::check(const git_utils::Git& git) const {
  std::error_code error;
  const fs::path root = fs::canonical(git.root(), error);
  if (error || !hold(root)) {
    throw ToolError("the top folder of the repository, " + git_utils::shown(git.root().native()) +
                    ", lies outside of what this server may read: it must be started with --root " +
                    git_utils::shown(git.root().native()));
  }
  const fs::path common = fs::canonical(git.common_directory(), error);
  if (!error && (hold(common) || is_listed_work_tree(root, common))) return;
  throw ToolError("the git directory of " + git_utils::shown(root.native()) +
                  " lies outside of what this server may read: it must be started with --root for "
                  "the folder of that git directory too");
}

}  // namespace context_delta::server
