#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "indexer/rows/catalogue.h"
#include "indexer/world/name_table.h"
#include "indexer/world/world.h"

namespace context_delta::indexer {

/// Facts by the id of their blob: encoded in memory as long as there is room, else in the index.
/// For use by several threads; the lock is the one that all users of the connection share. It is
/// taken only to read the index, so that nobody waits for rows to be written otherwise.
class FactsStore {
 public:
  FactsStore(const storage::Database& database, std::mutex& lock)
      : database_(database), lock_(lock) {}

  void keep(std::int64_t blob, EncodedFacts encoded);
  // The caller of these does not hold the lock.
  std::shared_ptr<const Facts> load(std::int64_t blob) const;
  /// Without the references. The same facts as long as anybody has them.
  std::shared_ptr<const Interface> load_shared(std::int64_t blob) const;

 private:
  std::shared_ptr<const EncodedFacts> kept(std::int64_t blob) const;
  std::string stored(std::int64_t blob, const char* column) const;

  const storage::Database& database_;
  std::mutex& lock_;
  mutable std::mutex own_lock_;  // of what follows
  mutable std::unordered_map<std::int64_t, std::weak_ptr<const Interface>> decoded_;
  std::size_t bytes_ = 0;
  std::unordered_map<std::int64_t, std::shared_ptr<const EncodedFacts>> kept_;
};

/// The commit as rules see it: the names of changed files from a table in memory, those of all
/// others from the index. One object a thread.
class IndexSource : public WorldSource {
 public:
  IndexSource(const storage::Database& database, std::mutex& lock, const Catalogue& catalogue,
              const NameTable& names, const FactsStore& facts);
  ~IndexSource() override;

  std::vector<Candidate> definitions(std::string_view family, std::string_view name) override;
  const File* file(std::string_view path) override { return catalogue_.find(path); }
  std::vector<const File*> folder(std::string_view folder) override {
    return catalogue_.folder(folder);
  }
  std::vector<const File*> files_named(std::string_view name) override {
    return catalogue_.named(name);
  }
  std::shared_ptr<const Interface> facts(const File& file) override;

 private:
  void add_stored(std::string_view family, std::string_view name, std::vector<Candidate>& found);

  const storage::Database& database_;
  std::mutex& lock_;
  const Catalogue& catalogue_;
  const NameTable& names_;
  const FactsStore& facts_;
  std::optional<storage::Statement> by_name_;  // made and destroyed under the lock
};

}  // namespace context_delta::indexer
