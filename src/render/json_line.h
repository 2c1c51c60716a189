#pragma once

#include <string>

#include "utils/json.h"

namespace context_delta::render {

/// A pack as JSON on one line, keys in the pack's order, with a line feed.
std::string render_json(const json::Mapping& pack);

}  // namespace context_delta::render
