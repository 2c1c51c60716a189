#pragma once

#include <string_view>

namespace context_delta::cli {

/// Writes `context-delta: TEXT` on standard error: one line, with anything that could steer a
/// terminal written out.
void report(std::string_view text);

/// Writes why the program fails: as report() does, or for a program as a mapping on one line of
/// JSON with `error` and `exit_code`.
void report_failure(std::string_view text, int exit_code, bool for_programs);

/// Writes text on standard error as it is.
void write_error_text(std::string_view text);

}  // namespace context_delta::cli
