#include "cli/run.h"

#include <cstdlib>
#include <exception>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/exit_codes.h"
#include "cli/help.h"
#include "cli/interruption.h"
#include "cli/output.h"
#include "cli/presets.h"
#include "cli/report.h"
#include "indexer/update.h"
#include "utils/git_utils.h"

namespace context_delta::cli {
namespace {

int answer(const Settings& settings) {
  Output output("-");
  output.write(settings.question == Question::VERSION
                   ? version_line()
                   : help_text(settings.command, settings.question == Question::HELP));
  output.finish();
  return EXIT_DONE;
}

int run_command(const Settings& settings) {
  switch (settings.command) {
    case Command::DELTA:
      return run_delta(settings);
    case Command::INDEX:
      return run_index(settings);
    case Command::GRAPH:
      return run_graph(settings);
    case Command::SERVE:
      return run_serve(settings);
    case Command::COMPLETION:
      return run_completion(settings);
    case Command::MANUAL:
      return run_manual(settings);
    case Command::HELP:
      return run_help(settings);
  }
  return EXIT_USAGE;
}

/// The presets, then what the command line says. What asks a question needs no presets.
Settings settings_of(const CommandLine& line) {
  Settings asked;
  apply(line, asked);
  if (asked.question != Question::NONE || !asked.configuration) return asked;
  Settings settings;
  settings.command = asked.command;
  settings.directory = asked.directory;
  apply_presets(settings, [](const char* name) -> const char* { return std::getenv(name); });
  apply(line, settings);
  return settings;
}

void tell(const Settings& settings) {
  if (settings.quiet) return;
  for (const std::string& warning : settings.warnings) report(warning);
  if (!settings.verbose) return;
  for (const std::string& remark : settings.remarks) report(remark);
}

int run_line(std::span<const std::string> arguments, bool& for_programs) {
  const Settings settings = settings_of(parse_command_line(arguments));
  for_programs = settings.format->for_programs;
  if (settings.question != Question::NONE) return answer(settings);
  tell(settings);
  const int code = run_command(settings);
  return deferred_signal() == 0 ? code : EXIT_SIGNAL_BASE + deferred_signal();
}

}  // namespace

int run(std::span<const std::string> arguments) {
  bool for_programs = asks_for_programs_format(arguments);
  try {
    return run_line(arguments, for_programs);
  } catch (const UsageError& error) {
    report_failure(std::string(error.what()) + " (see context-delta --help)", EXIT_USAGE,
                   for_programs);
    return EXIT_USAGE;
  } catch (const git_utils::GitHistoryError& error) {
    report_failure(error.what(), EXIT_GIT, for_programs);
    return EXIT_GIT;
  } catch (const indexer::Cancelled&) {
    return EXIT_SIGNAL_BASE + deferred_signal();
  } catch (const ClosedPipe&) {
    return EXIT_DONE;
  } catch (const std::exception& error) {
    report_failure(error.what(), EXIT_FAILED, for_programs);
    return EXIT_FAILED;
  }
}

}  // namespace context_delta::cli
