#pragma once

#include "storage/repository.h"
#include "utils/json.h"

namespace context_delta::quality_impact {

/// A new row for a guessed caller: fqn, name, kind, file, line, call_line, relation, reason. The
/// reason says among how many definitions was guessed and why none is certain.
json::Mapping guessed_caller_row(const storage::Caller& caller);

}  // namespace context_delta::quality_impact
