#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace context_delta::wiki {

/// Where a page is, as far as that gives its links a meaning.
struct PageSite {
  /// Path of the page in the repository; empty when the wiki lies outside.
  std::string page;
  /// Path of the wiki's folder in the repository, empty for the top: its pages are no sources.
  std::string wiki;
  /// Text of the repository's configuration: which hosted repositories are this one.
  std::string_view configuration;
};

/// The paths of the repository that a page's Markdown text links to (inline and by reference, not
/// in code), in the page's order, each once, 1,000 at most: relative to the page, from the top of
/// the repository (`/src/a.py`), or as addresses of a hosting site (`.../blob/REF/src/a.py`).
/// Fragments and queries are cut off. Nothing is looked up: paths need not exist.
std::vector<std::string> linked_paths(std::string_view text, const PageSite& site);

}  // namespace context_delta::wiki
