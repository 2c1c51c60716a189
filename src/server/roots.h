#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "utils/git_utils.h"

/// Which folders of this machine calls may look into.
namespace context_delta::server {

class Roots {
 public:
  /// Absolute folders with links resolved, at least one.
  explicit Roots(std::vector<std::filesystem::path> folders) : folders_(std::move(folders)) {}

  /// The folder that `text` (path text; null: the only root) names, links resolved: relative ones
  /// start at the only root. `parameter` names it in errors. Raises ToolError: it lies in no root,
  /// there is no such folder, or it must be given since there are several roots.
  std::filesystem::path folder(const std::optional<std::string>& text,
                               const std::string& parameter) const;

  /// The same for a folder whose relative names start at `base`.
  std::filesystem::path folder_below(const std::filesystem::path& base, const std::string& text,
                                     const std::string& parameter) const;

  /// Raises ToolError unless the top folder of the repository lies in a root, and its git directory
  /// does too or belongs to a main repository that lists it among its work trees: a `.git` that
  /// somebody has put there must not lead to the history of another repository.
  void check(const git_utils::Git& git) const;

  /// The roots as a text: "/a, /b".
  std::string listed() const;

 private:
  bool hold(const std::filesystem::path& resolved) const;
  std::vector<std::filesystem::path> folders_;
};

}  // namespace context_delta::server
