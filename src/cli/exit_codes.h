#pragma once

/// How the program ends: the one place that says so.
namespace context_delta::cli {

/// The answer was written; nothing to report is an answer. A reader that closed the pipe early had
/// what it wanted.
inline constexpr int EXIT_DONE = 0;

/// The answer was written, and it has what the user asked to be told of by `--fail-if`.
inline constexpr int EXIT_GATE = 1;

/// The command line cannot be understood. Nothing was done.
inline constexpr int EXIT_USAGE = 2;

/// Git cannot compare: no repository, no such revision, nothing in common. The error result was
/// written all the same.
inline constexpr int EXIT_GIT = 3;

/// Something else failed: the index, the wiki, the output file. One line on standard error says it.
inline constexpr int EXIT_FAILED = 4;

/// A signal ended the program: 130 for an interrupt from the keyboard, 143 for a request to
/// terminate. The index is as it was before.
inline constexpr int EXIT_SIGNAL_BASE = 128;

}  // namespace context_delta::cli
