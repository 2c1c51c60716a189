#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "utils/git_utils.h"

namespace context_delta::context_docs {

/// The texts of the files of one commit, read from its objects: no work tree is needed, and what
/// lies in one is not looked at. Runs one git process, when the first text is asked for.
class CommitTexts {
 public:
  /// `commit` is a full id.
  CommitTexts(const git_utils::Git& git, std::string commit)
      : git_(git), commit_(std::move(commit)) {}

  /// The text of a file; `path` is a path text. Bytes that are not UTF-8 are replaced by U+FFFD. Of
  /// a symbolic link the text is its own, the path that it leads to.
  ///
  /// Null when there is no text to show: no such file, a folder, a submodule, binary (it holds a
  /// NUL byte), longer than `most_characters`, or not in the repository (a partial clone). Raises
  /// GitHistoryError when git cannot be asked.
  std::optional<std::string> read(std::string_view path, std::int64_t most_characters);

 private:
  std::optional<std::string> object(const std::string& id, std::int64_t most_bytes);
  const std::string* folder(const std::string& path);

  git_utils::Git git_;
  std::string commit_;
  std::optional<git_utils::BlobReader> reader_;
  std::map<std::string, std::string> folders_;  // bytes of tree objects, by path; empty: none
};

}  // namespace context_delta::context_docs
