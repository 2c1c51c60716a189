#pragma once

#include <string>

namespace context_delta::server {

/// The JSON Schema of the delta context pack in all of its shapes, as JSON text. Keys that it does
/// not name are allowed.
const std::string& delta_schema();

}  // namespace context_delta::server
