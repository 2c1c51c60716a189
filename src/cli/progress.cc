#include "cli/progress.h"

#include <algorithm>

namespace context_delta::cli {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds BEFORE_BAR{500};
constexpr milliseconds BETWEEN_BARS{100};
constexpr milliseconds BETWEEN_LINES{2000};
constexpr std::int64_t BAR_CELLS = 24;
constexpr std::string_view CLEAR_LINE = "\r\x1b[K";

std::string counts(std::string_view phase, std::int64_t done, std::int64_t total) {
  if (total == 0) return std::string(phase);
  return std::string(phase) + " " + std::to_string(done) + " of " + std::to_string(total);
}

}  // namespace

std::string Progress::update(std::string_view phase, std::int64_t done, std::int64_t total,
                             Time now) {
  if (!terminal_) {
    if (now - last_ < BETWEEN_LINES) return "";
    last_ = now;
    return "context-delta: " + counts(phase, done, total) + "\n";
  }
  if (now - start_ < BEFORE_BAR || (bar_shown_ && now - last_ < BETWEEN_BARS)) return "";
  last_ = now;
  bar_shown_ = true;
  const std::int64_t cells =
      total <= 0 ? 0 : std::clamp<std::int64_t>(done * BAR_CELLS / total, 0, BAR_CELLS);
  return std::string(CLEAR_LINE) + "[" + std::string(static_cast<std::size_t>(cells), '#') +
         std::string(static_cast<std::size_t>(BAR_CELLS - cells), ' ') + "] " +
         counts(phase, done, total);
}

std::string Progress::finish() {
  if (!bar_shown_) return "";
  bar_shown_ = false;
  return std::string(CLEAR_LINE);
}

}  // namespace context_delta::cli
