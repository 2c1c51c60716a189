#pragma once

#include "cli/settings.h"

/// One function per command, each in a file of its own: does what the settings ask for and returns
/// the exit code. Raise what failed; run() turns it into an exit code and a line.
namespace context_delta::cli {

/// Writes the delta context pack, the index brought up to date before.
int run_delta(const Settings& settings);

/// Brings the index up to date and writes one line about it.
int run_index(const Settings& settings);

/// Writes the symbols, then the call edges of the index, brought up to date before, one JSON
/// mapping a line.
int run_graph(const Settings& settings);

/// Serves tools to a language model's host until its end of standard input closes or a signal
/// comes; both are orderly ends.
int run_serve(const Settings& settings);

/// Writes the completions of the shell that the word names. Raises UsageError.
int run_completion(const Settings& settings);

/// Writes the manual page.
int run_manual(const Settings& settings);

/// Writes the help of the command that the word names.
int run_help(const Settings& settings);

}  // namespace context_delta::cli
