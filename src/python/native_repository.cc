#include "python/native_repository.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <optional>

#include "python/conversion.h"
#include "python/integer.h"
#include "python/python_error.h"
#include "workers/git_history.h"

namespace context_delta::python {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto BETWEEN_REPORTS = std::chrono::milliseconds(100);

/// Set while this thread updates an index: an update within it would wait for itself.
thread_local bool updating = false;

void check_not_updating() {
  if (!updating) return;
  throw std::runtime_error(
      "an index is being updated by this thread: progress callbacks cannot use a Repository");
}

struct Updating {
  Updating() {
    check_not_updating();
    updating = true;
  }
  ~Updating() { updating = false; }
};

/// Hands progress on to Python and notices KeyboardInterrupt. What Python raises is kept, since it
/// cannot pass through the indexer, which is told to stop instead.
class Reporter {
 public:
  explicit Reporter(const Object& progress) : progress_(progress) {}

  void report(std::string_view phase, std::int64_t done, std::int64_t total) {
    const auto now = Clock::now();
    if (raised_ || (phase == phase_ && now - last_ < BETWEEN_REPORTS)) return;
    phase_ = phase;
    last_ = now;
    const py::gil_scoped_acquire lock;
    try {
      if (PyErr_CheckSignals() != 0) throw_raised();
      if (progress_.is_none()) return;
      const Object name = new_string(std::string(phase));
      const Object count = Integer(done).object();
      const Object all = Integer(total).object();
      call(progress_, {name.ptr(), count.ptr(), all.ptr()});
    } catch (const PythonError& error) {
      raised_ = error;
      stopped_ = true;
    }
  }

  const std::atomic<bool>* stopped() const { return &stopped_; }

  void throw_what_was_raised() {
    if (raised_) throw *raised_;
  }

  ~Reporter() {
    const py::gil_scoped_acquire lock;
    raised_.reset();
  }

 private:
  const Object& progress_;
  std::string phase_;
  Clock::time_point last_ = {};
  std::optional<PythonError> raised_;
  std::atomic<bool> stopped_ = false;
};

git_history::LineRanges line_ranges(
    const std::map<std::string, std::vector<std::pair<std::int64_t, std::int64_t>>>& ranges) {
  git_history::LineRanges lines;
  for (const auto& [path, pairs] : ranges) {
    auto& spans = lines.emplace_back(path, std::vector<git_utils::LineSpan>()).second;
    for (const auto& [first, last] : pairs) spans.push_back({first, last});
  }
  return lines;
}

/// The interpreter lock must not be held.
indexer::UpdateReport update_index(storage::Repository& repository, const git_utils::Git& git,
                                   const std::string& commit, const Object& progress) {
  const Updating guard;
  Reporter reporter(progress);
  indexer::UpdateOptions options;
  options.progress = [&](std::string_view phase, std::int64_t done, std::int64_t total) {
    reporter.report(phase, done, total);
  };
  options.cancelled = reporter.stopped();
  try {
    indexer::UpdateReport report = indexer::update(repository, git, commit, options);
    const py::gil_scoped_acquire lock;
    reporter.throw_what_was_raised();
    return report;
  } catch (const PythonError&) {
    throw;
  } catch (...) {
    // An interrupt from the keyboard reaches the git processes too, which then fail first.
    const py::gil_scoped_acquire lock;
    reporter.throw_what_was_raised();
    if (PyErr_CheckSignals() != 0) throw_raised();
    throw;
  }
}

}  // namespace

services::Update updater(const Object& progress) {
  check_not_updating();
  return [&progress](storage::Repository& repository, const git_utils::Git& git,
                     const std::string& commit) {
    return update_index(repository, git, commit, progress);
  };
}

NativeRepository::NativeRepository(const Object& path, const Object& index) {
  const std::filesystem::path directory = path_of(path);
  if (!index.is_none()) db_.path = path_of(index);
  const py::gil_scoped_release unlocked;
  const git_utils::Git git(directory);
  root_ = git.root();
  common_directory_ = git.common_directory();
  if (db_.path.empty()) db_.path = storage::default_index_path(git.common_directory());
}

void NativeRepository::check_open() const {
  if (closed_) throw py::value_error("the repository " + root_.string() + " is closed");
}

indexer::UpdateReport NativeRepository::update(const Object& progress) const {
  check_open();
  const py::gil_scoped_release unlocked;
  const git_utils::Git git(root_);
  return services::open_current_index(git, db_.path, updater(progress)).report;
}

std::vector<storage::Caller> NativeRepository::callers_of(const std::vector<std::int64_t>& ids,
                                                          bool guessed, std::int64_t limit) const {
  check_open();
  const py::gil_scoped_release unlocked;
  return storage::Repository(db_.path).callers_of(ids, guessed, limit);
}

std::map<std::string, repository_changes::FileImpact> NativeRepository::file_impact(
    const std::vector<std::string>& paths) const {
  check_open();
  const py::gil_scoped_release unlocked;
  const auto impact = repository_changes::file_impact(storage::Repository(db_.path).db, paths);
  return {impact.begin(), impact.end()};
}

std::vector<repository_changes::SymbolOnLines> NativeRepository::symbols_on_lines(
    const std::map<std::string, std::vector<std::pair<std::int64_t, std::int64_t>>>& ranges,
    std::int64_t per_file) const {
  check_open();
  const py::gil_scoped_release unlocked;
  return repository_changes::symbols_on_lines(storage::Repository(db_.path).db, line_ranges(ranges),
                                              git_history::CHANGE_KINDS, per_file);
}

}  // namespace context_delta::python
