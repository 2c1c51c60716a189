#include "indexer/languages/c_family/includes.h"

#include <string>

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::c_family {
namespace {

/// `folder/path` with its "." and ".." parts worked out; empty when they lead above the top.
std::string joined(std::string_view folder, std::string_view path) {
  std::vector<std::string_view> parts = kit::split(folder, '/');
  for (const std::string_view part : kit::split(path, '/')) {
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(part);
    } else if (parts.empty()) {
      return {};
    } else {
      parts.pop_back();
    }
  }
  std::string whole;
  for (const std::string_view part : parts) {
    if (!whole.empty()) whole += '/';
    whole += part;
  }
  return whole;
}

const File* by_suffix(std::string_view path, World& world) {
  const File* found = nullptr;
  for (const File* file : world.files_named(kit::base_name(path))) {
    const std::string_view whole = file->path;
    const bool ends = whole == path || (whole.size() > path.size() && whole.ends_with(path) &&
                                        whole[whole.size() - path.size() - 1] == '/');
    if (!ends) continue;
    if (found != nullptr) return nullptr;
    found = file;
  }
  return found;
}

}  // namespace

const File* included_file(const File& includer, std::string_view written, World& world) {
  if (written.size() < 3) return nullptr;
  const bool quoted = written.front() == '"';
  const std::string_view path = written.substr(1, written.size() - 2);
  if (quoted) {
    const std::string near = joined(kit::folder_of(includer.path), path);
    const File* found = near.empty() ? nullptr : world.file(near);
    if (found != nullptr) return found;
  } else if (path.find('/') == std::string_view::npos) {
    return nullptr;
  }
  const std::string plain = joined("", path);
  if (plain.empty()) return by_suffix(kit::base_name(path), world);
  return by_suffix(plain, world);
}

const std::vector<const File*>& direct_includes(const File& file, World& world) {
  using Answer = std::vector<const File*>;
  return world.remember<Answer>("c:includes", file, [&] {
    Answer answer;
    for (const Import& import : world.imports(file)) {
      const bool include = import.module.starts_with('"') || import.module.starts_with('<');
      const File* found = include ? included_file(file, import.module, world) : nullptr;
      if (found != nullptr) answer.push_back(found);
    }
    return answer;
  });
}

IncludeClosure::IncludeClosure(const File& file, World& world) {
  ids_.insert(file.id);
  files_.push_back(&file);
  for (std::size_t next = 0; next < files_.size(); ++next) {
    for (const File* included : direct_includes(*files_[next], world)) {
      if (ids_.insert(included->id).second) files_.push_back(included);
    }
  }
}

bool is_family(std::string_view language) { return language == "c" || language == "cpp"; }

}  // namespace context_delta::indexer::c_family
