#include "tool_handlers/context_delta/snippets.h"

namespace context_delta {

std::string join_lines(std::span<const std::string_view> lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i != 0) text += '\n';
    text += lines[i];
  }
  return text;
}

}  // namespace context_delta
