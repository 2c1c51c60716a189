#include "indexer/world.h"

#include <algorithm>
#include <stdexcept>

namespace context_delta::indexer {
namespace {

/// What a World may remember before it forgets everything at the start of the next record.
constexpr std::size_t MOST_BYTES = std::size_t{48} << 20;

std::uint32_t key_of(char space, std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325u;
  const auto add = [&](char byte) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
  };
  add(space);
  for (const char byte : text) add(byte);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

std::size_t footprint(const Facts& facts) {
  return sizeof(Facts) + facts.definitions.size() * (sizeof(Definition) + 100) +
         facts.references.size() * (sizeof(Reference) + 10) +
         facts.bindings.size() * (sizeof(Binding) + 20) +
         facts.imports.size() * (sizeof(Import) + 20) + facts.exports.size() * sizeof(std::string);
}

}  // namespace

std::uint32_t World::name_key(std::string_view name) { return key_of('n', name); }
std::uint32_t World::path_key(std::string_view path) { return key_of('p', path); }
std::uint32_t World::interface_key(std::string_view path) { return key_of('i', path); }
std::uint32_t World::folder_key(std::string_view folder) { return key_of('f', folder); }
std::uint32_t World::basename_key(std::string_view name) { return key_of('b', name); }

const std::vector<Candidate>& World::definitions(std::string_view name) {
  depend(name_key(name));
  const auto [place, added] = names_.try_emplace(std::string(name));
  if (added) {
    place->second = source_.definitions(name);
    bytes_ += 100 + place->second.size() * (sizeof(Candidate) + 20);
  }
  return place->second;
}

const File* World::file(std::string_view path) {
  depend(path_key(path));
  return source_.file(path);
}

const std::vector<const File*>& World::folder(std::string_view folder) {
  depend(folder_key(folder));
  const auto [place, added] = folders_.try_emplace(std::string(folder));
  if (added) {
    place->second = source_.folder(folder);
    bytes_ += 100 + place->second.size() * sizeof(File*);
  }
  return place->second;
}

const std::vector<const File*>& World::files_named(std::string_view name) {
  depend(basename_key(name));
  const auto [place, added] = basenames_.try_emplace(std::string(name));
  if (added) {
    place->second = source_.files_named(name);
    bytes_ += 100 + place->second.size() * sizeof(File*);
  }
  return place->second;
}

const Facts& World::facts(const File& file) {
  depend(interface_key(file.path));
  const auto [place, added] = facts_.try_emplace(file.id);
  if (added) {
    place->second = source_.facts(file);
    bytes_ += footprint(*place->second);
  }
  return *place->second;
}

void World::start_record() {
  forget_when_large();
  records_.clear();
  unanswered_.clear();
  records_.emplace_back();
}

std::vector<std::uint32_t> World::finish_record() {
  std::vector<std::uint32_t> keys;
  if (!records_.empty()) keys.assign(records_.back().begin(), records_.back().end());
  records_.clear();
  std::sort(keys.begin(), keys.end());
  return keys;
}

const std::any& World::remember_any(std::string_view question, const File& file,
                                    const std::function<std::any()>& compute) {
  std::string name(question);
  name += '\0';
  name += std::to_string(file.id);
  auto place = remembered_.find(name);
  if (place == remembered_.end()) {
    if (!unanswered_.insert(name).second) {
      throw std::logic_error("the rules ask \"" + std::string(question) + "\" about " + file.path +
                             " while they answer it");
    }
    records_.emplace_back();
    std::any answer = compute();
    std::vector<std::uint32_t> keys(records_.back().begin(), records_.back().end());
    records_.pop_back();
    unanswered_.erase(name);
    bytes_ += 500 + keys.size() * 3 * sizeof(std::uint32_t);
    place =
        remembered_.emplace(std::move(name), Remembered{std::move(answer), std::move(keys)}).first;
  }
  if (!records_.empty()) {
    records_.back().insert(place->second.keys.begin(), place->second.keys.end());
  }
  return place->second.answer;
}

void World::depend(std::uint32_t key) {
  if (!records_.empty()) records_.back().insert(key);
}

void World::forget_when_large() {
  if (bytes_ < MOST_BYTES) return;
  bytes_ = 0;
  names_.clear();
  folders_.clear();
  basenames_.clear();
  facts_.clear();
  remembered_.clear();
}

}  // namespace context_delta::indexer
