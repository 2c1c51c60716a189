#include "cli/report.h"

#include <string>

#include <unistd.h>

#include "render/display_text.h"

namespace context_delta::cli {

void report(std::string_view text) {
  write_error_text("context-delta: " + render::plain_text(text) + "\n");
}

void write_error_text(std::string_view text) {
  // There is nowhere to tell that this failed.
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace context_delta::cli
