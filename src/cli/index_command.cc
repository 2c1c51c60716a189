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
  output.write(summary(index));
  output.finish();
  return EXIT_DONE;
}

}  // namespace context_delta::cli
