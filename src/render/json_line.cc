#include "render/json_line.h"

namespace context_delta::render {

std::string render_json(const json::Mapping& pack) { return json::compact_text(pack) + "\n"; }

}  // namespace context_delta::render
