#include "render/linked_pack.h"

#include <unordered_map>

namespace context_delta::render {
namespace {

/// The file of a path, added when there is none; `places` finds it again.
std::size_t file_place(LinkedPack& linked,
                       std::unordered_map<std::string_view, std::size_t>& places,
                       const std::string& path) {
  const auto [place, added] = places.try_emplace(path, linked.files.size());
  if (added) linked.files.push_back({.path = path});
  return place->second;
}

void link_files(LinkedPack& linked) {
  const PackView& pack = *linked.pack;
  std::unordered_map<std::string_view, std::size_t> places;
  for (const FileRow& row : pack.files) {
    LinkedFile& file = linked.files[file_place(linked, places, row.path)];
    if (file.row == nullptr) file.row = &row;
  }
  for (std::size_t i = 0; i < pack.symbols.size(); ++i) {
    const std::size_t place = file_place(linked, places, pack.symbols[i].file);
    linked.files[place].symbols.push_back(i);
    linked.symbols.push_back({.row = i, .file = place});
  }
  for (std::size_t i = 0; i < pack.snippets.size(); ++i) {
    linked.files[file_place(linked, places, pack.snippets[i].file)].snippets.push_back(i);
  }
}

void link_callers(LinkedPack& linked) {
  const PackView& pack = *linked.pack;
  std::unordered_map<std::string_view, std::size_t> named;
  for (std::size_t i = 0; i < pack.symbols.size(); ++i) {
    linked.symbols[i].first_namesake = named.try_emplace(pack.symbols[i].fqn, i).first->second;
  }
  for (std::size_t i = 0; i < pack.callers.size(); ++i) {
    const auto found = named.find(pack.callers[i].calls);
    (found == named.end() ? linked.loose_callers : linked.symbols[found->second].callers)
        .push_back(i);
  }
  for (std::size_t i = 0; i < pack.neighbours.size(); ++i) {
    const auto found = named.find(pack.neighbours[i].calls);
    (found == named.end() ? linked.loose_neighbours : linked.symbols[found->second].neighbours)
        .push_back(i);
  }
}

}  // namespace

LinkedPack link_rows(const PackView& pack) {
  LinkedPack linked;
  linked.pack = &pack;
  link_files(linked);
  link_callers(linked);
  return linked;
}

}  // namespace context_delta::render
