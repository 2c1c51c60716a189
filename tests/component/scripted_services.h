#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "utils/json.h"

namespace context_delta::test {

// Opaque values are one-field types of their own: the component can only hand them back.
struct Commit {
  std::string text;
  friend bool operator==(const Commit&, const Commit&) = default;
};
struct Database {
  std::string text;
};
struct RepositoryHandle {
  Database db;
};
struct Root {
  std::string text;
};
struct Ranges {
  std::string text;
};
struct Kinds {
  std::string text;
};
struct Id {
  std::int64_t number = 0;
  friend auto operator<=>(const Id&, const Id&) = default;
};

struct FileChange {
  std::string path;
  std::string status = "modified";
  std::int64_t additions = 0;
  std::int64_t deletions = 0;
};
struct LineSpan {
  std::int64_t start = 1;
  std::int64_t end = 1;
};
struct FileImpact {
  std::int64_t references = 0;
  std::int64_t symbols = 0;
  std::optional<std::string> language;
};
struct SymbolOnLines {
  Id id;
  std::string path;
  std::int64_t start_line = 1;
  std::int64_t end_line = 1;
  std::string fqn = {}, name = {}, kind = "function";
  std::optional<std::string> signature = {};
};
struct Caller {
  Id of;
  std::int64_t total = 1;
  std::string fqn = {}, name = {}, kind = "function", path = {};
  std::int64_t line = 1, call_line = 1;
};
struct BranchChanges {
  std::vector<FileChange> files;
  std::string base_branch = "main";
  std::string head_branch = "topic";
  std::int64_t commit_count = 1;
  Commit base_commit{"base"};
  Commit head_commit{"head"};
  std::optional<std::string> note;
};
struct GitHistoryError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
struct ShallowError : GitHistoryError {
  using GitHistoryError::GitHistoryError;
};

}  // namespace context_delta::test

template <>
struct std::hash<context_delta::test::Id> {
  std::size_t operator()(const context_delta::test::Id& id) const {
    return std::hash<std::int64_t>()(id.number);
  }
};

namespace context_delta::test {

/// What the scripted services answer.
struct World {
  BranchChanges changes;
  Commit checked_out{"head"};
  std::unordered_map<std::string, FileImpact> impact;
  std::set<std::string> not_source;
  std::unordered_map<std::string, std::vector<LineSpan>> spans;
  std::vector<SymbolOnLines> symbols;
  std::optional<std::int64_t> symbol_total;  ///< null: as many as the paths have
  std::vector<Caller> proven, guessed;
  std::unordered_map<std::string, std::string> texts;
  json::List pages;
  /// The operation that throws, if any, and what it throws.
  std::string failing;
  std::function<void()> failure;
};

/// Exactly the operations of the contract, answered from a World. Every call writes one line into
/// the transcript. A token is a byte of the text priced.
class ScriptedServices {
 public:
  using Repository = RepositoryHandle;
  using RepoRoot = Root;
  using Branch = std::string;
  using Commit = test::Commit;
  using BranchChanges = test::BranchChanges;
  using FileChange = test::FileChange;
  using SymbolOnLines = test::SymbolOnLines;
  using Caller = test::Caller;
  using Path = std::string;
  using Impact = std::unordered_map<std::string, FileImpact>;
  using Language = std::optional<std::string>;
  using Spans = std::unordered_map<std::string, std::vector<LineSpan>>;
  using LineRanges = Ranges;
  using Kinds = test::Kinds;
  using SymbolId = Id;
  using WikiLens = const std::string*;
  using Pages = json::List;
  using Value = json::Value;
  using Row = json::Mapping;
  using Integer = std::int64_t;
  using Flag = bool;
  using GitHistoryError = test::GitHistoryError;

  explicit ScriptedServices(const World& world) : world_(world) {}

  const BranchChanges& branch_changes(const Root& root, const std::optional<std::string>& base,
                                      const std::optional<std::string>& target,
                                      std::string_view name);
  Commit resolve_commit(const Root& root, std::string_view revision);
  const Spans& changed_line_spans(const Root& root, const Commit& base, const Commit& head,
                                  const std::vector<FileChange>& files, bool merge_base);
  bool is_source_path(const std::string& path, const Language& language);
  Ranges line_ranges(const Spans& spans, const std::vector<std::string>& paths);
  json::Mapping change_row(const FileChange& change);
  Kinds change_kinds() const { return {"KINDS"}; }
  std::int64_t symbols_per_row() const { return 50; }
  const Impact& file_impact(const Database& db, const std::vector<std::string>& paths);
  std::vector<SymbolOnLines> symbols_on_lines(const Database& db, const Ranges& ranges,
                                              const Kinds& kinds, std::int64_t per_file);
  std::int64_t count_symbols_on_lines(const Database& db, const Ranges& ranges, const Kinds& kinds);
  std::vector<Caller> callers_of(const RepositoryHandle& repository, const std::vector<Id>& ids,
                                 bool guessed, std::int64_t limit);
  std::int64_t estimate_tokens(std::string_view text);
  std::optional<std::string> read_repo_text(const Root& root, const std::string& path,
                                            std::int64_t most_characters);
  json::Mapping guessed_caller_row(const Caller& caller);

  template <class Paths>
  json::List pages_citing(const std::string* lens, Paths& paths) {
    std::string line = "pages_citing " + *lens;
    while (const auto path = paths.next()) line += " " + *path;
    write(line);
    return world_.pages;
  }

  /// One line per call; prices of rows are left out unless asked for.
  std::vector<std::string> transcript;
  bool write_prices = false;

 private:
  void write(const std::string& line);
  const World& world_;
};

}  // namespace context_delta::test
