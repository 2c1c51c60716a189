#include "indexer/run/update_run.h"

#include <algorithm>
#include <thread>

#include "indexer/rows/compression.h"
#include "indexer/run/pipeline.h"
#include "indexer/world/stale_keys.h"
#include "storage/schema.h"

namespace context_delta::indexer {
namespace {

using storage::Statement;
using storage::SYMBOL_BITS;
using storage::symbol_id;

/// Results that a thread may run ahead of the writer.
constexpr std::size_t WINDOW = 64;

/// Facts of blobs that no file has are kept for the next switch of branches, up to this many times
/// the files.
constexpr std::int64_t MOST_BLOBS_A_FILE = 4;
constexpr std::int64_t LEAST_BLOBS_KEPT = 2000;

constexpr std::string_view MISSING = "the object is not in the repository";

void name_language(File& file, const Language& language) {
  file.language = language.name;
  file.family = language.family;
}

bool is_identity(const std::vector<DefinitionIndex>& numbers) {
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (numbers[i] != static_cast<DefinitionIndex>(i)) return false;
  }
  return true;
}

}  // namespace

/// Reads and parses on one thread.
class UpdateRun::JobWorker {
 public:
  explicit JobWorker(UpdateRun& run) : run_(run), parser_(run.options_.cancelled) {}

  JobResult operator()(std::size_t index) {
    run_.check_cancelled();
    const Job& job = run_.jobs_[index];
    const CatalogueFile& file = run_.catalogue_.files[job.files.front()];
    JobResult result;
    if (job.stored) {
      if (file.is_indexed()) result.definitions = defined(*run_.facts_.load_shared(file.blob));
      return result;
    }
    parse(file, result);
    run_.check_cancelled();
    result.encoded = encode_facts(result.parsed.facts);
    result.compressed = {compressed(result.encoded.shared), compressed(result.encoded.references)};
    result.definitions = defined(result.parsed.facts);
    result.parsed.facts = {};
    return result;
  }

 private:
  void parse(const CatalogueFile& file, JobResult& result) {
    const std::int64_t most = run_.options_.most_file_bytes;
    if (file.bytes > most) {
      result.parsed.problem = "larger than " + std::to_string(most) + " bytes";
      return;
    }
    if (!reader_) reader_.emplace(run_.git_);
    const auto text = reader_->read(hexadecimal(file.object), most);
    if (text) {
      result.parsed = parser_.parse(file.claim->languages, *text);
    } else {
      result.missing = true;
      result.parsed.problem = MISSING;
    }
  }

  UpdateRun& run_;
  TextParser parser_;
  std::optional<git_utils::BlobReader> reader_;
};

/// Applies the rules of languages on one thread.
class UpdateRun::ResolveWorker {
 public:
  explicit ResolveWorker(UpdateRun& run)
      : run_(run),
        source_(std::make_unique<IndexSource>(run.database_, run.lock_, run.catalogue_, run.names_,
                                              run.facts_)),
        world_(std::make_unique<World>(*source_)) {}

  FileRows operator()(const CatalogueFile& file) {
    run_.check_cancelled();
    const Language* language = run_.by_id_.at(file.language);
    auto facts = run_.facts_.load(file.blob);
    world_->start_record(file.file.family);
    const Resolution resolution = language->resolve(file.file, *facts, *world_);
    FileRows rows = file_rows(file.file, std::move(facts), resolution);
    rows.dependencies = world_->finish_record();
    return rows;
  }

 private:
  UpdateRun& run_;
  std::unique_ptr<IndexSource> source_;
  std::unique_ptr<World> world_;
};

UpdateRun::UpdateRun(const storage::Database& database, const git_utils::Git& git,
                     const std::vector<git_utils::TreeFile>& tree,
                     std::span<const Language* const> languages, const UpdateOptions& options,
                     bool rebuild)
    : database_(database),
      git_(git),
      options_(options),
      languages_(languages),
      catalogue_(database, languages, tree, rebuild),
      writer_(database),
      facts_(database, lock_),
      to_resolve_(catalogue_.files.size()) {}

