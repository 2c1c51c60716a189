#include "cli/run.h"

#include <exception>
#include <iostream>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/exit_codes.h"
#include "cli/help.h"
#include "cli/interruption.h"
#include "cli/output.h"
#include "cli/report.h"
#include "indexer/update.h"
#include "utils/git_utils.h"

namespace context_delta::cli {
namespace {

int answer(Question question) {
  Output output("-");
  output.write(question == Question::VERSION      ? version_line()
               : question == Question::SHORT_HELP ? short_help()
                                                  : full_help());
  output.finish();
  return EXIT_DONE;
}

int run_command(const Settings& settings) {
  if (settings.question != Question::NONE) return answer(settings.question);
  switch (settings.command) {
    case Command::DELTA:
      return run_delta(settings);
    case Command::INDEX:
      return run_index(settings);
    case Command::GRAPH:
      return run_graph(settings);
  }
  return EXIT_USAGE;
}

}  // namespace

int run(std::span<const std::string> arguments) {
  try {
    const int code = run_command(parse_command_line(arguments));
    return deferred_signal() == 0 ? code : EXIT_SIGNAL_BASE + deferred_signal();
  } catch (const UsageError& error) {
    report(std::string(error.what()) + " (see context-delta --help)");
    return EXIT_USAGE;
  } catch (const git_utils::GitHistoryError& error) {
    report(error.what());
    return EXIT_GIT;
  } catch (const indexer::Cancelled&) {
    return EXIT_SIGNAL_BASE + deferred_signal();
  } catch (const ClosedPipe&) {
    return EXIT_DONE;
  } catch (const std::exception& error) {
    report(error.what());
    return EXIT_FAILED;
  }
}

}  // namespace context_delta::cli
