#include "indexer/languages/rust/manifest.h"

#include <algorithm>
#include <vector>

#include "indexer/languages/kit/outline.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::rust {
namespace {

using kit::Binder;
using kit::trimmed;

std::string_view unquoted(std::string_view text) {
  text = trimmed(text);
  const bool quoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'') &&
                      text.back() == text.front();
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// The line without a comment; a `#` inside quotes stays.
std::string_view without_comment(std::string_view line) {
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (quote == 0 && line[i] == '#') return line.substr(0, i);
    if (line[i] == '"' || line[i] == '\'')
      quote = quote == 0 ? line[i] : quote == line[i] ? 0 : quote;
  }
  return line;
}

/// The value of `key` in an inline table `{ a = "b", c = true }`; empty when it has none.
std::string_view table_value(std::string_view table, std::string_view key) {
  table = trimmed(table);
  if (!table.starts_with('{')) return {};
  table = table.substr(1, table.rfind('}') == std::string_view::npos ? std::string_view::npos
                                                                     : table.rfind('}') - 1);
  for (const std::string_view part : kit::split(table, ',')) {
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) continue;
    if (trimmed(part.substr(0, equals)) == key) return unquoted(part.substr(equals + 1));
  }
  return {};
}

std::string crate_name(std::string_view package) {
  std::string name(package);
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

/// Reads a manifest line by line, which is how people write them.
class ManifestReader {
 public:
  void read(std::string_view line, std::int32_t number) {
    line = trimmed(without_comment(line));
    line_ = number;
    if (line.starts_with('[')) {
      const bool list = line.starts_with("[[");
      section_ = trimmed(line.substr(0, line.find(']')).substr(list ? 2 : 1));
      return;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    read_value(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
  }

  Facts facts;

 private:
  void read_value(std::string_view key, std::string_view value) {
    if (section_ == "package" && key == "name") return bind("package", unquoted(value));
    if (section_ == "lib" && key == "name") return bind("lib", unquoted(value));
    if (section_ == "lib" && key == "path") return bind("lib.path", unquoted(value));
    // [dependencies] a = ..., [dependencies.a] path = ..., [dependencies] a.path = ...
    const std::string whole = std::string(section_) + "." + std::string(key);
    const std::size_t at = whole.find("dependencies.");
    if (at == std::string::npos) return;
    const std::uint16_t traits = section_.starts_with("workspace.") ? DECLARATION : 0;
    const std::string_view rest = std::string_view(whole).substr(at + 13);
    const std::size_t dot = rest.find('.');
    if (dot == std::string_view::npos) {
      add(unquoted(rest), table_value(value, "path"), table_value(value, "workspace") == "true",
          traits);
    } else {
      const std::string_view name = unquoted(rest.substr(0, dot));
      const std::string_view property = rest.substr(dot + 1);
      add(name, property == "path" ? unquoted(value) : std::string_view(),
          property == "workspace" && value == "true", traits);
    }
  }

  void bind(std::string_view name, std::string_view value) {
    Binding made;
    made.name = name;
    made.kind = Binding::Kind::GLOBAL;
    made.value = kit::one_line(value);
    made.line = line_;
    facts.bindings.push_back(std::move(made));
  }

  void add(std::string_view name, std::string_view path, bool workspace, std::uint16_t traits) {
    const std::string alias = kit::one_line(crate_name(name), kit::LONGEST_EXPRESSION);
    const std::string module = !path.empty() ? "path " + kit::one_line(path)
                               : workspace   ? "workspace"
                                             : "registry";
    for (Import& known : facts.imports) {
      if (known.alias != alias || known.traits != traits) continue;
      if (known.module == "registry") known.module = module;
      return;
    }
    Import made;
    made.module = module;
    made.alias = alias;
    made.line = line_;
    made.traits = traits;
    facts.imports.push_back(std::move(made));
  }

  std::string_view section_;
  std::int32_t line_ = 0;
};

std::string value_of(const kit::Outline& manifest, std::string_view name) {
  for (const Binder& each : manifest.find(NOWHERE, name)) {
    if (each.kind == Binder::Kind::BINDING) return manifest.binding(each).value;
  }
  return {};
}

/// What a manifest says of a dependency, for itself or, `declared`, for the members of its
/// workspace; null when it says nothing.
const Import* dependency_called(std::string_view crate, bool declared,
                                const kit::Outline& manifest) {
  for (const Binder& each : manifest.find(NOWHERE, crate)) {
    if (each.kind != Binder::Kind::IMPORT) continue;
    const Import& import = manifest.import(each);
    if (((import.traits & DECLARATION) != 0) == declared) return &import;
  }
  return nullptr;
}

/// `folder` and a relative path joined, `.` and `..` resolved; empty when it leads outside.
std::string joined_path(std::string_view folder, std::string_view relative) {
  std::vector<std::string_view> parts = kit::split(folder, '/');
  for (const std::string_view part : kit::split(relative, '/')) {
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(part);
    } else if (!parts.empty()) {
      parts.pop_back();
    } else {
      return {};
    }
  }
  std::string path;
  for (const std::string_view part : parts) {
    path += path.empty() ? "" : "/";
    path += part;
  }
  return path;
}

std::string below(std::string_view folder, std::string_view name) {
  return folder.empty() ? std::string(name) : std::string(folder) + "/" + std::string(name);
}

/// What a workspace says of a dependency that `manifest`, a member, leaves to it.
const File* workspace_dependency(const File& manifest, std::string_view crate, World& world) {
  std::string_view folder = kit::folder_of(manifest.path);
  while (true) {
    const File* file = world.file(below(folder, "Cargo.toml"));
    if (file != nullptr) {
      const Import* found = dependency_called(crate, true, {*file, world});
      if (found != nullptr) {
        if (!found->module.starts_with("path ")) return nullptr;
        return world.file(
            below(joined_path(folder, std::string_view(found->module).substr(5)), "Cargo.toml"));
      }
    }
    if (folder.empty()) return nullptr;
    folder = kit::folder_of(folder);
  }
}

}  // namespace

std::string blank_manifest(std::string_view text) {
  std::string blank(text);
  for (char& byte : blank) byte = byte == '\n' ? '\n' : ' ';
  return blank;
}

Facts extract_manifest(TSNode, std::string_view text) {
  ManifestReader reader;
  std::int32_t number = 0;
  for (const std::string_view line : kit::split(text, '\n')) reader.read(line, ++number);
  return std::move(reader.facts);
}

Resolution resolve_manifest(const File&, const Facts&, World&) { return {}; }

const File* manifest_of(std::string_view path, World& world) {
  std::string_view folder = kit::folder_of(path);
  while (true) {
    const File* file = world.file(below(folder, "Cargo.toml"));
    if (file != nullptr && !value_of({*file, world}, "package").empty()) return file;
    if (folder.empty()) return nullptr;
    folder = kit::folder_of(folder);
  }
}

std::string library_name(const File& manifest, World& world) {
  const kit::Outline outline(manifest, world);
  const std::string name = value_of(outline, "lib");
  return crate_name(name.empty() ? value_of(outline, "package") : name);
}

const File* library_root(const File& manifest, World& world) {
  const std::string path = value_of({manifest, world}, "lib.path");
  return world.file(joined_path(kit::folder_of(manifest.path), path.empty() ? "src/lib.rs" : path));
}

Dependency dependency(const File& manifest, std::string_view crate, World& world) {
  const Import* found = dependency_called(crate, false, {manifest, world});
  if (found != nullptr) {
    const File* other = nullptr;
    if (found->module.starts_with("path ")) {
      other = world.file(below(
          joined_path(kit::folder_of(manifest.path), std::string_view(found->module).substr(5)),
          "Cargo.toml"));
    } else if (found->module == "workspace") {
      other = workspace_dependency(manifest, crate, world);
    }
    return {true, other == nullptr ? nullptr : library_root(*other, world)};
  }
  if (library_name(manifest, world) == crate) return {true, library_root(manifest, world)};
  return {};
}

}  // namespace context_delta::indexer::rust