void UpdateRun::run() {
  if (catalogue_.rebuilt) writer_.clear();
  load_languages();
  make_jobs();
  parse();
  catalogue_.prepare_look_up();
  for (std::size_t i = 0; i < catalogue_.files.size(); ++i) {
    to_resolve_[i] = catalogue_.files[i].changed && catalogue_.files[i].is_indexed();
  }
  if (!catalogue_.rebuilt) {
    collect_stale();
    choose_dependents();
    renumber();
    remove_left();
  }
  resolve();
  write_rest();
}

UpdateReport UpdateRun::report() const {
  UpdateReport report = report_;
  for (const CatalogueFile& file : catalogue_.files) {
    if (file.is_indexed()) ++report.files;
    if (file.problem) report.skipped.push_back({file.file.path, *file.problem});
  }
  return report;
}

void UpdateRun::load_languages() {
  for (const Language* language : languages_) {
    by_id_[writer_.language_id(language->name)] = language;
  }
  for (CatalogueFile& file : catalogue_.files) {
    const auto language = by_id_.find(file.language);
    if (language != by_id_.end()) name_language(file.file, *language->second);
  }
}

void UpdateRun::make_jobs() {
  std::map<std::pair<std::string_view, std::int64_t>, std::size_t> places;
  for (std::uint32_t i = 0; i < catalogue_.files.size(); ++i) {
    CatalogueFile& file = catalogue_.files[i];
    if (!file.changed) continue;
    const bool stored = find_stored(file);
    const auto [place, added] = places.try_emplace({file.object, file.claim->id}, jobs_.size());
    if (added) jobs_.push_back({{}, stored});
    jobs_[place->second].files.push_back(i);
  }
}

bool UpdateRun::find_stored(CatalogueFile& file) {
  Statement row(database_,
                "SELECT id, coalesce(language, 0), problem FROM blobs "
                "WHERE object = ?1 AND claim = ?2");
  if (!row.bind_blob(1, file.object).bind(2, file.claim->id).step()) return false;
  file.blob = row.integer(0);
  file.language = row.integer(1);
  if (file.language != 0) name_language(file.file, *by_id_.at(file.language));
  if (!row.is_null(2)) file.problem = std::string(row.text(2));
  return true;
}

void UpdateRun::parse() {
  run_pipeline<JobResult>(
      jobs_.size(), threads(), WINDOW, [&] { return JobWorker(*this); },
      [&](std::size_t index, JobResult result) {
        check_cancelled();
        take_parsed(jobs_[index], std::move(result));
        progress("parsing", index + 1, jobs_.size());
      });
  names_.sort();
}

void UpdateRun::take_parsed(const Job& job, JobResult result) {
  const std::lock_guard guard(lock_);
  for (const std::uint32_t index : job.files) names_.add(index, result.definitions);
  if (job.stored) {
    ++report_.reused;
    for (const std::uint32_t i : job.files) writer_.use_blob(catalogue_.files[i].blob);
    return;
  }
  CatalogueFile& first = catalogue_.files[job.files.front()];
  set_language(first, result.parsed.language);
  first.problem = result.parsed.problem;
  if (!result.missing) {
    first.blob = writer_.add_blob(first, result.compressed);
    facts_.keep(first.blob, std::move(result.encoded));
  }
  if (!first.problem && first.language != 0) ++report_.parsed;
  for (const std::uint32_t index : job.files) {
    CatalogueFile& file = catalogue_.files[index];
    file.file.language = first.file.language;
    file.file.family = first.file.family;
    file.language = first.language;
    file.problem = first.problem;
    file.blob = first.blob;
  }
}

void UpdateRun::set_language(CatalogueFile& file, const Language* language) {
  // A text that was not read is in the only language that claims its name.
  if (language == nullptr && file.claim->languages.size() == 1) {
    language = file.claim->languages.front();
  }
  if (language == nullptr) return;
  name_language(file.file, *language);
  for (const auto& [id, known] : by_id_) {
    if (known == language) file.language = id;
  }
}

