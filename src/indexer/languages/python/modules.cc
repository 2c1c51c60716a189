#include "indexer/languages/python/modules.h"

#include <algorithm>
#include <array>
#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/python/builtins.h"

namespace context_delta::indexer::python {
namespace {

using kit::base_name;
using kit::folder_of;

std::string join(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && !name.empty()) path += '/';
  return path += name;
}

/// The module at `path` without its suffix: a file of that name, or a package.
const File* module_at(std::string_view path, World& world) {
  for (const std::string_view suffix : {".py", "/__init__.py", ".pyi", "/__init__.pyi"}) {
    const File* found = world.file(std::string(path) + std::string(suffix));
    if (found != nullptr) return found;
  }
  return nullptr;
}

bool has_package(std::string_view folder, World& world) {
  return world.file(join(folder, "__init__.py")) != nullptr ||
         world.file(join(folder, "__init__.pyi")) != nullptr;
}

std::string with_slashes(std::string_view dotted) {
  std::string path(dotted);
  std::replace(path.begin(), path.end(), '.', '/');
  return path;
}

ModuleAnswer find_relative(const File& importer, std::string_view dotted, World& world) {
  std::string_view folder = folder_of(importer.path);
  dotted.remove_prefix(1);
  while (dotted.starts_with('.')) {
    if (folder.empty()) return {};
    folder = folder_of(folder);
    dotted.remove_prefix(1);
  }
  if (dotted.empty()) {
    const File* package = world.file(join(folder, "__init__.py"));
    return {package, true};
  }
  return {module_at(join(folder, with_slashes(dotted)), world), true};
}

/// The dotted name of a path below `root`.
std::string dotted_below(std::string_view root, std::string_view path) {
  path.remove_prefix(root.empty() ? 0 : root.size() + 1);
  path = path.substr(0, path.rfind('.'));
  const bool is_package = base_name(path) == "__init__";
  if (is_package && path != "__init__") path = folder_of(path);
  std::string name(path);
  std::replace(name.begin(), name.end(), '/', '.');
  return name;
}

/// Whether another top package has the name of the one at `path`.
bool has_twin_package(std::string_view path, World& world) {
  for (const File* other : world.files_named("__init__.py")) {
    const std::string_view folder = folder_of(other->path);
    const bool twin = folder != path && base_name(folder) == base_name(path);
    if (twin && !has_package(folder_of(folder), world)) return true;
  }
  return false;
}

/// Packages anywhere whose dotted name is exactly this.
std::vector<const File*> packages_named(std::string_view dotted, World& world) {
  const std::string path = with_slashes(dotted);
  std::vector<const File*> candidates = world.files_named("__init__.py");
  const std::vector<const File*>& modules = world.files_named(std::string(base_name(path)) + ".py");
  candidates.insert(candidates.end(), modules.begin(), modules.end());
  std::vector<const File*> found;
  for (const File* file : candidates) {
    std::string_view stem = file->path;
    stem = stem.substr(0, stem.rfind(stem.ends_with("/__init__.py") ? '/' : '.'));
    const bool ends = stem == path || stem.ends_with("/" + path);
    if (ends && dotted.find('.') == std::string_view::npos &&
        !file->path.ends_with("__init__.py")) {
      continue;
    }
    if (ends && module_name(*file, world) == dotted) found.push_back(file);
  }
  return found;
}

}  // namespace

std::string package_root(const File& file, World& world) {
  std::string_view folder = folder_of(file.path);
  while (!folder.empty() && has_package(folder, world)) folder = folder_of(folder);
  return std::string(folder);
}

std::string module_name(const File& file, World& world) {
  return dotted_below(package_root(file, world), file.path);
}

std::string distinct_module_name(const File& file, World& world) {
  const std::string root = package_root(file, world);
  if (root.empty()) return dotted_below(root, file.path);
  bool twin = false;
  if (root == folder_of(file.path)) {
    const std::string_view stem = base_name(file.path).substr(0, base_name(file.path).rfind('.'));
    for (const std::string_view suffix : {".py", ".pyi"}) {
      for (const File* other : world.files_named(std::string(stem) + std::string(suffix))) {
        const std::string_view folder = folder_of(other->path);
        twin = twin || (folder != root && !has_package(folder, world));
      }
    }
  } else {
    const std::size_t end = file.path.find('/', root.size() + 1);
    const std::string package = file.path.substr(0, end);
    twin = has_twin_package(package, world);
  }
  return dotted_below(twin ? std::string() : root, file.path);
}

ModuleAnswer find_module(const File& importer, std::string_view dotted, World& world) {
  if (dotted.starts_with('.')) return find_relative(importer, dotted, world);
  const std::string path = with_slashes(dotted);
  const std::string root = package_root(importer, world);
  if (const File* own = module_at(join(root, path), world)) return {own, true};
  const std::string_view first = dotted.substr(0, dotted.find('.'));
  if (is_standard_module(first)) return {};
  std::vector<const File*> found;
  for (const std::string_view base : {"", "src", "lib", "python"}) {
    const File* file = module_at(join(base, path), world);
    if (file != nullptr) found.push_back(file);
  }
  if (found.empty()) found = packages_named(dotted, world);
  if (found.empty()) return {};
  return {found.front(), found.size() == 1};
}

const File* submodule(const File& package, std::string_view name, World& world) {
  if (!base_name(package.path).starts_with("__init__.")) return nullptr;
  return module_at(join(folder_of(package.path), name), world);
}

}  // namespace context_delta::indexer::python
