#pragma once

#include "server/tools.h"

namespace context_delta::server {

/// `context`, whose action `delta` answers with the delta context pack.
extern const Tool DELTA_TOOL;

}  // namespace context_delta::server
