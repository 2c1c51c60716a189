#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/language.h"
#include "storage/database.h"
#include "utils/git_utils.h"

/// The files of the commit that is being indexed, beside those of the commit indexed before.
namespace context_delta::indexer {

/// The languages that claim a file's name. Facts are stored for an object and a claim.
struct Claim {
  std::int64_t id = 0;
  std::vector<const Language*> languages;
};

/// The languages of `table` that claim files of this name, in its order.
std::vector<const Language*> claimants(std::span<const Language* const> table,
                                       std::string_view path);
/// Names and versions of languages as one text.
std::string names_and_versions(std::span<const Language* const> languages);

/// Ids of objects as bytes, and back.
std::string bytes_of_id(std::string_view hexadecimal);
std::string hexadecimal(std::string_view bytes);

/// A file as the index holds it before the update.
struct OldFile {
  std::int64_t id = 0;
  std::string path;
  std::string object;
  std::int64_t claim = 0;
  std::int64_t blob = 0;      ///< 0: the object could not be read
  std::int64_t language = 0;  ///< 0: none
  std::optional<std::string> problem;
  std::int64_t symbols = 0;
  std::int64_t references = 0;

  /// Whether rules could see it.
  bool is_indexed() const { return blob != 0 && language != 0 && !problem; }
};

struct CatalogueFile {
  File file;
  std::string object;  ///< id of the blob, as bytes
  std::int64_t bytes = 0;
  const Claim* claim = nullptr;
  const OldFile* before = nullptr;  ///< null: added
  bool changed = false;             ///< added, or other content than before
  std::int64_t blob = 0;            ///< 0: the object could not be read
  std::int64_t language = 0;        ///< id of file.language; 0: none
  std::optional<std::string> problem;
  std::int64_t symbols = 0;
  std::int64_t references = 0;

  bool is_indexed() const { return blob != 0 && language != 0 && !problem; }
};

class Catalogue {
 public:
  /// Compares a tree with the files of the index. `rebuild`: all files count as added.
  Catalogue(const storage::Database& database, std::span<const Language* const> languages,
            const std::vector<git_utils::TreeFile>& tree, bool rebuild);

  std::vector<CatalogueFile> files;     ///< by path, in byte order
  std::vector<const OldFile*> removed;  ///< by path
  bool rebuilt = false;                 ///< nothing of the commit before is kept

  /// For rules: indexed files only.
  const File* find(std::string_view path) const;
  std::vector<const File*> folder(std::string_view folder) const;
  std::vector<const File*> named(std::string_view name) const;

  /// Index in `files` by the file's id; null for files no longer there.
  std::optional<std::size_t> index_of(std::int64_t id) const;

  /// To be called once the language of every file is known.
  void prepare_look_up();

 private:
  void load(const storage::Database& database);
  void compare(const storage::Database& database, std::span<const Language* const> languages,
               const std::vector<git_utils::TreeFile>& tree);
  static void take_over(CatalogueFile& file, const OldFile& before);
  const Claim* claim_of(const storage::Database& database, std::vector<const Language*> languages);
  void number_added();

  std::vector<OldFile> old_;
  std::map<std::string, Claim> claims_;  // by names_and_versions
  std::unordered_map<std::int64_t, std::size_t> by_id_;
  std::vector<std::uint32_t> by_name_;  // indexes of files, by last path component, then path
};

}  // namespace context_delta::indexer
