#pragma once

#include <string>

namespace context_delta::cli {

/// The manual page in the man macros of roff.
std::string manual_page();

}  // namespace context_delta::cli
