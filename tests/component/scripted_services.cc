#include "component/scripted_services.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "tool_handlers/context_delta/handler.h"

namespace context_delta::test {
namespace {

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// Ranges are the paths they were made of, so that the queries know what they are asked.
std::vector<std::string> split(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

static_assert(ContextServices<ScriptedServices>);

void ScriptedServices::write(const std::string& line) {
  transcript.push_back(line);
  if (!world_.failing.empty() && line.starts_with(world_.failing)) world_.failure();
}

const BranchChanges& ScriptedServices::branch_changes(const Root& root,
                                                      const std::optional<std::string>& base,
                                                      const std::optional<std::string>& target,
                                                      std::string_view name) {
  write("branch_changes " + root.text + " " + base.value_or("null") + " " +
        target.value_or("null") + " head_parameter=" + std::string(name));
  return world_.changes;
}

Commit ScriptedServices::resolve_commit(const Root& root, std::string_view revision) {
  write("resolve_commit " + root.text + " " + std::string(revision));
  return world_.checked_out;
}

const ScriptedServices::Spans& ScriptedServices::changed_line_spans(
    const Root& root, const Commit& base, const Commit& head, const std::vector<FileChange>& files,
    bool merge_base) {
  std::string line = "changed_line_spans " + root.text + " " + base.text + " " + head.text;
  for (const FileChange& file : files) line += " " + file.path;
  write(line + (merge_base ? " merge_base" : ""));
  return world_.spans;
}

bool ScriptedServices::is_source_path(const std::string& path, const Language& language) {
  write("is_source_path " + path + " " + language.value_or("null"));
  return !world_.not_source.contains(path);
}

Ranges ScriptedServices::line_ranges(const Spans&, const std::vector<std::string>& paths) {
  write("line_ranges " + joined(paths));
  return {joined(paths)};
}

json::Mapping ScriptedServices::change_row(const FileChange& change) {
  write("change_row " + change.path);
  return {{"path", change.path}, {"status", change.status}};
}

const ScriptedServices::Impact& ScriptedServices::file_impact(
    const Database& db, const std::vector<std::string>& paths) {
  write("file_impact " + db.text + " " + joined(paths));
  return world_.impact;
}

std::vector<SymbolOnLines> ScriptedServices::symbols_on_lines(const Database& db,
                                                              const Ranges& ranges,
                                                              const Kinds& kinds,
                                                              std::int64_t per_file) {
  write("symbols_on_lines " + db.text + " (" + ranges.text + ") " + kinds.text +
        " per_file=" + std::to_string(per_file));
  const auto paths = split(ranges.text);
  std::vector<SymbolOnLines> found;
  for (const SymbolOnLines& symbol : world_.symbols) {
    if (std::find(paths.begin(), paths.end(), symbol.path) != paths.end() ||
        symbol.path == "stray") {
      found.push_back(symbol);
    }
  }
  return found;
}

std::int64_t ScriptedServices::count_symbols_on_lines(const Database& db, const Ranges& ranges,
                                                      const Kinds& kinds) {
  write("count_symbols_on_lines " + db.text + " (" + ranges.text + ") " + kinds.text);
  if (world_.symbol_total) return *world_.symbol_total;
  const auto paths = split(ranges.text);
  return std::count_if(world_.symbols.begin(), world_.symbols.end(), [&](const auto& symbol) {
    return std::find(paths.begin(), paths.end(), symbol.path) != paths.end();
  });
}

std::vector<Caller> ScriptedServices::callers_of(const RepositoryHandle& repository,
                                                 const std::vector<Id>& ids, bool guessed,
                                                 std::int64_t limit) {
  std::string line = "callers_of " + repository.db.text + " [";
  for (const Id& id : ids) line += " " + std::to_string(id.number);
  write(line + " ] guessed=" + (guessed ? "true" : "false") + " limit=" + std::to_string(limit));
  std::vector<Caller> callers;
  for (const Caller& caller : guessed ? world_.guessed : world_.proven) {
    if (std::find(ids.begin(), ids.end(), caller.of) != ids.end() || caller.of.number < 0) {
      callers.push_back(caller);
    }
  }
  return callers;
}

std::int64_t ScriptedServices::estimate_tokens(std::string_view text) {
  if (write_prices) write("estimate_tokens " + std::string(text));
  return static_cast<std::int64_t>(text.size());
}

std::optional<std::string> ScriptedServices::read_repo_text(const Root& root,
                                                            const std::string& path,
                                                            std::int64_t most_characters) {
  write("read_repo_text " + root.text + " " + path + " " + std::to_string(most_characters));
  const auto found = world_.texts.find(path);
  if (found == world_.texts.end()) return std::nullopt;
  return found->second;
}

json::Mapping ScriptedServices::guessed_caller_row(const Caller& caller) {
  write("guessed_caller_row " + caller.fqn);
  return {{"fqn", caller.fqn}, {"relation", "namesake"}, {"reason", "one of 2"}};
}

}  // namespace context_delta::test

namespace context_delta {
template json::Mapping handle_build_delta_context_pack(test::ScriptedServices&,
                                                       const Request<test::ScriptedServices>&);
}
