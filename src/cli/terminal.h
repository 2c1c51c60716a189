#pragma once

#include "cli/settings.h"
#include "render/report_style.h"

namespace context_delta::cli {

/// Whether standard output, or standard error, is a terminal.
bool output_is_terminal();
bool errors_are_terminal();

/// Columns of the terminal on standard output, else COLUMNS, else 80.
std::size_t terminal_width();

/// Lines of the terminal on standard output, 24 when it does not tell.
std::size_t terminal_height();

/// How a text is to look where it goes: colours as the settings and the environment (NO_COLOR,
/// CLICOLOR_FORCE, TERM) say, on a terminal only unless they insist; characters beyond ASCII when
/// the locale is a UTF-8 one.
render::ReportStyle report_style(const Settings& settings);

}  // namespace context_delta::cli
