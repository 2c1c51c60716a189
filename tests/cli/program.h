#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

/// Runs the built program as a user would.
namespace context_delta::test {

struct Ending {
  int status = 0;  ///< exit code, or 128 plus the signal that ended it
  std::string out;
  std::string errors;
};

/// Runs `context-delta ARGUMENTS` with these variables ("NAME=value") and few others; neither
/// stream is a terminal.
Ending run(const std::vector<std::string>& arguments,
           const std::vector<std::string>& environment = {});

/// Runs a line of shell in which "$program" is the program.
Ending run_shell(const std::string& line);

/// Starts the program with its streams put into /dev/null.
pid_t start(const std::vector<std::string>& arguments);
/// Exit code of a child that was started, or 128 plus the signal that ended it.
int wait_for(pid_t child);
/// Waits until the child has opened `file` (an absolute path); false when it ends before.
bool opens(pid_t child, const std::string& file);

}  // namespace context_delta::test
