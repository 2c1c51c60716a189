#include "tool_handlers/commit_texts.h"

#include <algorithm>

#include "tool_handlers/context_docs.h"
#include "utils/utf8.h"

namespace context_delta::context_docs {
namespace {

constexpr std::int64_t MOST_TREE_BYTES = 64 * 1024 * 1024;
constexpr std::int64_t MOST_BYTES_OF_CHARACTER = 4;

std::string hexadecimal(std::string_view bytes) {
  constexpr std::string_view DIGITS = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += DIGITS[static_cast<unsigned char>(byte) >> 4];
    text += DIGITS[static_cast<unsigned char>(byte) & 15];
  }
  return text;
}

/// An entry of a tree object.
struct Entry {
  std::string_view mode;
  std::string id;
};

/// The entry `name` of the bytes of a tree object, "MODE NAME\0ID" one after another; null when
/// there is none. `id_bytes` is the length of an id.
std::optional<Entry> entry_of(std::string_view tree, std::string_view name, std::size_t id_bytes) {
  while (true) {
    const auto space = tree.find(' ');
    const auto end = tree.find('\0');
    if (end == tree.npos || space > end || tree.size() - end - 1 < id_bytes) return std::nullopt;
    if (tree.substr(space + 1, end - space - 1) == name) {
      return Entry{tree.substr(0, space), hexadecimal(tree.substr(end + 1, id_bytes))};
    }
    tree.remove_prefix(end + 1 + id_bytes);
  }
}

/// The id of the tree in the text of a commit; empty when it makes no sense.
std::string tree_of(std::string_view commit) {
  constexpr std::string_view START = "tree ";
  if (!commit.starts_with(START)) return {};
  std::string id(commit.substr(START.size(), commit.find('\n') - START.size()));
  return git_utils::is_object_id(id) ? id : std::string();
}

bool has_text(std::string_view mode) { return mode.starts_with("100") || mode == "120000"; }

}  // namespace

std::optional<std::string> CommitTexts::object(const std::string& id, std::int64_t most_bytes) {
  if (!reader_) reader_.emplace(git_);
  return reader_->read(id, most_bytes);
}

// The path goes down name by name: `COMMIT:PATH` would not take all names that a tree may hold.
const std::string* CommitTexts::folder(const std::string& path) {
  const auto known = folders_.find(path);
  if (known != folders_.end()) return known->second.empty() ? nullptr : &known->second;
  std::string id;
  if (path.empty()) {
    id = tree_of(object(commit_, MOST_TREE_BYTES).value_or(""));
  } else {
    const auto slash = path.rfind('/');
    const std::string* above = folder(slash == path.npos ? "" : path.substr(0, slash));
    const std::string name = slash == path.npos ? path : path.substr(slash + 1);
    const auto entry = above ? entry_of(*above, name, commit_.size() / 2) : std::nullopt;
    if (entry && entry->mode == "40000") id = entry->id;
  }
  std::string& tree = folders_[path];
  if (!id.empty()) tree = object(id, MOST_TREE_BYTES).value_or("");
  return tree.empty() ? nullptr : &tree;
}

std::optional<std::string> CommitTexts::read(std::string_view path, std::int64_t most_characters) {
  if (most_characters < 0) return std::nullopt;
  const std::string file = utf8::path_bytes(path);
  const auto slash = file.rfind('/');
  const std::string* above = folder(slash == file.npos ? "" : file.substr(0, slash));
  if (above == nullptr) return std::nullopt;
  const std::string name = slash == file.npos ? file : file.substr(slash + 1);
  const auto entry = entry_of(*above, name, commit_.size() / 2);
  if (!entry || !has_text(entry->mode)) return std::nullopt;
  // Any more would be too many characters, whatever they are.
  const auto most_bytes = std::min(most_characters, INT64_MAX / MOST_BYTES_OF_CHARACTER - 1);
  const auto bytes = object(entry->id, (most_bytes + 1) * MOST_BYTES_OF_CHARACTER - 1);
  if (!bytes) return std::nullopt;
  return shown_text(*bytes, most_characters);
}

}  // namespace context_delta::context_docs
