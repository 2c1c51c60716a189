#include "indexer/languages/manifest/manifest.h"

#include <algorithm>
#include <array>

#include "indexer/languages/kit/text.h"
#include "indexer/languages/manifest/strings.h"

namespace context_delta::indexer::manifest {
namespace {

constexpr std::array<std::string_view, 7> SUFFIXES = {
    "package.json",  "tsconfig.json", "tsconfig.base.json", "tsconfig.build.json",
    "jsconfig.json", "lerna.json",    "pnpm-workspace.yaml"};

/// The outermost keys that rules ask for.
constexpr std::array<std::string_view, 13> KEYS = {
    "baseUrl", "compilerOptions", "exports", "extends", "imports", "main",      "module",
    "name",    "packages",        "source",  "types",   "typings", "workspaces"};

constexpr std::size_t MOST_BINDINGS = 2000;
constexpr std::size_t LONGEST_VALUE = 400;

void add(Facts& facts, std::string name, std::string_view value) {
  if (facts.bindings.size() >= MOST_BINDINGS || value.size() > LONGEST_VALUE) return;
  Binding made;
  made.name = kit::one_line(name, LONGEST_VALUE);
  made.kind = Binding::Kind::GLOBAL;
  made.value = kit::one_line(value, LONGEST_VALUE);
  facts.bindings.push_back(std::move(made));
}

bool is_wanted(std::string_view path) {
  const std::string_view key = path.substr(0, path.find(SEPARATOR));
  if (std::find(KEYS.begin(), KEYS.end(), key) == KEYS.end()) return false;
  if (key != "compilerOptions") return true;
  const std::string_view option = path.substr(std::min(path.size(), key.size() + 1));
  return option.starts_with("paths|") || option == "baseUrl";
}

/// The items of `packages:` in YAML.
void add_workspaces(Facts& facts, std::string_view text) {
  bool inside = false;
  int count = 0;
  for (const std::string_view line : kit::split(text, '\n')) {
    std::string_view item = kit::trimmed(line);
    if (item.empty() || item.starts_with('#')) continue;
    if (!item.starts_with('-')) {
      inside = item == "packages:";
      continue;
    }
    if (!inside) continue;
    item = kit::trimmed(item.substr(1));
    if (item.size() >= 2 && (item.front() == '"' || item.front() == '\'')) {
      item = item.substr(1, item.find(item.front(), 1) - 1);
    }
    add(facts, "workspaces|" + std::to_string(count++), item);
  }
}

Facts extract(TSNode, std::string_view text) {
  Facts facts;
  const std::string_view start = kit::trimmed(text.substr(0, 4000));
  if (!start.starts_with('{') && !start.starts_with('/')) {
    add_workspaces(facts, text);
    return facts;
  }
  for_each_string(text, [&](const std::string& path, std::string_view value) {
    if (is_wanted(path)) add(facts, path, value);
  });
  return facts;
}

Resolution resolve(const File&, const Facts&, World&) { return {}; }

}  // namespace

const Language LANGUAGE = {.name = "manifest",
                           .family = "manifest",
                           .version = 1,
                           .suffixes = SUFFIXES,
                           .accepts = nullptr,
                           .grammar = nullptr,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::manifest
