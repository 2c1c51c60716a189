#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "python/integer.h"
#include "python/json_text.h"
#include "python/object.h"
#include "python/python_error.h"
#include "python/value.h"
#include "tool_handlers/context_delta/services.h"

namespace context_delta::python {

/// The component's services by the modules of the Python server that imported us. Modules, their
/// functions and constants are looked up at each call; SYMBOLS_PER_ROW was read when we were
/// loaded.
class HostServices {
 public:
  using Repository = Object;
  using RepoRoot = Object;
  using Branch = Object;
  using Commit = Object;
  using BranchChanges = Object;
  using FileChange = Object;
  using SymbolOnLines = Object;
  using Caller = Object;
  using Path = Object;
  using Impact = Object;
  using Language = Object;
  using Spans = Object;
  using LineRanges = Object;
  using Kinds = Object;
  using SymbolId = Object;
  using WikiLens = OptionalObject;
  using Pages = Object;
  using Value = python::Value;
  using Row = python::Row;
  using Integer = python::Integer;
  using Flag = Object;
  using GitHistoryError = HostGitHistoryError;

  explicit HostServices(Object symbols_per_row) : symbols_per_row_(std::move(symbols_per_row)) {}

  Object branch_changes(const Object& root, const std::optional<Object>& base_branch,
                        const std::optional<Object>& target_branch,
                        std::string_view head_parameter);
  Object resolve_commit(const Object& root, std::string_view revision);
  Object changed_line_spans(const Object& root, const Object& base_commit,
                            const Object& head_commit, const std::vector<Object>& files,
                            bool merge_base);
  bool is_source_path(const Object& path, const Object& language);
  Object line_ranges(const Object& spans, const std::vector<Object>& paths);
  Row change_row(const Object& change);
  Object change_kinds();
  Integer symbols_per_row() { return symbols_per_row_; }

  Object file_impact(const Object& db, const std::vector<Object>& paths);
  std::vector<Object> symbols_on_lines(const Object& db, const Object& ranges, const Object& kinds,
                                       const Integer& per_file);
  Integer count_symbols_on_lines(const Object& db, const Object& ranges, const Object& kinds);
  std::vector<Object> callers_of(const Object& repository, const std::vector<Object>& ids,
                                 bool guessed, const Integer& limit);

  Integer estimate_tokens(const Object& text);
  std::optional<std::string> read_repo_text(const Object& root, const Object& path,
                                            std::int64_t most_characters);
  Row guessed_caller_row(const Object& caller);
  Object pages_citing(const OptionalObject& lens, KeptPaths<HostServices>& paths);

 private:
  Object symbols_per_row_;
};

/// The server's SYMBOLS_PER_ROW; null when this process has no server's git service.
std::optional<Object> host_symbols_per_row();

/// The text of an exception, `str(error)`.
Object error_text(const HostGitHistoryError& error);

/// A value as it stands inside a message, `format(value)`.
std::string plain_text(const Object& value);

}  // namespace context_delta::python
