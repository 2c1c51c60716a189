#include "indexer/world/world.h"

#include <algorithm>
#include <stdexcept>
#include <type_traits>

namespace context_delta::indexer {
namespace {

/// What a World may remember before it forgets everything at the start of the next record.
constexpr std::size_t MOST_BYTES = std::size_t{48} << 20;

/// Keys that are compared with one another lately; a power of two.
constexpr std::size_t RECENT_KEYS = 4096;

/// FNV-1a over 64 bits.
std::uint64_t hashed(std::uint64_t hash, std::string_view text) {
  for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
  return hash;
}

std::uint64_t hash_of(char space, std::string_view text) {
  return hashed(hashed(0xCBF29CE484222325u, {&space, 1}), text);
}

/// The key of what was hashed, and of a name after it.
std::uint32_t folded(std::uint64_t hash, std::string_view name = {}) {
  if (!name.empty()) hash = hashed(hashed(hash, {"", 1}), name);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

std::uint32_t key_of(char space, std::string_view text) { return folded(hash_of(space, text)); }

std::size_t footprint(const Interface& facts) {
  return sizeof(Interface) + facts.definitions.size() * (sizeof(Definition) + 100) +
         facts.expressions.size() * (sizeof(Expression) + 10) +
         facts.bindings.size() * (sizeof(Binding) + 20) +
         facts.imports.size() * (sizeof(Import) + 20) + facts.exports.size() * sizeof(std::string);
}

}  // namespace

SaidKeys::SaidKeys(std::string_view path) : path_hash_(hash_of('s', path)) {}

std::uint32_t SaidKeys::key(std::string_view name) const { return folded(path_hash_, name); }

std::uint32_t World::name_key(std::string_view family, std::string_view name) {
  return folded(hash_of('n', family), name);
}
std::uint32_t World::path_key(std::string_view path) { return key_of('p', path); }
std::uint32_t World::interface_key(std::string_view path) { return key_of('i', path); }
std::uint32_t World::imports_key(std::string_view path) { return key_of('m', path); }
std::uint32_t World::said_key(std::string_view path, std::string_view name) {
  return SaidKeys(path).key(name);
}
std::uint32_t World::said_in_key(std::string_view folder, std::string_view name) {
  return folded(hash_of('d', folder), name);
}
std::uint32_t World::folder_key(std::string_view folder) { return key_of('f', folder); }
std::uint32_t World::basename_key(std::string_view name) { return key_of('b', name); }

template <class Answer, class Key, class AskSource>
const Answer& World::answer(ByText<Answer>& given, std::string_view text, Key key,
                            AskSource ask_source) {
  auto place = given.find(text);
  if (place == given.end()) {
    place = given.emplace(std::string(text), Given<Answer>{ask_source(), key(text), 0}).first;
    bytes_ += 100 + text.size();
    if constexpr (!std::is_pointer_v<Answer>) {
      bytes_ += place->second.answer.size() * (sizeof(place->second.answer[0]) + 20);
    }
  }
  note(place->second);
  return place->second.answer;
}

const std::vector<Candidate>& World::definitions(std::string_view name) {
  const auto key = [&](std::string_view text) { return name_key(family_, text); };
  return answer(names_[family_], name, key, [&] { return source_.definitions(family_, name); });
}

const File* World::file(std::string_view path) {
  return answer(paths_, path, path_key, [&] { return source_.file(path); });
}

const std::vector<const File*>& World::folder(std::string_view folder) {
  return answer(folders_, folder, folder_key, [&] { return source_.folder(folder); });
}

const std::vector<const File*>& World::files_named(std::string_view name) {
  return answer(basenames_, name, basename_key, [&] { return source_.files_named(name); });
}

World::Given<std::shared_ptr<const Interface>>& World::given_facts(const File& file) {
  Given<std::shared_ptr<const Interface>>& given = facts_[file.id];
  if (given.answer == nullptr) {
    given.answer = source_.facts(file);
    given.key = interface_key(file.path);
    bytes_ += footprint(*given.answer);
  }
  return given;
}

const Interface& World::facts(const File& file) {
  Given<std::shared_ptr<const Interface>>& given = given_facts(file);
  note(given);
  return *given.answer;
}

const std::vector<Import>& World::imports(const File& file) {
  note(imports_key(file.path));
  return given_facts(file).answer->imports;
}

const Interface& World::facts_by_name(const File& file) { return *given_facts(file).answer; }

void World::rely_on_folder(std::string_view folder, std::string_view name) {
  note(said_in_key(folder, name));
}

void World::start_record(std::string_view family) {
  forget_when_large();
  family_ = family;
  records_.clear();
  start_inner_record();
}

std::vector<std::uint32_t> World::finish_record() {
  std::vector<std::uint32_t> keys;
  if (!records_.empty()) keys = finish_inner_record();
  records_.clear();
  return keys;
}

void World::start_inner_record() { records_.push_back({++last_record_, {}}); }

std::vector<std::uint32_t> World::finish_inner_record() {
  std::vector<std::uint32_t> keys = std::move(records_.back().keys);
  records_.pop_back();
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  return keys;
}

template <class Answer>
void World::note(Given<Answer>& given) {
  if (records_.empty() || given.noted_in == records_.back().number) return;
  given.noted_in = records_.back().number;
  records_.back().keys.push_back(given.key);
}

void World::note(std::uint32_t key) {
  if (records_.empty()) return;
  const std::pair seen(records_.back().number, key);
  if (recent_.empty()) recent_.resize(RECENT_KEYS);
  if (std::exchange(recent_[key % RECENT_KEYS], seen) != seen) records_.back().keys.push_back(key);
}

const std::any& World::remember_any(std::string_view question, const File& file,
                                    DefinitionIndex definition,
                                    const std::function<std::any()>& compute) {
  auto about = remembered_.find(question);
  if (about == remembered_.end()) about = remembered_.try_emplace(std::string(question)).first;
  const std::int64_t subject = file.id << 32 | static_cast<std::uint32_t>(definition);
  const auto [place, added] = about->second.try_emplace(subject);
  Remembered& remembered = place->second;
  if (added) {
    start_inner_record();
    remembered.answer = compute();
    remembered.keys = finish_inner_record();
    remembered.answered = true;
    bytes_ += 500 + remembered.keys.size() * sizeof(std::uint32_t);
  } else if (!remembered.answered) {
    throw std::logic_error("the rules ask \"" + std::string(question) + "\" about " + file.path +
                           " while they answer it");
  }
  if (!records_.empty() && remembered.noted_in != records_.back().number) {
    remembered.noted_in = records_.back().number;
    std::vector<std::uint32_t>& keys = records_.back().keys;
    keys.insert(keys.end(), remembered.keys.begin(), remembered.keys.end());
  }
  return remembered.answer;
}

void World::forget_when_large() {
  if (bytes_ < MOST_BYTES) return;
  bytes_ = 0;
  names_.clear();
  paths_.clear();
  folders_.clear();
  basenames_.clear();
  facts_.clear();
  remembered_.clear();
}

}  // namespace context_delta::indexer