void UpdateRun::collect_stale() {
  for (const OldFile* file : catalogue_.removed) {
    if (!file->is_indexed()) continue;
    const auto facts = facts_.load_shared(file->blob);
    add_whole_file(file_of(*file), *facts, stale_);
    numbers_[file->id].assign(facts->definitions.size(), NOWHERE);
  }
  for (const CatalogueFile& file : catalogue_.files) {
    if (file.changed) collect_stale_of(file);
  }
}

File UpdateRun::file_of(const OldFile& old) const {
  File file = {.id = old.id, .path = old.path, .language = {}, .family = {}};
  const auto language = by_id_.find(old.language);
  if (language != by_id_.end()) name_language(file, *language->second);
  return file;
}

void UpdateRun::collect_stale_of(const CatalogueFile& file) {
  const bool was_indexed = file.before != nullptr && file.before->is_indexed();
  const auto before = was_indexed ? facts_.load_shared(file.before->blob) : nullptr;
  const auto after = file.is_indexed() ? facts_.load_shared(file.blob) : nullptr;
  if (before && after && file.before->language == file.language) {
    auto numbers = compare_facts(file.file, *before, *after, stale_);
    if (!is_identity(numbers)) numbers_[file.file.id] = std::move(numbers);
    return;
  }
  if (before) {
    add_whole_file(file_of(*file.before), *before, stale_);
    numbers_[file.file.id].assign(before->definitions.size(), NOWHERE);
  }
  if (after) add_whole_file(file.file, *after, stale_);
}

void UpdateRun::choose_dependents() {
  Statement row(database_, "SELECT file, dependencies FROM resolutions");
  while (!stale_.empty() && row.step()) {
    const auto index = catalogue_.index_of(row.integer(0));
    if (index && !catalogue_.files[*index].changed && stale_.meet(row.blob(1))) {
      to_resolve_[*index] = true;
    }
  }
  for (const auto& [file, numbers] : numbers_) follow_calls_into(file, numbers);
}

void UpdateRun::follow_calls_into(std::int64_t file, const std::vector<DefinitionIndex>& numbers) {
  Statement row(database_,
                "SELECT callee, caller >> ?3 FROM calls WHERE callee >= ?1 AND callee < ?2");
  row.bind(1, symbol_id(file, 0)).bind(2, symbol_id(file + 1, 0)).bind(3, SYMBOL_BITS);
  while (row.step()) {
    const auto caller = catalogue_.index_of(row.integer(1));
    if (!caller || catalogue_.files[*caller].changed) continue;
    const auto number = static_cast<std::size_t>((row.integer(0) & storage::MOST_SYMBOLS) - 1);
    // A rule that asked nothing about this definition cannot be told by the keys.
    if (number >= numbers.size() || numbers[number] == NOWHERE) to_resolve_[*caller] = true;
    callers_[file].insert(row.integer(1));
  }
  for (const std::int64_t caller : writer_.callers_of_lost(file, numbers)) {
    const auto index = catalogue_.index_of(caller);
    if (index && !catalogue_.files[*index].changed) to_resolve_[*index] = true;
  }
}

void UpdateRun::renumber() {
  for (const auto& [file, callers] : callers_) {
    std::vector<std::int64_t> kept;
    for (const std::int64_t caller : callers) {
      if (!to_resolve_[*catalogue_.index_of(caller)]) kept.push_back(caller);
    }
    if (!kept.empty()) writer_.renumber(file, numbers_.at(file), kept);
  }
  for (const auto& [file, numbers] : numbers_) writer_.renumber_dispatches(file, numbers);
}

