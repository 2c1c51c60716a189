#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace context_delta::wiki {

/// What the block between `---` lines at the top of a Markdown page says of its sources.
struct FrontMatter {
  std::string title;                 ///< empty when it has none
  std::vector<std::string> sources;  ///< as written; one scalar reads as a list of one
  std::string commit;                ///< empty when it names none
};

/// Reads the front matter of a page; keys it does not know are passed over. Null when there is
/// none, or one that is not taken: not a YAML mapping, over 64 KiB, nested deeper than eight
/// levels, with anchors or aliases, or with more than 1,000 sources.
std::optional<FrontMatter> read_front_matter(std::string_view page);

/// The page without its front matter.
std::string_view page_body(std::string_view page);

/// The text of a page's first heading (`# ...` outside fenced code); empty when it has none.
std::string first_heading(std::string_view page);

}  // namespace context_delta::wiki
