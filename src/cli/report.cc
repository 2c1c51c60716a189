#include "cli/report.h"

#include <cstdint>
#include <string>

#include <unistd.h>

#include "render/display_text.h"
#include "utils/json.h"

namespace context_delta::cli {

void report(std::string_view text) {
  write_error_text("context-delta: " + render::plain_text(text) + "\n");
}

void report_failure(std::string_view text, int exit_code, bool for_programs) {
  if (!for_programs) return report(text);
  const json::Mapping failure = {{"error", std::string(text)},
                                 {"exit_code", std::int64_t{exit_code}}};
  write_error_text(json::json_text(failure) + "\n");
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