void UpdateRun::remove_left() {
  for (const OldFile* file : catalogue_.removed) {
    forget_uses(file->id);
    writer_.remove(*file);
  }
  for (CatalogueFile& file : catalogue_.files) {
    if (file.before == nullptr || !file.changed || file.is_indexed()) continue;
    forget_uses(file.file.id);
    writer_.write_empty(file.file.id);
    file.symbols = 0;
  }
}

void UpdateRun::resolve() {
  std::vector<std::uint32_t> indexes;
  for (std::uint32_t i = 0; i < to_resolve_.size(); ++i) {
    if (to_resolve_[i]) indexes.push_back(i);
  }
  const auto make_worker = [&] {
    return [&, worker = std::make_shared<ResolveWorker>(*this)](std::size_t index) {
      return (*worker)(catalogue_.files[indexes[index]]);
    };
  };
  run_pipeline<FileRows>(indexes.size(), threads(), WINDOW, make_worker,
                         [&](std::size_t index, const FileRows& rows) {
                           check_cancelled();
                           take_resolved(catalogue_.files[indexes[index]], rows);
                           progress("resolving", index + 1, indexes.size());
                         });
}

void UpdateRun::take_resolved(CatalogueFile& file, const FileRows& rows) {
  const std::lock_guard guard(lock_);
  ++report_.resolved;
  file.symbols = rows.symbols;
  if (file.before != nullptr) forget_uses(file.file.id);
  for (const Use& use : rows.uses) {
    catalogue_.files[*catalogue_.index_of(use.file)].references += use.count;
  }
  const std::int64_t changed = writer_.write_file(file, rows, file.changed, catalogue_.rebuilt);
  report_.edges += changed;
  if (file.changed) return;
  ++report_.again;
  if (changed == 0) ++report_.in_vain;
}

void UpdateRun::forget_uses(std::int64_t file) {
  for (const Use& use : writer_.uses_of(file)) {
    const auto target = catalogue_.index_of(use.file);
    if (target) catalogue_.files[*target].references -= use.count;
  }
}

void UpdateRun::write_rest() {
  for (const CatalogueFile& file : catalogue_.files) {
    if (file.changed || file.references != file.before->references) writer_.write_file_row(file);
  }
  progress("writing", 0, 1);
  if (catalogue_.rebuilt) {
    storage::create_indexes(database_);
    check_cancelled();
    writer_.write_all_calls();
  }
  writer_.drop_unused_dispatches();
  leave_blobs();
  drop_unused_facts();
  progress("writing", 1, 1);
  check_cancelled();
}

void UpdateRun::leave_blobs() {
  std::set<std::int64_t> left;
  for (const OldFile* file : catalogue_.removed) left.insert(file->blob);
  for (const CatalogueFile& file : catalogue_.files) {
    if (file.before != nullptr && file.changed) left.insert(file.before->blob);
  }
  if (left.empty()) return;
  for (const CatalogueFile& file : catalogue_.files) left.erase(file.blob);
  for (const std::int64_t blob : left) writer_.leave_blob(blob);
}

void UpdateRun::drop_unused_facts() {
  const auto files = static_cast<std::int64_t>(catalogue_.files.size());
  const std::int64_t most = MOST_BLOBS_A_FILE * files + LEAST_BLOBS_KEPT;
  const std::int64_t excess = database_.integer("SELECT count(*) FROM blobs") - most;
  if (excess <= 0) return;
  Statement(database_,
            "DELETE FROM blobs WHERE id IN "
            "(SELECT id FROM blobs WHERE unused <> 0 ORDER BY unused, id LIMIT ?1)")
      .bind(1, excess + most / 4)
      .run();
}

void UpdateRun::check_cancelled() const { context_delta::check_cancelled(options_.cancelled); }

void UpdateRun::progress(std::string_view phase, std::size_t done, std::size_t total) const {
  if (options_.progress) {
    options_.progress(phase, static_cast<std::int64_t>(done), static_cast<std::int64_t>(total));
  }
}

unsigned UpdateRun::threads() const {
  return options_.threads != 0 ? options_.threads
                               : std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace context_delta::indexer
