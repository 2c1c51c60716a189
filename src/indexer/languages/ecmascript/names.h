#pragma once

#include <string_view>

#include "indexer/model/facts.h"

/// How facts of this family name what has no name of its own, shared by extraction and rules.
namespace context_delta::indexer::ecmascript {

/// Prefixes of names that no identifier has.
inline constexpr std::string_view EXPORTED = "export ";
inline constexpr std::string_view TYPE_NAMED = "type ";
inline constexpr std::string_view IMPLEMENTED = "implements ";

/// Whether names may hold the byte: letters, digits, `$`, `_`, `#` and what is beyond ASCII.
bool is_name_byte(char byte);
bool is_name(std::string_view text);

/// The number that a text starts with; NOWHERE when it starts with none, or with `-1`.
DefinitionIndex number_in(std::string_view text);

/// Whether it is a definition of these facts, or NOWHERE.
bool is_in_range(const Interface& facts, DefinitionIndex index);

/// The place behind the bracket that closes the one `text` starts with (any of `<`, `(`, `[`, `{`,
/// which nest); the end of the text when none does.
std::size_t end_of_brackets(std::string_view text);

}  // namespace context_delta::indexer::ecmascript
