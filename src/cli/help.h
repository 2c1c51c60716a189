#pragma once

#include <string>

#include "cli/settings.h"

namespace context_delta::cli {

/// The help of a command, examples first; `whole` says everything there is.
std::string help_text(Command command, bool whole);

/// "context-delta 1.2.3" and a line feed.
std::string version_line();

}  // namespace context_delta::cli
