#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/model/facts.h"
#include "indexer/model/place.h"

/// What the resolution of one file may know of the rest of the repository.
namespace context_delta::indexer {

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
  operator Place() const { return {file, definition}; }
  friend bool operator==(const Candidate& a, const Candidate& b) {
    return a.file == b.file && a.definition == b.definition;
  }
};

/// Where a World gets its answers: the index being updated.
class WorldSource {
 public:
  virtual ~WorldSource() = default;
  /// All definitions of a short name in files of a family, ordered by path, then by definition.
  virtual std::vector<Candidate> definitions(std::string_view family, std::string_view name) = 0;
  virtual const File* file(std::string_view path) = 0;
  /// Indexed files directly in a folder ("" is the top), by path.
  virtual std::vector<const File*> folder(std::string_view folder) = 0;
  /// Indexed files whose last path component is `name`, by path.
  virtual std::vector<const File*> files_named(std::string_view name) = 0;
  virtual std::shared_ptr<const Interface> facts(const File& file) = 0;
};

/// The keys of what one file says of names; see World::rely_on.
class SaidKeys {
 public:
  SaidKeys() = default;
  explicit SaidKeys(std::string_view path);
  std::uint32_t key(std::string_view name) const;

 private:
  std::uint64_t path_hash_ = 0;
};

/// The repository as seen while files are resolved. Every answer is recorded as a dependency of
/// the file being resolved, so that it is resolved again exactly when an answer changes: rules
/// must learn about other files through this class only.
class World {
 public:
  explicit World(WorldSource& source) : source_(source) {}

  /// All definitions of a short name in the repository, in the family of the file being resolved.
  const std::vector<Candidate>& definitions(std::string_view name);
  /// The indexed file at a path, or null.
  const File* file(std::string_view path);
  const std::vector<const File*>& folder(std::string_view folder);
  const std::vector<const File*>& files_named(std::string_view name);
  /// What another file defines, binds at its top level and in its classes, and imports.
  const Interface& facts(const File& file);
  /// What another file imports. Everything but lines may be relied on.
  const std::vector<Import>& imports(const File& file);

  /// For a view of another file that says what it was asked: its facts, of which only what they
  /// say of the names in rely_on() may be relied on.
  const Interface& facts_by_name(const File& file);
  /// Records a dependency on what the facts of a file say of one name: the definitions, bindings
  /// and imports that give it a meaning in some scope (name_hashes tells when that changes).
  void rely_on(const SaidKeys& file, std::string_view name) { note(file.key(name)); }
  /// The same of all files directly in a folder, whether they are there yet or not.
  void rely_on_folder(std::string_view folder, std::string_view name);

  /// The answer to `question` about `file`, computed once and then remembered together with all
  /// that it depended on (for instance the include closure of a header). `compute` may ask the
  /// world anything but must not ask the same question again: that raises std::logic_error.
  template <class Answer>
  const Answer& remember(std::string_view question, const File& file,
                         const std::function<Answer()>& compute) {
    return remember<Answer>(question, file, NOWHERE, compute);
  }
  /// The same about one definition of the file.
  template <class Answer>
  const Answer& remember(std::string_view question, const File& file, DefinitionIndex definition,
                         const std::function<Answer()>& compute) {
    return *std::any_cast<std::shared_ptr<Answer>>(
        remember_any(question, file, definition,
                     [&]() -> std::any { return std::make_shared<Answer>(compute()); }));
  }

  /// Starts the record of a file of a family; finish_record returns what was asked since, sorted
  /// and unique.
  /// Answers are references that stay valid until the next start_record.
  void start_record(std::string_view family);
  std::vector<std::uint32_t> finish_record();

  /// The keys under which answers are recorded; a change of the answer makes the key stale.
  static std::uint32_t name_key(std::string_view family, std::string_view name);
  static std::uint32_t path_key(std::string_view path);       ///< whether the file is there
  static std::uint32_t interface_key(std::string_view path);  ///< its interface_hash
  static std::uint32_t imports_key(std::string_view path);
  static std::uint32_t said_key(std::string_view path, std::string_view name);  ///< of rely_on
  static std::uint32_t said_in_key(std::string_view folder, std::string_view name);
  static std::uint32_t folder_key(std::string_view folder);
  static std::uint32_t basename_key(std::string_view name);

 private:
  /// An answer that was given, with the record that noted it last: notes are made once a record.
  template <class Answer>
  struct Given {
    Answer answer{};
    std::uint32_t key = 0;
    std::uint64_t noted_in = 0;
  };
  struct Remembered {
    std::any answer;
    std::vector<std::uint32_t> keys;
    std::uint64_t noted_in = 0;
    bool answered = false;
  };
  struct Record {
    std::uint64_t number = 0;
    std::vector<std::uint32_t> keys;
  };
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };
  template <class Answer>
  using ByText = std::unordered_map<std::string, Given<Answer>, TextHash, std::equal_to<>>;

  const std::any& remember_any(std::string_view question, const File& file,
                               DefinitionIndex definition,
                               const std::function<std::any()>& compute);
  /// The answer to a question about `text`, from the source when it was not given before.
  template <class Answer, class Key, class AskSource>
  const Answer& answer(ByText<Answer>& given, std::string_view text, Key key, AskSource ask_source);
  template <class Answer>
  void note(Given<Answer>& given);
  void note(std::uint32_t key);
  Given<std::shared_ptr<const Interface>>& given_facts(const File& file);
  void start_inner_record();
  std::vector<std::uint32_t> finish_inner_record();
  void forget_when_large();

  WorldSource& source_;
  std::size_t bytes_ = 0;  // roughly, of all that is remembered
  std::uint64_t last_record_ = 0;
  std::vector<Record> records_;  // innermost last
  // The keys noted last, so that few are noted twice in a record.
  std::vector<std::pair<std::uint64_t, std::uint32_t>> recent_;
  std::string family_;  // of the file being resolved
  std::map<std::string, ByText<std::vector<Candidate>>, std::less<>> names_;  // by family
  ByText<const File*> paths_;
  ByText<std::vector<const File*>> folders_;
  ByText<std::vector<const File*>> basenames_;
  std::unordered_map<std::int64_t, Given<std::shared_ptr<const Interface>>> facts_;
  std::map<std::string, std::unordered_map<std::int64_t, Remembered>, std::less<>> remembered_;
};

}  // namespace context_delta::indexer
