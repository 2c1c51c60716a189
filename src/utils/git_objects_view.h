#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "utils/scratch_folder.h"

namespace context_delta::git_utils {

/// A git directory in a temporary folder that has no refs, no settings and no attributes, and
/// looks into the object store of a real repository. Removed with the object.
class ObjectsView {
 public:
  /// `object_format` is the repository's hash ("sha1", "sha256"); `more_objects` a second store,
  /// unless it is empty. Raises std::runtime_error when the temporary folder cannot be written.
  ObjectsView(const std::filesystem::path& common_directory, const std::string& object_format,
              const std::filesystem::path& more_objects = {});

  const std::filesystem::path& directory() const { return folder_.path(); }

  /// The variables ("NAME=value") that make git use this view.
  const std::vector<std::string>& environment() const { return environment_; }

 private:
  ScratchFolder folder_;
  std::vector<std::string> environment_;
};

/// A folder as it may stand in a variable that lists object stores.
std::string in_list_of_stores(const std::filesystem::path& folder);

}  // namespace context_delta::git_utils
