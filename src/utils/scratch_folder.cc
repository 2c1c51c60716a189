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
  std::vector<std::string> names;
  while (const dirent* entry = names.size() < most ? readdir(entries.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

bool is_ours(int folder) {
  struct stat status {};
  if (fstat(folder, &status) != 0 || status.st_uid != geteuid()) return false;
  const auto changed = std::chrono::system_clock::from_time_t(status.st_mtime);
  if (std::chrono::system_clock::now() - changed < YOUNG) return false;
  const auto names = names_in(folder, 10);
  return names && std::all_of(names->begin(), names->end(), [](const std::string& name) {
           const auto is_name = [&](const char* known) { return name == known; };
           return std::any_of(std::begin(ScratchFolder::FILES), std::end(ScratchFolder::FILES),
                              is_name) ||
                  std::any_of(std::begin(ScratchFolder::FOLDERS), std::end(ScratchFolder::FOLDERS),
                              is_name);
         });
}

// Goes by descriptors and known names: whatever takes the folder's place meanwhile is safe.
void empty_folder(int folder) {
  for (const char* name : ScratchFolder::FILES) unlinkat(folder, name, 0);
  for (const char* name : ScratchFolder::FOLDERS) unlinkat(folder, name, AT_REMOVEDIR);
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
