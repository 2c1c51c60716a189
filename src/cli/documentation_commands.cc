#include <string_view>

#include "cli/commands.h"
#include "cli/completions.h"
#include "cli/exit_codes.h"
#include "cli/help.h"
#include "cli/manual.h"
#include "cli/options.h"
#include "cli/output.h"

namespace context_delta::cli {
namespace {

int answer(std::string_view text) {
  Output output("-");
  output.write(text);
  output.finish();
  return EXIT_DONE;
}

}  // namespace

int run_completion(const Settings& settings) { return answer(completion_of(settings.word)); }

int run_manual(const Settings&) { return answer(manual_page()); }

int run_help(const Settings& settings) {
  Command asked = Command::DELTA;
  for (const CommandRow& row : commands()) {
    if (row.name == settings.word) asked = row.command;
  }
  return answer(help_text(asked, true));
}

}  // namespace context_delta::cli
