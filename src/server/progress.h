#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "server/line_writer.h"
#include "utils/cancellation.h"

namespace context_delta::server {

/// Tells a client how far a call is: in thousandths, never twice the same and never less than
/// before, ten times a second at most, and nothing once the call is cancelled.
class Progress {
 public:
  /// `token` is the client's, as JSON text.
  Progress(LineWriter& writer, std::string token, CancelFlag cancelled)
      : writer_(writer), token_(std::move(token)), cancelled_(cancelled) {}

  /// The phases are those of indexer::UpdateOptions::progress.
  void update(std::string_view phase, std::int64_t done, std::int64_t total);

 private:
  using Clock = std::chrono::steady_clock;

  LineWriter& writer_;
  std::string token_;
  CancelFlag cancelled_;
  std::int64_t last_ = -1;
  Clock::time_point last_time_{};
};

}  // namespace context_delta::server
