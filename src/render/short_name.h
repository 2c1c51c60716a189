#pragma once

#include <string_view>

namespace context_delta::render {

/// A qualified name without its leading parts that the path of its file says already, wherever it
/// stands: `Session.close` of `client.session.Session.close` in src/client/session.py. Brackets
/// stay whole.
std::string_view beyond_file(std::string_view fqn, std::string_view file);

/// The last part of a qualified name.
std::string_view last_name(std::string_view fqn);

}  // namespace context_delta::render
