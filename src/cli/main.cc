#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "cli/interruption.h"
#include "cli/run.h"

namespace {

/// A standard stream that was closed when the program started must not become some file opened
/// later; writing to it still fails.
void occupy_standard_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) == -1) open("/dev/null", O_RDONLY);
  }
}

}  // namespace

int main(int count, char** arguments) {
  occupy_standard_streams();
  context_delta::cli::handle_signals();
  const std::vector<std::string> words(arguments + (count > 0 ? 1 : 0), arguments + count);
  return context_delta::cli::run(words);
}
