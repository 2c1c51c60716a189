#include "tool_handlers/context_docs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <deque>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "utils/utf8.h"

namespace context_delta::context_docs {
namespace {

constexpr int MOST_LINKS = 40;
constexpr std::int64_t MOST_BYTES_OF_CHARACTER = 4;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  explicit operator bool() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  int number_;
};

/// The names between the slashes; "." and empty ones left out.
std::deque<std::string> names_of(std::string_view path) {
  std::deque<std::string> names;
  while (!path.empty()) {
    const std::size_t slash = std::min(path.find('/'), path.size());
    const std::string_view name = path.substr(0, slash);
    if (!name.empty() && name != ".") names.emplace_back(name);
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return names;
}

/// The target of an opened link; empty when it cannot be read.
std::string link_target(const Descriptor& link) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlinkat(link.number(), "", target.data(), target.size());
  return length <= 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(length));
}

Descriptor open_regular(const Descriptor& folder, const std::string& name) {
  constexpr int FLAGS = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
  Descriptor file(openat(folder.number(), name.c_str(), FLAGS));
  struct stat status;
  if (!file || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
    return Descriptor(-1);
  return file;
}

/// Opens a file below `root` one name at a time, each step relative to the folder already open:
/// whatever is moved or replaced meanwhile, no step leaves the root.
Descriptor open_beneath(const std::filesystem::path& root, std::string_view path) {
  std::vector<Descriptor> folders;
  folders.emplace_back(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folders.back() || path.starts_with('/')) return Descriptor(-1);
  std::deque<std::string> names = names_of(path);
  int links = 0;
  while (!names.empty()) {
    const std::string name = std::move(names.front());
    names.pop_front();
    if (name == "..") {
      folders.pop_back();
      if (folders.empty()) return Descriptor(-1);
      continue;
    }
    Descriptor step(openat(folders.back().number(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!step || fstat(step.number(), &status) != 0) return Descriptor(-1);
    if (S_ISLNK(status.st_mode)) {
      const std::string target = link_target(step);
      if (target.empty() || target.front() == '/' || ++links > MOST_LINKS) return Descriptor(-1);
      const std::deque<std::string> further = names_of(target);
      names.insert(names.begin(), further.begin(), further.end());
    } else if (S_ISDIR(status.st_mode)) {
      folders.push_back(std::move(step));
    } else {
      if (!names.empty() || !S_ISREG(status.st_mode)) return Descriptor(-1);
      return open_regular(folders.back(), name);
    }
  }
  return Descriptor(-1);
}

/// Characters that start in `bytes`, should they be UTF-8; never more than they turn out to be.
std::int64_t least_characters(std::string_view bytes) {
  return std::count_if(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
}

/// The bytes of a file; null when it holds a NUL or more than `most_characters`.
std::optional<std::string> read_text(const Descriptor& file, std::int64_t most_characters) {
  std::string bytes;
  std::int64_t characters = 0;
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t length = read(file.number(), buffer.data(), buffer.size());
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return std::nullopt;
    if (length == 0) return bytes;
    const std::string_view part(buffer.data(), static_cast<std::size_t>(length));
    characters += least_characters(part);
    if (characters > most_characters || part.find('\0') != part.npos) return std::nullopt;
    bytes += part;
    if (static_cast<std::int64_t>(bytes.size()) / MOST_BYTES_OF_CHARACTER > most_characters) {
      return std::nullopt;
    }
  }
}

}  // namespace

std::optional<std::string> read_repo_text(const std::filesystem::path& root, std::string_view path,
                                          std::int64_t most_characters) {
  const std::string name = utf8::path_bytes(path);
  if (most_characters < 0 || name.find('\0') != name.npos) return std::nullopt;
  const Descriptor file = open_beneath(root, name);
  struct stat status;
  if (!file || fstat(file.number(), &status) != 0) return std::nullopt;
  if (status.st_size / MOST_BYTES_OF_CHARACTER > most_characters) return std::nullopt;
  const std::optional<std::string> bytes = read_text(file, most_characters);
  if (!bytes) return std::nullopt;
  return shown_text(*bytes, most_characters);
}

std::optional<std::string> shown_text(std::string_view bytes, std::int64_t most_characters) {
  if (least_characters(bytes) > most_characters || bytes.find('\0') != bytes.npos) {
    return std::nullopt;
  }
  std::string text = utf8::replaced(bytes);
  if (least_characters(text) > most_characters) return std::nullopt;
  return text;
}

}  // namespace context_delta::context_docs
