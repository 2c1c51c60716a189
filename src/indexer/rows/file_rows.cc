#include "indexer/rows/file_rows.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>

#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

const Definition& definition_at(const Facts& facts, DefinitionIndex index) {
  return facts.definitions[static_cast<std::size_t>(index)];
}

bool is_caller(Kind kind) {
  return kind != Kind::NAMESPACE && kind != Kind::TYPE && kind != Kind::VARIABLE;
}

DefinitionIndex caller_of(const Facts& facts, DefinitionIndex enclosing) {
  while (enclosing != NOWHERE && !is_caller(definition_at(facts, enclosing).kind)) {
    enclosing = definition_at(facts, enclosing).parent;
  }
  return enclosing;
}

void add_scopes(FileRows& rows, const File& file, const Resolution& resolution) {
  const Facts& facts = *rows.facts;
  const std::string& module = resolution.module_name;
  rows.scopes.push_back({"", module.empty() ? file.path : module, true});
  using Key = std::tuple<DefinitionIndex, std::string_view, std::string_view, bool>;
  std::map<Key, std::uint32_t> numbers;
  for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
    const Definition& definition = facts.definitions[i];
    std::string_view qualifier = definition.name;
    if (i < resolution.qualified_names.size()) qualifier = resolution.qualified_names[i];
    const bool whole = !qualifier.ends_with(definition.name);
    if (!whole) qualifier.remove_suffix(definition.name.size());
    const auto [place, added] =
        numbers.try_emplace({definition.parent, definition.scope, qualifier, whole},
                            static_cast<std::uint32_t>(rows.scopes.size()));
    if (added) {
      rows.scopes.push_back(
          {container_name(facts, static_cast<DefinitionIndex>(i)), std::string(qualifier), whole});
    }
    rows.scopes_of.push_back(place->second);
  }
}

/// Cuts the lines of inner symbols out of those of outer ones.
class SegmentCutter {
 public:
  explicit SegmentCutter(FileRows& rows)
      : rows_(rows), next_lines_(rows.facts->definitions.size()) {}

  void cut() {
    const Facts& facts = *rows_.facts;
    const auto count = static_cast<DefinitionIndex>(facts.definitions.size());
    for (DefinitionIndex i = 0; i < count; ++i) {
      const Definition& definition = definition_at(facts, i);
      next_lines_[static_cast<std::size_t>(i)] = definition.first_line;
      if (!is_change_kind(definition.kind)) continue;
      ++rows_.symbols;
      const DefinitionIndex outer = outer_symbol(definition.parent);
      if (outer != NOWHERE) take_out(outer, definition);
    }
    for (DefinitionIndex i = 0; i < count; ++i) {
      if (is_change_kind(definition_at(facts, i).kind)) {
        add(i, definition_at(facts, i).last_line);
      }
    }
    // As the table keeps them: rows in order are cheaper to insert.
    std::sort(rows_.segments.begin(), rows_.segments.end(), [](const auto& a, const auto& b) {
      return std::tie(a.last_line, a.definition) < std::tie(b.last_line, b.definition);
    });
  }

 private:
  DefinitionIndex outer_symbol(DefinitionIndex index) const {
    while (index != NOWHERE && !is_change_kind(definition_at(*rows_.facts, index).kind)) {
      index = definition_at(*rows_.facts, index).parent;
    }
    return index;
  }
  /// The line on which the outer one starts stays its own as well.
  void take_out(DefinitionIndex outer, const Definition& inner) {
    const Definition& around = definition_at(*rows_.facts, outer);
    add(outer, std::min(std::max(inner.first_line - 1, around.first_line), around.last_line));
    std::int32_t& next = next_lines_[static_cast<std::size_t>(outer)];
    next = std::max(next, inner.last_line + 1);
  }
  void add(DefinitionIndex index, std::int32_t last_line) {
    const std::int32_t first_line = next_lines_[static_cast<std::size_t>(index)];
    if (first_line <= last_line) rows_.segments.push_back({first_line, last_line, index});
  }

  FileRows& rows_;
  std::vector<std::int32_t> next_lines_;  // for each definition, the first line not yet given away
};

std::int64_t symbol_at(const Place& place) {
  return storage::symbol_id(place.file->id, place.definition + 1);
}

void add_edges(FileRows& rows, const File& file, const Resolution& resolution) {
  const Facts& facts = *rows.facts;
  std::map<std::int64_t, std::int64_t> uses;
  for (const Edge& edge : resolution.edges) {
    if (edge.target.file == nullptr || edge.target.definition < 0) continue;
    const Reference& reference = facts.references.at(static_cast<std::size_t>(edge.reference));
    const bool counts = edge.proven && edge.rule != CONSTRUCTION;
    if (counts && edge.target.file->id != file.id) ++uses[edge.target.file->id];
    const bool dispatched = edge.dispatch >= 0;
    if (!is_call(reference.role)) continue;
    rows.calls.push_back({.caller = caller_of(facts, reference.enclosing),
                          .line = reference.line,
                          .callee = dispatched ? 0 : symbol_at(edge.target),
                          .dispatch = edge.dispatch,
                          .proven = edge.proven,
                          .rule = edge.rule,
                          .why = edge.why,
                          .candidates = edge.candidates,
                          .rank = edge.rank});
  }
  for (const auto& [target, count] : uses) rows.uses.push_back({target, count});
  for (const Dispatch& each : resolution.dispatches) {
    std::vector<std::int64_t>& symbols = rows.dispatches.emplace_back();
    for (const Place& target : each) symbols.push_back(symbol_at(target));
    std::sort(symbols.begin(), symbols.end());
  }
}

}  // namespace

bool is_change_kind(Kind kind) { return kind != Kind::NAMESPACE; }

FileRows file_rows(const File& file, std::shared_ptr<const Facts> facts,
                   const Resolution& resolution) {
  FileRows rows;
  rows.facts = std::move(facts);
  add_scopes(rows, file, resolution);
  SegmentCutter(rows).cut();
  add_edges(rows, file, resolution);
  return rows;
}

}  // namespace context_delta::indexer
