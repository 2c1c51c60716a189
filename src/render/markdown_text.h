#pragma once

#include <string>
#include <string_view>

/// Text of a repository that nobody has vetted, as Markdown that cannot act: no markup, no link, no
/// mention of a person or an issue, no comment, no end of a section. All of it stands in code
/// spans or fences, since a host looks for mentions in the page after escapes are resolved.
/// Every function takes text that plain_text() has passed, so without line breaks; of more than 24
/// backticks in a row each is written as `\x60`.
namespace context_delta::render {

/// `text` in a code span that it cannot end. Never empty. Must not follow a backtick.
std::string code_span(std::string_view text);

/// The same for a cell of a table: a '|' stands between code spans, as an entity.
std::string code_cell(std::string_view text);

/// A sentence: words of letters stay as they are, everything else stands in code spans. Must not
/// begin a line.
std::string prose(std::string_view text);

/// Lines between fences that are longer than any run of backticks in them, with a line feed at the
/// end. `language` is the highlighter's name for what they are, trusted, maybe empty.
std::string fenced(std::string_view lines, std::string_view language);

/// The highlighter's name for a path's language; empty when it is none of those known. Never one
/// that a host draws or runs instead of showing it.
std::string_view fence_language(std::string_view path);

}  // namespace context_delta::render
