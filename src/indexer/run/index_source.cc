#include "indexer/run/index_source.h"

#include <algorithm>

#include "indexer/rows/compression.h"
#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

constexpr std::size_t MOST_KEPT_BYTES = std::size_t{64} << 20;

constexpr std::string_view BY_NAME = R"(
SELECT symbols.id, kind, traits, least_arguments, most_arguments, first_line, container
FROM symbols JOIN scopes ON scopes.id = (symbols.id >> ?2 << ?2 | symbols.scope)
WHERE name = ?1 AND kind <> ?3)";

}  // namespace

void FactsStore::keep(std::int64_t blob, EncodedFacts encoded) {
  const std::lock_guard guard(own_lock_);
  const std::size_t bytes = encoded.shared.size() + encoded.references.size();
  if (bytes_ + bytes > MOST_KEPT_BYTES) return;
  bytes_ += bytes;
  kept_.emplace(blob, std::make_shared<EncodedFacts>(std::move(encoded)));
}

std::shared_ptr<const Facts> FactsStore::load(std::int64_t blob) const {
  std::shared_ptr<const EncodedFacts> encoded = kept(blob);
  if (!encoded) {
    encoded = std::make_shared<EncodedFacts>(
        EncodedFacts{stored(blob, "facts"), stored(blob, "reference_facts")});
  }
  return std::make_shared<Facts>(decode_facts(*encoded));
}

std::shared_ptr<const Interface> FactsStore::load_shared(std::int64_t blob) const {
  {
    const std::lock_guard guard(own_lock_);
    const auto known = decoded_.find(blob);
    std::shared_ptr<const Interface> facts;
    if (known != decoded_.end()) facts = known->second.lock();
    if (facts) return facts;
  }
  const std::shared_ptr<const EncodedFacts> encoded = kept(blob);
  auto facts = std::make_shared<Interface>(
      decode_shared_facts(encoded ? encoded->shared : stored(blob, "facts")));
  const std::lock_guard guard(own_lock_);
  decoded_[blob] = facts;
  return facts;
}

std::shared_ptr<const EncodedFacts> FactsStore::kept(std::int64_t blob) const {
  const std::lock_guard guard(own_lock_);
  const auto place = kept_.find(blob);
  return place == kept_.end() ? nullptr : place->second;
}

std::string FactsStore::stored(std::int64_t blob, const char* column) const {
  std::string bytes;
  {
    const std::lock_guard guard(lock_);
    storage::Statement row(database_,
                           "SELECT " + std::string(column) + " FROM blobs WHERE id = ?1");
    if (row.bind(1, blob).step()) bytes = row.blob(0);
  }
  return decompressed(bytes);
}

IndexSource::IndexSource(const storage::Database& database, std::mutex& lock,
                         const Catalogue& catalogue, const NameTable& names,
                         const FactsStore& facts)
    : database_(database), lock_(lock), catalogue_(catalogue), names_(names), facts_(facts) {}

IndexSource::~IndexSource() {
  const std::lock_guard guard(lock_);
  by_name_.reset();
}

std::vector<Candidate> IndexSource::definitions(std::string_view family, std::string_view name) {
  std::vector<Candidate> found;
  const auto [begin, end] = names_.find(name);
  for (auto entry = begin; entry != end; ++entry) {
    const File& file = catalogue_.files[entry->file].file;
    if (file.family != family) continue;
    found.push_back({.file = &file,
                     .definition = entry->definition,
                     .kind = entry->kind,
                     .traits = entry->traits,
                     .least_arguments = entry->least_arguments,
                     .most_arguments = entry->most_arguments,
                     .first_line = entry->first_line,
                     .container = std::string(names_.container(*entry))});
  }
  if (catalogue_.rebuilt) return found;
  add_stored(family, name, found);
  // Files stand in the catalogue in the order of their paths.
  std::sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) {
    return a.file == b.file ? a.definition < b.definition : a.file < b.file;
  });
  return found;
}

void IndexSource::add_stored(std::string_view family, std::string_view name,
                             std::vector<Candidate>& found) {
  const std::lock_guard guard(lock_);
  if (!by_name_) by_name_.emplace(database_, BY_NAME);
  by_name_->bind(1, name).bind(2, storage::SYMBOL_BITS).bind(3, storage::MODULE_KIND);
  while (by_name_->step()) {
    const std::int64_t id = by_name_->integer(0);
    const auto index = catalogue_.index_of(id >> storage::SYMBOL_BITS);
    if (!index || catalogue_.files[*index].changed) continue;
    const File& file = catalogue_.files[*index].file;
    if (file.family != family) continue;
    found.push_back({.file = &file,
                     .definition = static_cast<DefinitionIndex>((id & storage::MOST_SYMBOLS) - 1),
                     .kind = static_cast<Kind>(by_name_->integer(1)),
                     .traits = static_cast<std::uint16_t>(by_name_->integer(2)),
                     .least_arguments = static_cast<std::int16_t>(by_name_->integer(3)),
                     .most_arguments = static_cast<std::int16_t>(by_name_->integer(4)),
                     .first_line = static_cast<std::int32_t>(by_name_->integer(5)),
                     .container = std::string(by_name_->text(6))});
  }
  by_name_->reset();
}

std::shared_ptr<const Interface> IndexSource::facts(const File& file) {
  const auto index = catalogue_.index_of(file.id);
  return facts_.load_shared(catalogue_.files[*index].blob);
}

}  // namespace context_delta::indexer
