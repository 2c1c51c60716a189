#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "indexer/facts.h"

/// What the resolution of one file may know of the rest of the repository.
namespace context_delta::indexer {

/// A file of the commit that the index covers.
struct File {
  std::int64_t id = 0;
  std::string path;
  std::string language;  ///< name of its Language
};

/// A definition somewhere in the repository, with what a rule needs to tell namesakes apart.
struct Candidate {
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  Kind kind = Kind::FUNCTION;
  std::uint16_t traits = 0;
  std::int16_t least_arguments = 0;
  std::int16_t most_arguments = ANY_NUMBER;
  std::int32_t first_line = 1;  ///< for display: no rule may decide by it
  std::string container;        ///< container_name of it; empty at the top level
  friend bool operator==(const Candidate& a, const Candidate& b) {
    return a.file == b.file && a.definition == b.definition;
  }
};

/// Where a World gets its answers: the index being updated.
class WorldSource {
 public:
  virtual ~WorldSource() = default;
  /// All definitions of a short name, ordered by path, then by definition.
  virtual std::vector<Candidate> definitions(std::string_view name) = 0;
  virtual const File* file(std::string_view path) = 0;
  /// Indexed files directly in a folder ("" is the top), by path.
  virtual std::vector<const File*> folder(std::string_view folder) = 0;
  /// Indexed files whose last path component is `name`, by path.
  virtual std::vector<const File*> files_named(std::string_view name) = 0;
  virtual std::shared_ptr<const Facts> facts(const File& file) = 0;
};

/// The repository as seen while files are resolved. Every answer is recorded as a dependency of
/// the file being resolved, so that it is resolved again exactly when an answer changes: rules
/// must learn about other files through this class only.
class World {
 public:
  explicit World(WorldSource& source) : source_(source) {}

  /// All definitions of a short name in the repository, of any language.
  const std::vector<Candidate>& definitions(std::string_view name);
  /// The indexed file at a path, or null.
  const File* file(std::string_view path);
  const std::vector<const File*>& folder(std::string_view folder);
  const std::vector<const File*>& files_named(std::string_view name);
  /// What another file defines, binds at its top level and in its classes, and imports. Only the
  /// parts that interface_hash covers may be relied on.
  const Facts& facts(const File& file);

  /// The answer to `question` about `file`, computed once and then remembered together with all
  /// that it depended on (for instance the include closure of a header). `compute` may ask the
  /// world anything but must not ask the same question again: that raises std::logic_error.
  template <class Answer>
  const Answer& remember(std::string_view question, const File& file,
                         const std::function<Answer()>& compute) {
    return *std::any_cast<std::shared_ptr<Answer>>(remember_any(
        question, file, [&]() -> std::any { return std::make_shared<Answer>(compute()); }));
  }

  /// Starts the record of a file; finish_record returns what was asked since, sorted and unique.
  /// Answers are references that stay valid until the next start_record.
  void start_record();
  std::vector<std::uint32_t> finish_record();

  /// The keys under which answers are recorded; a change of the answer makes the key stale.
  static std::uint32_t name_key(std::string_view name);
  static std::uint32_t path_key(std::string_view path);       ///< whether the file is there
  static std::uint32_t interface_key(std::string_view path);  ///< its interface_hash
  static std::uint32_t folder_key(std::string_view folder);
  static std::uint32_t basename_key(std::string_view name);

 private:
  const std::any& remember_any(std::string_view question, const File& file,
                               const std::function<std::any()>& compute);
  void depend(std::uint32_t key);
  void forget_when_large();

  struct Remembered {
    std::any answer;
    std::vector<std::uint32_t> keys;
  };
  WorldSource& source_;
  std::size_t bytes_ = 0;                                   // roughly, of all that is remembered
  std::vector<std::unordered_set<std::uint32_t>> records_;  // innermost last
  std::unordered_map<std::string, std::vector<Candidate>> names_;
  std::unordered_map<std::string, std::vector<const File*>> folders_;
  std::unordered_map<std::string, std::vector<const File*>> basenames_;
  std::unordered_map<std::int64_t, std::shared_ptr<const Facts>> facts_;
  std::unordered_map<std::string, Remembered> remembered_;
  std::unordered_set<std::string> unanswered_;  // questions whose answer is being computed
};

}  // namespace context_delta::indexer
