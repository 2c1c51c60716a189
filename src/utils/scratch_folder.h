#pragma once

#include <filesystem>

namespace context_delta::git_utils {

/// A folder of our own below the folder for temporary files, only for its owner. It is removed with
/// the object; those of processes that were killed are removed when a later one is made. A folder
/// in use is locked, so no other process takes it for left behind.
class ScratchFolder {
 public:
  /// The files and folders that may be in it. Files whose names begin with SHARED_INDEX may be too;
  /// in the folders are files, and folders of files.
  static constexpr const char* FILES[] = {"HEAD", "config", "index", "index.lock"};
  static constexpr const char* FOLDERS[] = {"refs", "info", "objects"};
  static constexpr const char* SHARED_INDEX = "sharedindex.";

  /// Raises std::runtime_error when it cannot be made.
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  int lock_ = -1;
};

}  // namespace context_delta::git_utils
