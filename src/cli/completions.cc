#include "cli/completions.h"

#include "cli/options.h"

namespace context_delta::cli {

std::string completion_of(std::string_view shell) {
  if (shell == "bash") return bash_completion();
  if (shell == "zsh") return zsh_completion();
  if (shell == "fish") return fish_completion();
  throw UsageError("completion needs a shell: " + std::string(row_of(Command::COMPLETION).words));
}

}  // namespace context_delta::cli
