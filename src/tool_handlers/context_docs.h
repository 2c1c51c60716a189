#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace context_delta::context_docs {

/// The text of a file of the work tree under `root`; `path` is a path text relative to it. Bytes
/// that are not UTF-8 are replaced by U+FFFD.
///
/// Null when there is no text to show: no such file, not a regular file (it is never opened then,
/// so a pipe or a device cannot block), unreadable, binary (it holds a NUL byte), longer than
/// `most_characters`, or outside `root`. Symbolic links are followed as long as every step stays
/// inside; absolute ones never do.
std::optional<std::string> read_repo_text(const std::filesystem::path& root, std::string_view path,
                                          std::int64_t most_characters);

/// What is shown of a file with these bytes; null when it is binary or longer.
std::optional<std::string> shown_text(std::string_view bytes, std::int64_t most_characters);

}  // namespace context_delta::context_docs
