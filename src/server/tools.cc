#include "server/tools.h"

#include <algorithm>
#include <array>

#include "server/delta_tool.h"

namespace context_delta::server {

std::span<const Tool* const> tools() {
  static constexpr std::array<const Tool*, 1> TOOLS = {&DELTA_TOOL};
  return TOOLS;
}

const Tool* find_tool(std::string_view name) {
  const auto all = tools();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Tool* tool) { return tool->name == name; });
  return found == all.end() ? nullptr : *found;
}

}  // namespace context_delta::server
