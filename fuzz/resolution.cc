#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/require.h"
#include "indexer/parse/parsing.h"
#include "indexer/rows/catalogue.h"
#include "indexer/rows/file_rows.h"
#include "indexer/world/stale_keys.h"
#include "storage/schema.h"
#include "support/memory_source.h"

// A small repository, and the same with one file changed: what an update would not resolve again
// must be as before. The input is the number of the changed file, its new text, then path and text
// of each file, divided by zero bytes; a file without text is not there.
using namespace context_delta;
using indexer::DefinitionIndex;
using indexer::FileRows;
using tests::MemorySource;

namespace {

constexpr std::size_t MOST_FILES = 8;

using Texts = std::map<std::string, std::string_view>;

void fill(MemorySource& source, const Texts& texts) {
  static indexer::TextParser parser(nullptr);
  for (const auto& [path, text] : texts) {
    const auto claimants = indexer::claimants(indexer::languages(), path);
    if (text.empty() || claimants.empty()) continue;
    indexer::ParsedText parsed = parser.parse(claimants, text);
    if (parsed.language == nullptr || parsed.problem) continue;
    source.add(path, *parsed.language, std::move(parsed.facts));
  }
}

FileRows resolved(const MemorySource::Entry& entry, indexer::World& world) {
  world.start_record(entry.file.family);
  const indexer::Resolution resolution = entry.language->resolve(entry.file, *entry.facts, world);
  FileRows rows = file_rows(entry.file, entry.facts, resolution);
  rows.dependencies = world.finish_record();
  return rows;
}

std::vector<std::int64_t> callees_of(const FileRows& rows, const FileRows::Call& call) {
  if (call.dispatch < 0) return {call.callee};
  return rows.dispatches[static_cast<std::size_t>(call.dispatch)];
}

/// A file's rows as the index holds them, with paths in place of ids. `numbers`: the new indexes
/// of the definitions of `changed`.
std::string written(const MemorySource& source, const FileRows& rows, const std::string& changed,
                    const std::vector<DefinitionIndex>* numbers) {
  std::map<std::int64_t, std::string> paths;
  for (const auto& [path, entry] : source.files()) paths[entry.file.id] = path;
  std::string text;
  const auto add = [&](auto... fields) {
    ((text += std::to_string(fields) + " "), ...);
    text += '\n';
  };
  for (const auto& each : rows.scopes) {
    text += "scope " + each.container + " | " + each.qualifier + " " + (each.whole ? "!" : "");
    text += '\n';
  }
  for (const auto& each : rows.calls) {
    std::set<std::pair<std::string, std::int64_t>> callees;
    for (const std::int64_t symbol : callees_of(rows, each)) {
      const std::string& path = paths.at(symbol >> storage::SYMBOL_BITS);
      std::int64_t callee = (symbol & storage::MOST_SYMBOLS) - 1;
      if (numbers != nullptr && path == changed) {
        callee = (*numbers)[static_cast<std::size_t>(callee)];
      }
      callees.emplace(path, callee);
    }
    for (const auto& [path, callee] : callees) {
      text += "call " + path + " " + std::string(each.rule) + " " + std::string(each.why) + " ";
      add(callee, each.caller, each.line, each.proven, each.candidates, each.rank);
    }
  }
  for (const auto& each : rows.uses) {
    text += "use " + paths.at(each.file) + " ";
    add(each.count);
  }
  for (const std::uint32_t key : rows.dependencies) add(key);
  return text;
}

/// What an update learns of the change of one file.
struct Change {
  std::string path;
  indexer::StaleKeys stale;
  std::vector<DefinitionIndex> numbers;

  Change(std::string changed, MemorySource& before, MemorySource& after) : path(changed) {
    const auto was = before.files().find(changed);
    const auto is = after.files().find(changed);
    const bool had = was != before.files().end();
    const bool has = is != after.files().end();
    if (had && has && was->second.language == is->second.language) {
      numbers =
          compare_facts(is->second.file, *was->second.interface, *is->second.interface, stale);
      return;
    }
    if (had) {
      add_whole_file(was->second.file, *was->second.interface, stale);
      numbers.assign(was->second.facts->definitions.size(), indexer::NOWHERE);
    }
    if (has) add_whole_file(is->second.file, *is->second.interface, stale);
  }

  bool reaches(const MemorySource& source, const FileRows& rows) const {
    if (stale.meet(indexer::pack_keys(rows.dependencies))) return true;
    const auto file = source.files().find(path);
    if (file == source.files().end()) return false;
    for (const auto& each : rows.calls) {
      for (const std::int64_t symbol : callees_of(rows, each)) {
        if (symbol >> storage::SYMBOL_BITS != file->second.file.id) continue;
        const std::int64_t callee = (symbol & storage::MOST_SYMBOLS) - 1;
        if (numbers.at(static_cast<std::size_t>(callee)) == indexer::NOWHERE) return true;
      }
    }
    return false;
  }
};

void try_change(Texts texts, const std::string& changed, std::string_view new_text) {
  MemorySource before, after;
  fill(before, texts);
  texts[changed] = new_text;
  fill(after, texts);
  const Change change(changed, before, after);
  indexer::World shared_before(before), shared_after(after);
  for (const auto& [path, entry] : after.files()) {
    const FileRows now = resolved(entry, shared_after);
    const std::string rows = written(after, now, changed, nullptr);
    indexer::World own(after);
    fuzz::require(rows == written(after, resolved(entry, own), changed, nullptr),
                  "a file is resolved alike whatever was resolved before it");
    const auto old = before.files().find(path);
    if (path == changed || old == before.files().end()) continue;
    const FileRows then = resolved(old->second, shared_before);
    if (change.reaches(before, then)) continue;
    const std::string kept = written(before, then, changed, &change.numbers);
    if (kept == rows) continue;
    fuzz::require(false, "what a change does not reach stays: " + path + "\nkept\n" + kept +
                             "\nshould be\n" + rows);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::text_of(data, size);
  const std::size_t number = fuzz::take_byte(input);
  const std::string_view new_text = fuzz::take_part(input, '\0');
  Texts texts;
  std::vector<std::string> paths;
  while (!input.empty() && paths.size() < MOST_FILES) {
    paths.emplace_back(fuzz::take_part(input, '\0'));
    texts[paths.back()] = fuzz::take_part(input, '\0');
  }
  if (!paths.empty()) try_change(std::move(texts), paths[number % paths.size()], new_text);
  return 0;
}
