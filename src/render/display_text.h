#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Text of a repository that nobody has vetted, made fit for a terminal, and its width there.
namespace context_delta::render {

/// `text` with everything that could steer a terminal or hide from the eye written out: control
/// characters and bytes of file names that are not UTF-8 (U+10FFNN) as `\xNN`, invisible and
/// bidirectional format characters and noncharacters as `\u{NNNN}`. Line feeds and tabs are
/// controls too.
std::string plain_text(std::string_view text);

/// Bytes at the start of `text` that plain_text() leaves as they are, and bytes that it changes.
std::size_t plain_prefix(std::string_view text);
std::size_t odd_prefix(std::string_view text);

/// Like plain_text(), with tabs brought to the next multiple of four columns.
std::string plain_line(std::string_view line);

/// Columns a character takes in a terminal: 0, 1 or 2.
std::size_t character_width(char32_t character);

/// Columns that a text without control characters takes.
std::size_t display_width(std::string_view text);

/// `text`, or as much of its beginning as fits `columns` together with `mark`.
std::string shortened_end(std::string_view text, std::size_t columns, std::string_view mark);

/// `text`, or its beginning, `mark` and its end, in `columns`. The end gets the larger share, and
/// starts at a '/' when there is one near: made for paths.
std::string shortened_middle(std::string_view text, std::size_t columns, std::string_view mark);

/// `text`, or `mark` and its end, in `columns`: made for qualified names. The end starts after a
/// separator when there is one near.
std::string shortened_start(std::string_view text, std::size_t columns, std::string_view mark);

/// `text` broken at spaces into lines of at most `columns`; longer words stand alone, unbroken.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

}  // namespace context_delta::render
