#include "server/progress.h"

#include <algorithm>
#include <array>

#include "server/json_rpc.h"
#include "utils/json.h"

namespace context_delta::server {
namespace {

constexpr auto PAUSE = std::chrono::milliseconds(100);
constexpr std::int64_t WHOLE = 1000;

/// Where a phase begins and ends within the whole: about its part of the time of a first index.
struct Phase {
  std::string_view name;
  std::int64_t first;
  std::int64_t last;
};
constexpr std::array<Phase, 3> PHASES = {
    {{"parsing", 0, 500}, {"resolving", 500, 900}, {"writing", 900, 990}}};

std::int64_t thousandths(std::string_view phase, std::int64_t done, std::int64_t total) {
  const auto found = std::find_if(PHASES.begin(), PHASES.end(),
                                  [&](const Phase& each) { return each.name == phase; });
  if (found == PHASES.end()) return 0;
  const double part = total <= 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
  return found->first + static_cast<std::int64_t>(static_cast<double>(found->last - found->first) *
                                                  std::clamp(part, 0.0, 1.0));
}

}  // namespace

void Progress::update(std::string_view phase, std::int64_t done, std::int64_t total) {
  const auto now = Clock::now();
  const std::int64_t value = thousandths(phase, done, total);
  if (value <= last_ || (last_ >= 0 && now - last_time_ < PAUSE) || is_cancelled(cancelled_)) {
    return;
  }
  last_ = value;
  last_time_ = now;
  std::string params = "{\"progressToken\": " + token_ + ", \"progress\": ";
  params += std::to_string(value) + ", \"total\": " + std::to_string(WHOLE) + ", \"message\": ";
  std::string message(phase);
  if (total > 0) message += " " + std::to_string(done) + " of " + std::to_string(total);
  json::append_quoted(params, message);
  writer_.write(notification_line("notifications/progress", params + "}"));
}

}  // namespace context_delta::server
