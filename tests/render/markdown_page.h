#pragma once

#include <string>
#include <vector>

namespace context_delta::test {

/// What the hosts' own parser makes of a report.
struct MarkdownPage {
  std::vector<std::string> code_spans;
  std::vector<std::string> fences;  ///< their contents
  std::vector<std::string> acting;  ///< nodes that no report has of its own: links, images, ...
  std::string html;                 ///< all raw HTML
  std::string words;                ///< all text outside code
};

MarkdownPage read_markdown(const std::string& markdown);

/// What of a report acts beside its own markup, or is too long for a comment; empty when nothing.
std::string harm_in(const std::string& markdown);

}  // namespace context_delta::test
