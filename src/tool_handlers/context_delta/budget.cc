#include "tool_handlers/context_delta/budget.h"

namespace context_delta {

double share_of(std::span<const Share> shares, std::string_view part) {
  for (const Share& share : shares) {
    if (share.part == part) return share.share;
  }
  missing_key(part);
}

std::int64_t truncated_product(std::int64_t total, double granted) {
  const double product = static_cast<double>(total) * granted;
  // Totals near the largest integer round up to 2^63 as doubles; they are not to be converted.
  return product < 0x1p63 ? static_cast<std::int64_t>(product) : total;
}

}  // namespace context_delta
