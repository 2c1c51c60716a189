#pragma once

#include <set>
#include <string>
#include <vector>

namespace context_delta::test {

/// What a strict XML parser reads on a page.
struct HtmlPage {
  std::string fault;  ///< why it is not well-formed; empty when it is
  std::set<std::string> elements;
  std::set<std::string> attributes;
  std::vector<std::string> ids;
  std::vector<std::string> references;  ///< values of href
  std::string text;                     ///< of the body, with a line feed before each element
};

HtmlPage read_page(const std::string& markup);

/// Why a page must not be shown to anyone; empty when it may.
std::string fault_of(const HtmlPage& page);

}  // namespace context_delta::test
