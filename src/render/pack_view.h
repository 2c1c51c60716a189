#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "utils/json.h"

/// A delta context pack as records: what every format reads instead of the mapping.
namespace context_delta::render {

struct FileRow {
  std::string path;
  std::string status;
  std::optional<std::string> old_path;
  std::int64_t additions = 0;
  std::int64_t deletions = 0;
  std::int64_t symbols = 0;
  std::int64_t references = 0;
};

struct SymbolRow {
  std::string fqn;
  std::string kind;
  std::string file;
  std::int64_t line = 0;
  std::int64_t end_line = 0;
  std::string status;
  std::string signature;  ///< empty when the pack has none
};

struct CallerRow {
  std::string fqn;
  std::string kind;
  std::string file;
  std::int64_t line = 0;
  std::int64_t call_line = 0;
  std::string calls;
  std::string relation;  ///< of guessed callers only, like reason
  std::string reason;
};

struct SnippetRow {
  std::string file;
  std::int64_t line = 0;
  std::int64_t end_line = 0;
  std::string content;  ///< as the pack has it: lines are joined by line feeds
};

struct WikiRow {
  std::string page;
  std::string title;
  std::vector<std::string> sources;
  bool stale = false;
  std::string reason;
  std::string stale_source;  ///< the source that changed last; empty when none made it stale
  std::string changed_in;    ///< the commit of that change, like stale_source
};

struct PackView {
  std::optional<std::string> base_branch;
  std::optional<std::string> target_branch;
  std::int64_t commit_count = 0;
  std::int64_t total_changed_files = 0;
  std::int64_t excluded_files = 0;
  std::vector<FileRow> files;
  std::vector<SymbolRow> symbols;
  std::vector<CallerRow> callers;
  std::vector<CallerRow> neighbours;
  std::vector<SnippetRow> snippets;
  std::int64_t tokens_used = 0;
  std::int64_t total_changed_symbols = 0;
  std::int64_t files_omitted = 0;
  std::int64_t symbols_omitted = 0;
  std::int64_t callers_omitted = 0;
  std::int64_t neighbours_omitted = 0;
  std::vector<WikiRow> wiki_pages;
  std::optional<std::string> message;
  std::optional<std::string> warning;
  std::optional<std::string> error;
};

/// Turns the text of a row into what the format can show safely.
using TextFilter = std::function<std::string(std::string_view)>;

/// Reads a pack of any of its three shapes. Keys that are missing, or hold a value of another
/// type, read as absent. Every string but SnippetRow::content goes through `filter`.
PackView read_pack(const json::Mapping& pack, const TextFilter& filter);

/// A budget with which the pack would leave little out, rounded up; null when nothing is left out.
/// An estimate: rows not shown are taken to cost as much as those shown.
std::optional<std::int64_t> sufficient_budget(const json::Mapping& pack);

}  // namespace context_delta::render
