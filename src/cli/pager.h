#pragma once

#include <string>
#include <string_view>

#include "cli/settings.h"

namespace context_delta::cli {

/// The command line of the shell that shows long texts: what the settings name, else PAGER, else
/// `less` where it is installed. Empty for none, as `cat` asks for. Repositories have no say.
std::string pager_command(const Settings& settings);

/// Whether `text` should be paged: it goes to a terminal that it does not fit, nobody said no.
bool wants_pager(const Settings& settings, std::string_view text);

/// Hands `text` to the pager and waits for its end, however early. An interrupt from the keyboard
/// is the pager's to act on meanwhile. False when it could not be started: nothing was shown then.
bool show_in_pager(const std::string& command, std::string_view text);

}  // namespace context_delta::cli
