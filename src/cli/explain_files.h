#pragma once

#include <span>
#include <string>

#include "cli/settings.h"
#include "services/explain_files.h"

namespace context_delta::cli {

/// One line for each file: its class ("kept", "test", ...), its path and the rule that excludes it;
/// as JSON a mapping.
std::string explanation(std::span<const services::ExplainedFile> files, bool as_json);

}  // namespace context_delta::cli
