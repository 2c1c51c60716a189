#include "indexer/languages/go/packages.h"

#include <algorithm>
#include <tuple>

#include "indexer/languages/go/constraints.h"
#include "indexer/languages/go/go.h"
#include "indexer/languages/go/modules.h"
#include "indexer/languages/kit/facts_builder.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

using kit::base_name;
using kit::folder_of;

/// The packages of one folder by name.
using Folder = std::map<std::string, Package, std::less<>>;

std::string_view package_name(const Interface& facts) {
  for (const Binding& binding : facts.bindings) {
    if (binding.name == PACKAGE_NAME && binding.kind == Binding::Kind::GLOBAL) {
      return binding.value;
    }
  }
  return {};
}

void add_names(Package& package) {
  for (const PackageFile& each : package.files) {
    const auto count = static_cast<DefinitionIndex>(each.facts->definitions.size());
    for (DefinitionIndex i = 0; i < count; ++i) {
      const Definition& made = each.facts->definitions[static_cast<std::size_t>(i)];
      if (made.parent != NOWHERE || (made.traits & LOCAL_LINKAGE) != 0) continue;
      if (made.kind == Kind::METHOD) {
        package.methods[made.scope + "." + made.name].push_back({&each, i});
      } else if (made.name != "init" && made.name != "_") {
        package.members[made.name].push_back({&each, i});
      }
    }
  }
}

bool is_go(const File& file) { return file.language == LANGUAGE.name; }

Folder read_folder(std::string_view folder, World& world) {
  Folder read;
  for (const File* file : world.folder(folder)) {
    if (!is_go(*file)) continue;
    const Interface& facts = clause_of(*file, world);
    const std::string_view name = package_name(facts);
    if (name.empty()) continue;
    Package& package = read[std::string(name)];
    package.name = name;
    package.folder = folder;
    package.files.push_back(
        {file, &facts, constraint_of(file->path, facts), is_test_file(file->path)});
  }
  for (auto& [name, package] : read) add_names(package);
  return read;
}

const Folder* folder_at(std::string_view folder, World& world) {
  for (const File* file : world.folder(folder)) {
    if (!is_go(*file)) continue;
    return &world.remember<Folder>("go folder", *file, [&] { return read_folder(folder, world); });
  }
  return nullptr;
}

/// The package that importing a folder means: neither its external tests nor, beside another, a
/// program that is run by hand.
const Package* imported_package(const std::string& folder, World& world) {
  const Folder* found = folder_at(folder, world);
  if (found == nullptr) return nullptr;
  const Package* best = nullptr;
  const auto rank = [](const Package& package) {
    const bool tests = std::all_of(package.files.begin(), package.files.end(),
                                   [](const PackageFile& each) { return each.is_test; });
    const auto free = std::count_if(package.files.begin(), package.files.end(),
                                    [](const auto& each) { return each.constraint.empty(); });
    return std::tuple(!tests, free > 0, package.name != "main", free);
  };
  for (const auto& [name, package] : *found) {
    if (best == nullptr || rank(package) > rank(*best)) best = &package;
  }
  return best;
}

/// The name that a package outside the repository probably has.
std::string_view name_of_path(std::string_view path) {
  std::string_view name = base_name(path);
  const bool version = name.size() > 1 && name.front() == 'v' &&
                       name.find_first_not_of("0123456789", 1) == std::string_view::npos;
  if (version && path.find('/') != std::string_view::npos) name = base_name(folder_of(path));
  const std::size_t dot = name.rfind(".v");
  if (dot != std::string_view::npos) name = name.substr(0, dot);
  return name;
}

Imported read_import(const File& file, const Import& written, World& world) {
  Imported made;
  const ImportedFolder folder = find_import(file, written.module, world);
  if (folder.found) made.package = imported_package(folder.path, world);
  made.sure = folder.sure;
  if (written.name == "*") {
    made.name = "*";
  } else if (!written.alias.empty()) {
    made.name = written.alias;
  } else if (made.package != nullptr) {
    made.name = made.package->name;
  } else {
    made.name = name_of_path(written.module);
    made.path = written.module;
  }
  return made;
}

}  // namespace

const std::vector<Place>* members_named(const Package& package, std::string_view name,
                                        World& world) {
  world.rely_on_folder(package.folder, name);
  const auto found = package.members.find(name);
  return found == package.members.end() ? nullptr : &found->second;
}

const std::vector<Place>* methods_named(const Package& package, std::string_view type,
                                        std::string_view name, World& world) {
  world.rely_on_folder(package.folder, name);
  std::string key(type);
  const auto found = package.methods.find((key += '.') += name);
  return found == package.methods.end() ? nullptr : &found->second;
}

const Interface& clause_of(const File& file, World& world) {
  const SaidKeys said(file.path);
  world.rely_on(said, PACKAGE_NAME);
  world.rely_on(said, BUILD_CONSTRAINT);
  return world.facts_by_name(file);
}

const Package* package_of(const File& file, const Interface& facts, World& world) {
  const Folder* folder = folder_at(folder_of(file.path), world);
  if (folder == nullptr) return nullptr;
  const auto found = folder->find(package_name(facts));
  return found == folder->end() ? nullptr : &found->second;
}

std::string import_path(const File& file, const Interface& facts, World& world) {
  std::string path = path_of_folder(file, world);
  const std::string_view name = package_name(facts);
  if (path.empty()) return std::string(name);
  if (is_test_file(file.path) && name.ends_with("_test")) path += "_test";
  return path;
}

const std::vector<Imported>& imports_of(const File& file, World& world) {
  return world.remember<std::vector<Imported>>("go imports", file, [&] {
    std::vector<Imported> made;
    for (const Import& each : world.imports(file)) {
      made.push_back(read_import(file, each, world));
    }
    return made;
  });
}

Choice choose(const std::vector<Place>& places, const File& from, std::string_view constraint,
              bool own_package) {
  Choice made;
  std::vector<Place> hidden;
  std::vector<Place> alike;
  const bool sees_tests = own_package && is_test_file(from.path);
  for (const Place& place : places) {
    const bool visible = sees_tests || !place.in->is_test;
    (visible ? made.places : hidden).push_back(place);
    if (visible && place.in->constraint == constraint) alike.push_back(place);
    // Two files that define the same are never built together.
    if (!constraint.empty() && place.in->file->id == from.id) return {{place}, true};
  }
  if (made.places.empty() || places.size() == 1) {
    made.sure = places.size() == 1;
    return made;
  }
  if (own_package && !constraint.empty() && alike.size() == 1) return {alike, true};
  const auto rank = [&](const Place& place) {
    return place.in->file->id == from.id ? 0 : is_built_by_default(place.in->constraint) ? 1 : 2;
  };
  std::stable_sort(made.places.begin(), made.places.end(),
                   [&](const Place& a, const Place& b) { return rank(a) < rank(b); });
  made.places.insert(made.places.end(), hidden.begin(), hidden.end());
  return made;
}

}  // namespace context_delta::indexer::go
