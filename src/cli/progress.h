#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace context_delta::cli {

/// How far a long run is, as it is told on standard error: a bar on a terminal once the run takes
/// longer than half a second; elsewhere a line every two seconds. Short runs say nothing.
class Progress {
 public:
  using Time = std::chrono::steady_clock::time_point;

  Progress(bool terminal, Time start) : terminal_(terminal), last_(start), start_(start) {}

  /// What to write at `now`; mostly nothing.
  std::string update(std::string_view phase, std::int64_t done, std::int64_t total, Time now);
  /// What to write at the end: takes the bar away.
  std::string finish();

 private:
  bool terminal_;
  bool bar_shown_ = false;
  Time last_;
  Time start_;
};

}  // namespace context_delta::cli
