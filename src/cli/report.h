#pragma once

#include <string_view>

namespace context_delta::cli {

/// Writes `context-delta: TEXT` on standard error: one line, with anything that could steer a
/// terminal written out.
void report(std::string_view text);

/// Writes text on standard error as it is.
void write_error_text(std::string_view text);

}  // namespace context_delta::cli
