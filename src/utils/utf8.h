#pragma once

#include <string>
#include <string_view>

/// UTF-8: texts that are certain to be valid, made from bytes that are not.
namespace context_delta::utf8 {

/// Length in bytes of the well-formed sequence at the start of `bytes`, 0 when there is none
/// (overlong forms, surrogates and values above U+10FFFF are not well-formed).
std::size_t sequence_length(std::string_view bytes);

bool is_valid(std::string_view bytes);

/// `bytes` with every maximal ill-formed part replaced by U+FFFD.
std::string replaced(std::string_view bytes);

/// A file name (bytes) as text: valid UTF-8 stays as it is, every other byte NN becomes the
/// private-use character U+10FFNN. Different names give different texts.
std::string path_text(std::string_view bytes);

/// The file name that path_text() made `text` of.
std::string path_bytes(std::string_view text);

}  // namespace context_delta::utf8
