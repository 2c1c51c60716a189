#include <string_view>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/current_index.h"
#include "cli/exit_codes.h"
#include "cli/output.h"
#include "cli/report.h"
#include "storage/graph.h"

namespace context_delta::cli {
namespace {

std::string counted(std::int64_t number, std::string_view one) {
  return std::to_string(number) + " " + std::string(one) + (number == 1 ? "" : "s");
}

std::string summary(const services::IndexAt& index) {
  const storage::GraphSize size = storage::graph_size(index.repository->db);
  std::string line = "indexed " + index.commit.substr(0, 12) + ": " + counted(size.files, "file") +
                     ", " + counted(size.symbols, "symbol") + ", " +
                     counted(size.proven_calls, "proven call") + ", " +
                     counted(size.guessed_calls, "guessed call");
  const auto skipped = static_cast<std::int64_t>(indexer::skipped_files(*index.repository).size());
  if (skipped > 0) line += "; " + counted(skipped, "file") + " skipped";
  return line + "\n";
}

/// What the update counted, by name.
std::vector<std::pair<std::string_view, std::int64_t>> counts(const indexer::UpdateReport& report) {
  return {{"blobs_parsed", report.parsed},
          {"blobs_reused", report.reused},
          {"files_resolved", report.resolved},
          {"files_resolved_again", report.again},
          {"files_resolved_in_vain", report.in_vain},
          {"edges_changed", report.edges}};
}

std::string stats_text(const indexer::UpdateReport& report) {
  return "parsed " + counted(report.parsed, "blob") + " and reused " +
         std::to_string(report.reused) + "; resolved " + counted(report.resolved, "file") + ", " +
         std::to_string(report.again) + " of them again, " + std::to_string(report.in_vain) +
         " of these in vain; " + counted(report.edges, "edge") + " changed\n";
}

std::string stats_json(const services::IndexAt& index) {
  std::string line = "{\"commit\":\"" + index.commit + "\"";
  for (const auto& [name, count] : counts(index.report)) {
    line += ",\"" + std::string(name) + "\":" + std::to_string(count);
  }
  return line + "}\n";
}

}  // namespace

int run_index(const Settings& settings) {
  const git_utils::Git git(settings.directory);
  const services::IndexAt index = open_index(git, settings);
  if (settings.verbose) {
    for (const indexer::SkippedFile& file : indexer::skipped_files(*index.repository)) {
      report("skipped " + file.path + ": " + file.reason);
    }
    if (!indexer::skipped_files(*index.repository).empty() && git_utils::is_partial_clone(git)) {
      report("what a partial clone lacks comes with " +
             git_utils::advised(git, "fetch --refetch --no-filter"));
    }
  }
  Output output("-");
  if (settings.stats == Stats::JSON) {
    output.write(stats_json(index));
  } else {
    output.write(summary(index));
    if (settings.stats == Stats::TEXT) output.write(stats_text(index.report));
  }
  output.finish();
  return EXIT_DONE;
}

}  // namespace context_delta::cli
