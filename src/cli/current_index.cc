#include "cli/current_index.h"

#include <chrono>
#include <utility>

#include "cli/interruption.h"
#include "cli/progress.h"
#include "cli/report.h"
#include "cli/terminal.h"
#include "workers/branch_names.h"

namespace context_delta::cli {
namespace {

indexer::UpdateReport update(storage::Repository& repository, const git_utils::Git& git,
                             const std::string& commit, const Settings& settings) {
  using Clock = std::chrono::steady_clock;
  Progress progress(errors_are_terminal(), Clock::now());
  const DeferredSignals signals;
  indexer::UpdateOptions options;
  options.threads = settings.jobs;
  options.cancelled = signals.arrived();
  if (!settings.quiet) {
    options.progress = [&](std::string_view phase, std::int64_t done, std::int64_t total) {
      const std::string text = progress.update(phase, done, total, Clock::now());
      if (!text.empty()) write_error_text(text);
    };
  }
  try {
    indexer::UpdateReport result = indexer::update(repository, git, commit, options);
    write_error_text(progress.finish());
    return result;
  } catch (...) {
    write_error_text(progress.finish());
    // An interrupt from the keyboard reaches the git processes too, which then fail first.
    if (*signals.arrived()) throw indexer::Cancelled();
    throw;
  }
}

void remark(const indexer::UpdateReport& report, const std::string& commit,
            const std::filesystem::path& path) {
  cli::report("index " + path.string() + " answers for " + commit.substr(0, 12) +
              (report.up_to_date ? " already"
                                 : ": " + std::to_string(report.files) + " files, " +
                                       std::to_string(report.parsed) + " parsed, " +
                                       std::to_string(report.reused) + " known before, " +
                                       std::to_string(report.resolved) + " resolved"));
}

}  // namespace

std::filesystem::path index_path(const git_utils::Git& git, const Settings& settings) {
  return settings.index.value_or(storage::default_index_path(git.common_directory()));
}

services::Update updater(const Settings& settings) {
  return [&settings](storage::Repository& repository, const git_utils::Git& git,
                     const std::string& commit) {
    indexer::UpdateReport report = update(repository, git, commit, settings);
    if (settings.verbose) remark(report, commit, index_path(git, settings));
    return report;
  };
}

services::IndexAt open_index(const git_utils::Git& git, const Settings& settings) {
  const std::filesystem::path path = index_path(git, settings);
  if (!settings.at) return services::open_current_index(git, path, updater(settings));
  return services::open_index_at(git, path, git_history::find_commit(git, *settings.at, "--at"),
                                 updater(settings));
}

}  // namespace context_delta::cli
