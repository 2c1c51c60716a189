#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>

#include <sys/signalfd.h>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/exit_codes.h"
#include "cli/options.h"
#include "cli/report.h"
#include "server/server.h"
#include "utils/git_utils.h"
#include "utils/subprocess.h"

namespace context_delta::cli {
namespace {

constexpr std::size_t MOST_ROOTS = 64;

/// Turns SIGINT and SIGTERM into something to read for its lifetime, of every thread that is
/// started meanwhile. The first one ends the server in an orderly way; one that comes while it ends
/// is delivered when the object goes.
class ReadableSignals {
 public:
  ReadableSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
    descriptor_ = subprocess::FileDescriptor(signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK));
  }
  ~ReadableSignals() {
    signalfd_siginfo taken;
    while (read(descriptor_.get(), &taken, sizeof taken) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  ReadableSignals(const ReadableSignals&) = delete;
  ReadableSignals& operator=(const ReadableSignals&) = delete;

  int descriptor() const { return descriptor_.get(); }

 private:
  sigset_t signals_;
  sigset_t before_;
  subprocess::FileDescriptor descriptor_;
};

std::filesystem::path resolved_root(const std::filesystem::path& folder) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::canonical(folder, error);
  if (error || !std::filesystem::is_directory(path, error)) {
    throw UsageError("--root takes a folder, not '" + folder.native() + "'");
  }
  return path;
}

std::vector<std::filesystem::path> resolved_roots(const Settings& settings) {
  if (settings.roots.empty()) return {git_utils::Git(settings.directory).root()};
  if (settings.roots.size() > MOST_ROOTS) {
    throw UsageError("--root may be given " + std::to_string(MOST_ROOTS) + " times at most");
  }
  std::vector<std::filesystem::path> roots;
  for (const std::filesystem::path& root : settings.roots) {
    std::filesystem::path path = resolved_root(settings.directory / root);
    if (std::find(roots.begin(), roots.end(), path) == roots.end()) {
      roots.push_back(std::move(path));
    }
  }
  return roots;
}

}  // namespace

int run_serve(const Settings& settings) {
  const ReadableSignals signals;
  server::Options options;
  options.roots = resolved_roots(settings);
  options.jobs = settings.jobs;
  options.token_scale = settings.token_scale;
  options.version = CONTEXT_DELTA_VERSION;
  if (settings.verbose) options.log = [](std::string_view line) { report(line); };
  if (isatty(STDIN_FILENO) != 0 && !settings.quiet) {
    report(
        "this talks to a language model's host: one JSON-RPC message a line; end it with Ctrl-D");
  }
  server::serve(options, {STDIN_FILENO, STDOUT_FILENO, signals.descriptor()});
  return EXIT_DONE;
}

}  // namespace context_delta::cli
