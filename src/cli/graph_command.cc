#include "cli/commands.h"
#include "cli/current_index.h"
#include "cli/exit_codes.h"
#include "cli/interruption.h"
#include "cli/output.h"
#include "storage/graph.h"

namespace context_delta::cli {

int run_graph(const Settings& settings) {
  const git_utils::Git git(settings.directory);
  const services::IndexAt index = open_index(git, settings);
  const DeferredSignals signals;
  Output output(settings.output);
  const auto write_line = [&](std::string_view line) {
    if (*signals.arrived()) throw indexer::Cancelled();
    output.write(line);
    output.write("\n");
  };
  storage::export_symbols(index.repository->db, write_line);
  storage::export_calls(index.repository->db, write_line);
  output.finish();
  return EXIT_DONE;
}

}  // namespace context_delta::cli
