#include "indexer/rows/catalogue.h"

#include <algorithm>
#include <tuple>

namespace context_delta::indexer {
namespace {

using storage::Statement;

std::string_view last_component(std::string_view path) { return path.substr(path.rfind('/') + 1); }

int digit(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

}  // namespace

std::vector<const Language*> claimants(std::span<const Language* const> table,
                                       std::string_view path) {
  std::vector<const Language*> found;
  for (const Language* language : table) {
    const auto claims = [&](std::string_view suffix) { return path.ends_with(suffix); };
    if (std::any_of(language->suffixes.begin(), language->suffixes.end(), claims)) {
      found.push_back(language);
    }
  }
  return found;
}

std::string bytes_of_id(std::string_view hexadecimal) {
  std::string bytes(hexadecimal.size() / 2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<char>(digit(hexadecimal[2 * i]) << 4 | digit(hexadecimal[2 * i + 1]));
  }
  return bytes;
}

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

std::string names_and_versions(std::span<const Language* const> languages) {
  std::string text;
  for (const Language* language : languages) {
    if (!text.empty()) text += ' ';
    text += language->name;
    text += ':' + std::to_string(language->version);
  }
  return text;
}

Catalogue::Catalogue(const storage::Database& database, std::span<const Language* const> languages,
                     const std::vector<git_utils::TreeFile>& tree, bool rebuild)
    : rebuilt(rebuild) {
  if (!rebuilt) load(database);
  compare(database, languages, tree);
  const auto changed = static_cast<std::size_t>(
      std::count_if(files.begin(), files.end(), [](const auto& file) { return file.changed; }));
  if (!rebuilt && 2 * (changed + removed.size()) > files.size()) {
    rebuilt = true;
    files.clear();
    removed.clear();
    old_.clear();
    compare(database, languages, tree);
  }
  number_added();
}

void Catalogue::load(const storage::Database& database) {
  Statement row(database,
                "SELECT id, path, object, claim, coalesce(blob, 0), coalesce(language, 0), "
                "problem, symbols, \"references\" FROM files ORDER BY path");
  while (row.step()) {
    old_.push_back(
        {.id = row.integer(0),
         .path = std::string(row.text(1)),
         .object = std::string(row.blob(2)),
         .claim = row.integer(3),
         .blob = row.integer(4),
         .language = row.integer(5),
         .problem = row.is_null(6) ? std::nullopt : std::optional<std::string>(row.text(6)),
         .symbols = row.integer(7),
         .references = row.integer(8)});
  }
}

void Catalogue::compare(const storage::Database& database,
                        std::span<const Language* const> languages,
                        const std::vector<git_utils::TreeFile>& tree) {
  auto old = old_.begin();
  for (const git_utils::TreeFile& entry : tree) {
    std::vector<const Language*> claiming = claimants(languages, entry.path);
    if (claiming.empty()) continue;
    for (; old != old_.end() && old->path < entry.path; ++old) removed.push_back(&*old);
    CatalogueFile& file = files.emplace_back();
    file.file.path = entry.path;
    file.object = bytes_of_id(entry.object);
    file.bytes = entry.bytes;
    file.claim = claim_of(database, std::move(claiming));
    file.changed = true;
    if (old != old_.end() && old->path == entry.path) take_over(file, *old++);
  }
  for (; old != old_.end(); ++old) removed.push_back(&*old);
}

void Catalogue::take_over(CatalogueFile& file, const OldFile& before) {
  file.before = &before;
  file.file.id = before.id;
  file.references = before.references;
  file.changed = before.object != file.object || before.claim != file.claim->id || before.blob == 0;
  if (file.changed) return;
  file.blob = before.blob;
  file.language = before.language;
  file.problem = before.problem;
  file.symbols = before.symbols;
}

const Claim* Catalogue::claim_of(const storage::Database& database,
                                 std::vector<const Language*> languages) {
  const std::string text = names_and_versions(languages);
  const auto [place, added] = claims_.try_emplace(text);
  if (added) {
    Statement(database, "INSERT OR IGNORE INTO claims(text) VALUES(?1)").bind(1, text).run();
    Statement row(database, "SELECT id FROM claims WHERE text = ?1");
    row.bind(1, text).step();
    place->second = {row.integer(0), std::move(languages)};
  }
  return &place->second;
}

void Catalogue::number_added() {
  std::int64_t last = 0;
  for (const OldFile& file : old_) last = std::max(last, file.id);
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i].file.id == 0) files[i].file.id = ++last;
    by_id_[files[i].file.id] = i;
  }
}

void Catalogue::prepare_look_up() {
  for (std::uint32_t i = 0; i < files.size(); ++i) {
    if (files[i].is_indexed()) by_name_.push_back(i);
  }
  std::sort(by_name_.begin(), by_name_.end(), [&](std::uint32_t a, std::uint32_t b) {
    return std::tuple(last_component(files[a].file.path), a) <
           std::tuple(last_component(files[b].file.path), b);
  });
}

const File* Catalogue::find(std::string_view path) const {
  const auto place =
      std::lower_bound(files.begin(), files.end(), path,
                       [](const auto& file, std::string_view p) { return file.file.path < p; });
  if (place == files.end() || place->file.path != path || !place->is_indexed()) return nullptr;
  return &place->file;
}

std::vector<const File*> Catalogue::folder(std::string_view folder) const {
  std::string prefix(folder);
  if (!prefix.empty()) prefix += '/';
  const auto before = [](const auto& file, std::string_view p) { return file.file.path < p; };
  std::vector<const File*> found;
  auto place = std::lower_bound(files.begin(), files.end(), std::string_view(prefix), before);
  while (place != files.end() && place->file.path.starts_with(prefix)) {
    const std::string& path = place->file.path;
    const std::size_t slash = path.find('/', prefix.size());
    if (slash == std::string::npos) {
      if (place->is_indexed()) found.push_back(&place->file);
      ++place;
    } else {
      const std::string beyond = path.substr(0, slash) + static_cast<char>('/' + 1);
      place = std::lower_bound(place, files.end(), std::string_view(beyond), before);
    }
  }
  return found;
}

std::vector<const File*> Catalogue::named(std::string_view name) const {
  auto place = std::lower_bound(
      by_name_.begin(), by_name_.end(), name,
      [&](std::uint32_t i, std::string_view n) { return last_component(files[i].file.path) < n; });
  std::vector<const File*> found;
  for (; place != by_name_.end() && last_component(files[*place].file.path) == name; ++place) {
    found.push_back(&files[*place].file);
  }
  return found;
}

std::optional<std::size_t> Catalogue::index_of(std::int64_t id) const {
  const auto place = by_id_.find(id);
  if (place == by_id_.end()) return std::nullopt;
  return place->second;
}

}  // namespace context_delta::indexer
