#include "utils/scratch_folder.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "utils/subprocess.h"

namespace context_delta::git_utils {
namespace {

using subprocess::FileDescriptor;

constexpr std::string_view START = "context-delta-";
constexpr std::size_t RANDOM_CHARACTERS = 6;
constexpr std::size_t MOST_NAMES = 4096;
constexpr std::size_t MOST_NAMES_INSIDE = 20;
constexpr int DEEPEST = 2;
const std::vector<std::string> NO_NAMES;
// Between the making of a folder and its lock.
constexpr std::chrono::minutes YOUNG{10};

std::filesystem::path parent_folder() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  return error ? "/tmp" : folder;
}

FileDescriptor open_folder(int parent, const char* name) {
  return FileDescriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// At most `most` names; null when the folder cannot be read.
std::optional<std::vector<std::string>> names_in(int folder, std::size_t most) {
  const int copy = fcntl(folder, F_DUPFD_CLOEXEC, 3);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy < 0 ? nullptr : fdopendir(copy),
                                                    &closedir);
  if (!entries) {
    if (copy >= 0) close(copy);
    return std::nullopt;
  }
  rewinddir(entries.get());  // the copy stands where the last reader has left the folder
  std::vector<std::string> names;
  while (const dirent* entry = names.size() < most ? readdir(entries.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

bool is_known(const std::string& name) {
  const auto is_name = [&](const char* known) { return name == known; };
  return name.starts_with(ScratchFolder::SHARED_INDEX) ||
         std::any_of(std::begin(ScratchFolder::FILES), std::end(ScratchFolder::FILES), is_name) ||
         std::any_of(std::begin(ScratchFolder::FOLDERS), std::end(ScratchFolder::FOLDERS), is_name);
}

bool is_ours(int folder) {
  struct stat status {};
  if (fstat(folder, &status) != 0 || status.st_uid != geteuid()) return false;
  const auto changed = std::chrono::system_clock::from_time_t(status.st_mtime);
  if (std::chrono::system_clock::now() - changed < YOUNG) return false;
  const auto names = names_in(folder, MOST_NAMES_INSIDE);
  return names && std::all_of(names->begin(), names->end(), is_known);
}

// Removes `name` in `folder` with what it holds, no more than `depth` folders deep.
void remove_at(int folder, const std::string& name, int depth) {
  if (unlinkat(folder, name.c_str(), 0) == 0 || depth == 0) return;
  {
    const FileDescriptor inner = open_folder(folder, name.c_str());
    if (!inner) return;
    for (const std::string& held : names_in(inner.get(), SIZE_MAX).value_or(NO_NAMES)) {
      remove_at(inner.get(), held, depth - 1);
    }
  }
  unlinkat(folder, name.c_str(), AT_REMOVEDIR);
}

// Goes by descriptors and known names: whatever takes the folder's place meanwhile is safe.
void empty_folder(int folder) {
  for (const std::string& name : names_in(folder, MOST_NAMES_INSIDE).value_or(NO_NAMES)) {
    if (is_known(name)) remove_at(folder, name, DEEPEST);
  }
}

void remove_left_behind(const std::filesystem::path& parent) {
  const FileDescriptor all = open_folder(AT_FDCWD, parent.c_str());
  if (!all) return;
  const auto names = names_in(all.get(), MOST_NAMES);
  for (const std::string& name : names.value_or(std::vector<std::string>())) {
    if (!name.starts_with(START) || name.size() != START.size() + RANDOM_CHARACTERS) continue;
    const FileDescriptor folder = open_folder(all.get(), name.c_str());
    if (!folder || flock(folder.get(), LOCK_EX | LOCK_NB) != 0 || !is_ours(folder.get())) continue;
    empty_folder(folder.get());
    unlinkat(all.get(), name.c_str(), AT_REMOVEDIR);
  }
}

}  // namespace

ScratchFolder::ScratchFolder() {
  const std::filesystem::path parent = parent_folder();
  std::string name = parent / (std::string(START) + std::string(RANDOM_CHARACTERS, 'X'));
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot write a temporary folder (" + name +
                             "): set TMPDIR to a folder that can be written");
  }
  path_ = name;
  lock_ = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  // Where folders cannot be locked, none is ever taken for left behind.
  if (lock_ >= 0) flock(lock_, LOCK_EX | LOCK_NB);
  remove_left_behind(parent);
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  if (lock_ >= 0) close(lock_);
}

}  // namespace context_delta::git_utils
