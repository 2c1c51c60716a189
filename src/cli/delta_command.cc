#include <string>

#include "cli/commands.h"
#include "cli/current_index.h"
#include "cli/exit_codes.h"
#include "cli/explain_files.h"
#include "cli/gate.h"
#include "cli/interruption.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/pager.h"
#include "cli/report.h"
#include "cli/terminal.h"
#include "services/delta.h"

namespace context_delta::cli {
namespace {

/// The budget in this program's tokens; that of the command line is in the caller's.
services::DeltaRequest scaled_request(const Settings& settings) {
  services::DeltaRequest request = settings.request;
  request.token_budget = request.token_budget * 100 / settings.token_scale;
  request.tell_uncommitted = !settings.quiet;
  return request;
}

services::DeltaAnswer make_answer(const Settings& settings, const services::DeltaRequest& request) {
  try {
    const git_utils::Git git(settings.directory);
    return services::delta_answer(git, index_path(git, settings), request, updater(settings));
  } catch (const git_utils::GitHistoryError& error) {
    return {services::error_result(error), {}, {}};
  }
}

/// What a report for programs has no place for, and what was asked for with --verbose.
void tell(const services::DeltaAnswer& answer, const Settings& settings) {
  if (settings.verbose && !answer.head_commit.empty()) {
    report("compared " + answer.base_commit + " with " + answer.head_commit);
  }
  if (settings.quiet || !settings.format->for_programs) return;
  for (const std::string& remark : answer.remarks) report(remark);
}

std::string rendered(const services::DeltaAnswer& answer, const Settings& settings,
                     std::int64_t budget) {
  render::ReportStyle style = report_style(settings);
  style.budget = budget;
  style.remarks = answer.remarks;
  style.beyond_limits = {answer.beyond_limits.symbols, answer.beyond_limits.callers,
                         answer.beyond_limits.neighbours};
  return settings.format->render(answer.pack, style);
}

void write(const Settings& settings, std::string_view text) {
  if (wants_pager(settings, text)) {
    const std::string command = pager_command(settings);
    if (!command.empty() && show_in_pager(command, text)) return;
  }
  const DeferredSignals signals;
  Output output(settings.output);
  output.write(text);
  output.finish();
}

/// Whether whoever reads the error reads the answer, which says the same, beside it.
bool is_said_twice(const Settings& settings) {
  return settings.output == "-" && !settings.format->for_programs && output_is_terminal() &&
         errors_are_terminal();
}

/// Gates that could never fail are a mistake that would pass unseen.
void check_gates(const Settings& settings) {
  for (const Gate* gate : settings.gates) {
    const std::string option = "--fail-if " + std::string(gate->name);
    if (settings.explain_files) throw UsageError(option + " does not go with --explain-files");
    if (gate->name == STALE_WIKI_GATE && !settings.request.wiki) {
      throw UsageError(option + " needs a wiki: --wiki DIR");
    }
  }
}

int pass_gates(const Settings& settings, const services::DeltaAnswer& answer) {
  int code = EXIT_DONE;
  for (const Gate* gate : settings.gates) {
    const std::string finding = gate->finding(answer);
    if (finding.empty()) continue;
    report_failure("--fail-if " + std::string(gate->name) + ": " + finding, EXIT_GATE,
                   settings.format->for_programs);
    code = EXIT_GATE;
  }
  return code;
}

}  // namespace

int run_delta(const Settings& settings) {
  check_gates(settings);
  if (settings.explain_files) {
    const git_utils::Git git(settings.directory);
    const auto files = services::explain_files(git, index_path(git, settings), settings.request,
                                               updater(settings));
    write(settings, explanation(files, settings.format->for_programs));
    return EXIT_DONE;
  }
  const services::DeltaRequest request = scaled_request(settings);
  const services::DeltaAnswer answer = make_answer(settings, request);
  tell(answer, settings);
  const json::Mapping& pack = answer.pack;
  const json::Value* error = pack.find("error");
  if (error != nullptr) {
    report_failure(*error->as<std::string>(), EXIT_GIT, settings.format->for_programs);
    if (is_said_twice(settings)) return EXIT_GIT;
  }
  write(settings, rendered(answer, settings, request.token_budget));
  return error == nullptr ? pass_gates(settings, answer) : EXIT_GIT;
}

}  // namespace context_delta::cli
