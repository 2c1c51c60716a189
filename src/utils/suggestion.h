#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace context_delta {

/// The one of `names` that `word` was most likely meant to be, the first of equals: at most a
/// third of its characters differ (a swap of neighbours counts once). Null when none is that near.
std::optional<std::string_view> nearest(std::string_view word,
                                        std::span<const std::string_view> names);

/// "; did you mean NAME?" or nothing.
std::string did_you_mean(std::string_view word, std::span<const std::string_view> names);

}  // namespace context_delta
