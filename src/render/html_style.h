#pragma once

#include <string_view>

namespace context_delta::render {

/// The style sheet of the page (html_style.css, embedded when the program is built).
extern const std::string_view HTML_STYLE;

/// Its SHA-256 as a content security policy names it: `sha256-...`.
extern const std::string_view HTML_STYLE_HASH;

}  // namespace context_delta::render
