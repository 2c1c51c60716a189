#pragma once

#include <cstdint>
#include <string_view>

namespace context_delta::context_builder {

/// The estimated number of tokens of a text, as today's large tokenizers count them: the text is
/// cut where they cut, and each piece has a price fitted on rows of public repositories. 0 for the
/// empty text, at least 1 for any other. Any bytes are accepted; the same bytes give the same
/// number everywhere. One pass, no allocation.
std::int64_t estimate_tokens(std::string_view text);

}  // namespace context_delta::context_builder
