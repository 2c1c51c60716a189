#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "tool_handlers/context_delta/fields.h"

namespace context_delta {

/// A section's share of a pack's tokens.
struct Share {
  std::string_view part;
  double share;
};

inline constexpr Share SHARES[] = {{"files", 0.4}, {"symbols", 0.35}, {"callers", 0.25}};

inline constexpr Share SHARES_WITH_SNIPPETS[] = {
    {"files", 0.3}, {"symbols", 0.25}, {"callers", 0.15}, {"snippets", 0.3}};

/// The share of `part`. Raises std::out_of_range when the table does not hold it.
double share_of(std::span<const Share> shares, std::string_view part);

/// trunc(total × granted), the product taken in double precision.
std::int64_t truncated_product(std::int64_t total, double granted);

template <class Services>
class Part;

/// The token budget of a pack, spent part by part.
///
/// A part may spend its own share and whatever the parts before it left unused. Parts are granted
/// one after another, each when the one before it has stopped taking rows; the budget outlives
/// them.
template <class Services>
class Budget {
 public:
  using Integer = typename Services::Integer;

  /// `total` in tokens; a negative one counts as 0. `shares` is only read and must outlive this.
  Budget(Services& services, Integer total, std::span<const Share> shares)
      : services_(services),
        total_(total < Integer(0) ? Integer(0) : std::move(total)),
        shares_(shares) {}

  /// Grants the share of `name`, again at each call: floor(total × the shares granted so far) less
  /// what was spent. Raises std::out_of_range, changing nothing, when there is no such share.
  Part<Services> part(std::string_view name) {
    const double share = share_of(shares_, name);
    granted_ += share;
    return Part<Services>(*this, truncated_product(total_, granted_) - used_);
  }

  /// Tokens spent by all parts so far.
  const Integer& used() const { return used_; }

 private:
  friend class Part<Services>;
  Services& services_;
  Integer total_;
  std::span<const Share> shares_;
  double granted_ = 0.0;
  Integer used_ = Integer(0);
};

/// One part's allowance, spent on rows in order until the first that does not fit.
template <class Services>
class Part {
 public:
  using Integer = typename Services::Integer;

  Part(Budget<Services>& budget, Integer allowance)
      : budget_(budget), left_(std::move(allowance)) {}

  /// Whether the row fits in what is left; it is paid for when it does. A row is priced by its JSON
  /// text even when the part is full, so that a row that cannot be priced is an error every time.
  bool take(const typename Services::Row& row) {
    const Integer cost = budget_.services_.estimate_tokens(json_text(row));
    if (full_ || left_ < cost) {
      full_ = true;
      return false;
    }
    left_ = left_ - cost;
    budget_.used_ = budget_.used_ + cost;
    return true;
  }

  /// Whether a row was refused: from then on every row is.
  bool full() const { return full_; }

 private:
  Budget<Services>& budget_;
  Integer left_;
  bool full_ = false;
};

}  // namespace context_delta
