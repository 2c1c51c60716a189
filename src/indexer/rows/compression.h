#pragma once

#include <string>
#include <string_view>

namespace context_delta::indexer {

/// Bytes in less room, quickly, and back. decompressed() raises DamagedData on bytes that
/// compressed() did not make.
std::string compressed(std::string_view bytes);
std::string decompressed(std::string_view bytes);

}  // namespace context_delta::indexer
