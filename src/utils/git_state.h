#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "utils/git_objects_view.h"
#include "utils/git_utils.h"
#include "utils/subprocess.h"

namespace context_delta::git_utils {

/// What the copies of a Git share.
struct Git::State {
  std::filesystem::path program;
  std::vector<std::string> environment;
  std::filesystem::path root;
  std::filesystem::path common_directory;
  std::string object_format;
  std::filesystem::path more_objects;  // beside the repository's; empty: none
  bool is_shallow = false;
  bool has_work_tree = true;
  Limits limits;
  std::atomic<std::size_t> started = 0;

  /// The command that runs git on a view, counted as started.
  subprocess::Command prepared(const Command& wanted);

 private:
  const ObjectsView& objects();

  std::mutex objects_mutex;
  std::unique_ptr<ObjectsView> objects_view;  // made when first needed
};

/// `text` as one word of a shell command.
std::string quoted_for_shell(std::string_view text);

/// The first error among what git wrote to its standard error, else its first line, without
/// "fatal:".
std::string first_words(std::string_view errors);

}  // namespace context_delta::git_utils
