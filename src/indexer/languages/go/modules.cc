#include "indexer/languages/go/modules.h"

#include <optional>
#include <vector>

#include "indexer/languages/go/go.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::base_name;
using kit::folder_of;

constexpr std::string_view MODULE_FILE = "go.mod";

std::string join(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && !name.empty()) path += '/';
  return path += name;
}

std::string_view module_path(const Interface& facts) {
  for (const Binding& binding : facts.bindings) {
    if (binding.name == MODULE_PATH) return binding.value;
  }
  return {};
}

/// The module file that governs a folder: in it or in the nearest folder above.
const File* module_file(std::string_view folder, World& world) {
  while (true) {
    const File* found = world.file(join(folder, MODULE_FILE));
    if (found != nullptr || folder.empty()) return found;
    folder = folder_of(folder);
  }
}

/// What follows `prefix` in an import path: `c/d` of `a/b/c/d`; nothing when it is no prefix.
std::optional<std::string_view> path_below(std::string_view path, std::string_view prefix) {
  if (prefix.empty() || !path.starts_with(prefix)) return std::nullopt;
  path.remove_prefix(prefix.size());
  if (path.empty()) return path;
  if (path.front() != '/') return std::nullopt;
  return path.substr(1);
}

bool has_go_files(std::string_view folder, World& world) {
  for (const File* file : world.folder(folder)) {
    if (file->language == LANGUAGE.name) return true;
  }
  return false;
}

/// `./x` and `../x` as seen from a folder; nothing when it leads out of the repository.
std::optional<std::string> relative_folder(std::string_view from, std::string_view relative) {
  std::string folder(from);
  for (const std::string_view part : kit::split(relative, '/')) {
    if (part == "." || part.empty()) continue;
    if (part != "..") {
      folder = join(folder, part);
      continue;
    }
    if (folder.empty()) return std::nullopt;
    folder = folder_of(folder);
  }
  return folder;
}

/// A folder of the module at `root`, unless another module begins between the two.
std::optional<std::string> folder_in_module(const File& module, std::string_view below,
                                            World& world) {
  const std::string folder = join(folder_of(module.path), below);
  if (!has_go_files(folder, world)) return std::nullopt;
  const File* governing = module_file(folder, world);
  if (governing == nullptr || governing->id != module.id) return std::nullopt;
  return folder;
}

/// What the replacements of a module file make of an import path.
struct Replacement {
  std::optional<std::string> folder;
  bool outside = false;  ///< it is replaced by what the repository does not hold
};

Replacement replaced_import(const File& module, std::string_view path, World& world) {
  Replacement made;
  for (const Import& each : world.facts(module).imports) {
    const auto below = path_below(path, each.module);
    if (!below) continue;
    made.outside = true;
    if (!each.alias.starts_with('.')) continue;
    const auto root = relative_folder(folder_of(module.path), each.alias);
    if (!root) continue;
    const std::string folder = join(*root, *below);
    if (has_go_files(folder, world)) return {folder, false};
  }
  return made;
}

/// The folder that another module of the repository gives to the path: the one with the longest
/// path of its own that fits.
ImportedFolder import_of_other_module(const File* own, std::string_view path, World& world) {
  ImportedFolder found;
  std::size_t longest = 0;
  for (const File* module : world.files_named(MODULE_FILE)) {
    if (own != nullptr && module->id == own->id) continue;
    const std::string_view prefix = module_path(world.facts(*module));
    const auto below = path_below(path, prefix);
    if (!below || prefix.size() < longest) continue;
    const auto folder = folder_in_module(*module, *below, world);
    if (!folder) continue;
    const bool again = prefix.size() == longest;
    longest = prefix.size();
    if (again) {
      found.sure = false;
    } else {
      found = {*folder, true, true};
    }
  }
  return found;
}

/// Without any module file: the folder whose path ends the import path.
ImportedFolder import_by_folder(std::string_view path, World& world) {
  for (std::string_view rest = path; !rest.empty();) {
    if (has_go_files(rest, world)) return {std::string(rest), true, false};
    const std::size_t slash = rest.find('/');
    if (slash == std::string_view::npos) break;
    rest = rest.substr(slash + 1);
  }
  return {};
}

/// Paths of the standard library have no dot in their first part.
bool is_standard(std::string_view path) {
  return path.substr(0, path.find('/')).find('.') == std::string_view::npos;
}

}  // namespace

ImportedFolder find_import(const File& importer, std::string_view path, World& world) {
  const std::string_view here = folder_of(importer.path);
  if (path.starts_with("./") || path.starts_with("../")) {
    const auto folder = relative_folder(here, path);
    if (folder && has_go_files(*folder, world)) return {*folder, true, true};
    return {};
  }
  const File* own = module_file(here, world);
  Replacement replaced;
  if (own != nullptr) {
    replaced = replaced_import(*own, path, world);
    if (replaced.folder) return {*replaced.folder, true, true};
    const auto below = path_below(path, module_path(world.facts(*own)));
    const auto folder = below ? folder_in_module(*own, *below, world) : std::nullopt;
    if (folder) return {*folder, true, !replaced.outside};
  }
  ImportedFolder other = import_of_other_module(own, path, world);
  other.sure = other.sure && !replaced.outside;
  if (other.found) return other;
  const std::string vendored =
      join(own == nullptr ? std::string_view() : folder_of(own->path), join("vendor", path));
  if (has_go_files(vendored, world)) return {vendored, true, true};
  if (own == nullptr && !is_standard(path) && world.files_named(MODULE_FILE).empty()) {
    return import_by_folder(path, world);
  }
  return {};
}

std::string path_of_folder(const File& file, World& world) {
  const std::string_view folder = folder_of(file.path);
  const File* module = module_file(folder, world);
  if (module == nullptr) return std::string(folder);
  const std::string_view path = module_path(world.facts(*module));
  const std::string_view root = folder_of(module->path);
  const std::string_view below = root.empty()                  ? folder
                                 : folder.size() > root.size() ? folder.substr(root.size() + 1)
                                                               : std::string_view();
  return join(path, below);
}

}  // namespace context_delta::indexer::go
