#include "cli/completions.h"

#include <algorithm>

#include "cli/options.h"

namespace context_delta::cli {

std::string spaced(std::string_view choices) {
  std::string text(choices);
  std::replace(text.begin(), text.end(), '|', ' ');
  return text;
}

std::string completion_of(std::string_view shell) {
  if (shell == "bash") return bash_completion();
  if (shell == "zsh") return zsh_completion();
  if (shell == "fish") return fish_completion();
  throw UsageError("completion needs a shell: " + std::string(row_of(Command::COMPLETION).words));
}

}  // namespace context_delta::cli
