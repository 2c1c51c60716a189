#pragma once

#include <string>
#include <string_view>

#include "services/delta.h"

/// Conditions that the exit code of a pack can tell: for jobs that must not pass them.
namespace context_delta::cli {

struct Gate {
  std::string_view name;
  /// What the answer has that fails the gate, a line without a full stop; empty: it passes.
  std::string (*finding)(const services::DeltaAnswer& answer);
};

/// The gate of a name; null when there is none.
const Gate* find_gate(std::string_view name);

/// All names, joined by '|'.
std::string_view gate_names();

/// The gate that needs a wiki.
inline constexpr std::string_view STALE_WIKI_GATE = "stale-wiki";

}  // namespace context_delta::cli
