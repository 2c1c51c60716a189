#include "indexer/languages/rust/modules.h"

#include <vector>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/rust/manifest.h"

namespace context_delta::indexer::rust {
namespace {

using kit::base_name;
using kit::folder_of;

constexpr int DEEPEST = 30;

std::string below(std::string_view folder, std::string_view name) {
  return folder.empty() ? std::string(name) : std::string(folder) + "/" + std::string(name);
}

std::string_view stem_of(std::string_view path) {
  const std::string_view name = base_name(path);
  return name.ends_with(".rs") ? name.substr(0, name.size() - 3) : name;
}

/// What a module is called whose file lies at a path, but for the attribute `path`.
std::string_view module_name(std::string_view path) {
  const std::string_view stem = stem_of(path);
  return stem == "mod" ? base_name(folder_of(path)) : stem;
}

/// Whether Cargo makes a crate of a file by where it lies.
bool is_root_by_place(std::string_view path) {
  const std::string_view stem = stem_of(path);
  if (stem == "lib" || stem == "main" || stem == "build") return true;
  const std::string_view folder = base_name(folder_of(path));
  return folder == "bin" || folder == "tests" || folder == "examples" || folder == "benches";
}

/// Where the files of a file's submodules lie.
std::string folder_of_submodules(std::string_view path) {
  if (stem_of(path) == "mod" || is_root_by_place(path)) return std::string(folder_of(path));
  return below(folder_of(path), stem_of(path));
}

std::string normal(std::string_view folder, std::string_view relative) {
  std::string path(folder);
  for (const std::string_view part : kit::split(relative, '/')) {
    if (part == "..") path = std::string(folder_of(path));
    if (part != ".." && part != "." && !part.empty()) path = below(path, part);
  }
  return path;
}

/// The declaration in `parent` that leads to `file`.
std::optional<Module> declares(const File* parent, const File& file, World& world) {
  if (parent == nullptr || parent->id == file.id || parent->language != file.language) return {};
  const kit::Outline outline(*parent, world);
  std::optional<Module> made;
  const auto leads_there = [&](const Import& each) {
    if (!is_module_declaration(each)) return false;
    const File* found = declared_module(*parent, outline, each, world);
    if (found == nullptr || found->id != file.id) return false;
    made = Module{parent, each.scope};
    return true;
  };
  outline.each_import_as(module_name(file.path), leads_there);
  if (!made) outline.each_import_as(DECLARED_BY_PATH, leads_there);
  return made;
}

std::optional<Module> find_declaring(const File& file, World& world) {
  std::string_view folder = folder_of(file.path);
  if (stem_of(file.path) == "mod") folder = folder_of(folder);
  // Modules written inside files have folders too: look a few folders up.
  for (int level = 0; level < 3; ++level) {
    const std::vector<std::string> usual = {below(folder, "mod.rs"), std::string(folder) + ".rs",
                                            below(folder, "lib.rs"), below(folder, "main.rs")};
    for (const std::string& path : usual) {
      const std::optional<Module> found = declares(world.file(path), file, world);
      if (found) return found;
    }
    if (folder.empty()) break;
    folder = folder_of(folder);
  }
  if (stem_of(file.path) != "mod" && is_root_by_place(file.path)) return {};
  // Roots of crates that are not called lib or main, and `#[path]`.
  folder = folder_of(file.path);
  for (int level = 0; level < 2; ++level) {
    for (const File* other : world.folder(folder)) {
      const std::optional<Module> found = declares(other, file, world);
      if (found) return found;
    }
    if (folder.empty()) break;
    folder = folder_of(folder);
  }
  return {};
}

}  // namespace

bool is_module_declaration(const Import& import) {
  return import.name.empty() && (import.module == "mod" || import.module.starts_with("mod "));
}

std::string wildcard_name(std::string_view scope) { return "*" + std::string(scope); }

bool is_impl(const Definition& definition) {
  return definition.kind == Kind::NAMESPACE && !definition.type.empty();
}

bool is_module(const Definition& definition) {
  return definition.kind == Kind::NAMESPACE && definition.type.empty();
}

const File* declared_module(const File& file, const kit::Outline& outline,
                            const Import& declaration, World& world) {
  std::string inner;
  for (DefinitionIndex at = declaration.scope; at != NOWHERE; at = outline.definition(at).parent) {
    const Definition& each = outline.definition(at);
    if (is_module(each)) inner = inner.empty() ? each.name : each.name + "/" + inner;
  }
  if (declaration.module.size() > 4) {
    const std::string from = inner.empty() ? std::string(folder_of(file.path))
                                           : normal(folder_of_submodules(file.path), inner);
    return world.file(normal(from, std::string_view(declaration.module).substr(4)));
  }
  const std::string folder = normal(folder_of_submodules(file.path), inner);
  const File* found = world.file(below(folder, declaration.alias + ".rs"));
  return found != nullptr ? found : world.file(below(folder, declaration.alias + "/mod.rs"));
}

std::optional<Module> declaring_module(const File& file, World& world) {
  return world.remember<std::optional<Module>>("rust:parent", file,
                                               [&] { return find_declaring(file, world); });
}

Module module_around(const File& file, const kit::Outline& outline, DefinitionIndex definition) {
  while (definition != NOWHERE && !is_module(outline.definition(definition))) {
    definition = outline.definition(definition).parent;
  }
  return {&file, definition};
}

std::optional<Module> parent_module(const Module& module, const kit::Outline& outline,
                                    World& world) {
  if (module.definition == NOWHERE) return declaring_module(*module.file, world);
  return module_around(*module.file, outline, outline.definition(module.definition).parent);
}

const File& crate_root(const File& file, World& world) {
  const File* at = &file;
  for (int step = 0; step < DEEPEST; ++step) {
    const std::optional<Module> parent = declaring_module(*at, world);
    if (!parent) break;
    at = parent->file;
  }
  return *at;
}

std::string module_path(const File& file, World& world) {
  std::string path;
  const File* at = &file;
  for (int step = 0; step < DEEPEST; ++step) {
    const std::optional<Module> parent = declaring_module(*at, world);
    if (!parent) break;
    path = "::" + std::string(module_name(at->path)) + path;
    if (parent->definition != NOWHERE) {
      const kit::Outline outline(*parent->file, world);
      for (DefinitionIndex i = parent->definition; i != NOWHERE; i = outline.definition(i).parent) {
        path = "::" + outline.definition(i).name + path;
      }
    }
    at = parent->file;
  }
  const File* manifest = manifest_of(at->path, world);
  const std::string_view stem = stem_of(at->path);
  const bool named_by_package = stem == "lib" || stem == "main";
  if (named_by_package && manifest != nullptr) return library_name(*manifest, world) + path;
  const File* library = manifest == nullptr ? nullptr : library_root(*manifest, world);
  if (library != nullptr && library->id == at->id) return library_name(*manifest, world) + path;
  return (named_by_package ? "crate" : std::string(stem)) + path;
}

}  // namespace context_delta::indexer::rust
