#pragma once

#include <span>
#include <string>

namespace context_delta::cli {

/// The whole program: arguments (without its name) to exit code. The one place where failures
/// become exit codes and lines on standard error; it lets no exception pass.
int run(std::span<const std::string> arguments);

}  // namespace context_delta::cli
