#include "render/html_page.h"

#include <memory>

#include <expat.h>

namespace context_delta::test {
namespace {

/// Everything that a page may be made of; nothing of it runs or loads anything.
const std::set<std::string> ELEMENTS = {
    "a",       "b",      "bdi",   "body",    "caption",    "code",   "dd",     "desc",
    "details", "div",    "dl",    "dt",      "figcaption", "figure", "footer", "g",
    "h1",      "h2",     "h3",    "head",    "header",     "html",   "li",     "link",
    "main",    "meta",   "nav",   "p",       "path",       "pre",    "rect",   "section",
    "span",    "strong", "style", "summary", "svg",        "table",  "tbody",  "td",
    "text",    "th",     "thead", "title",   "tr",         "ul"};
const std::set<std::string> ATTRIBUTES = {"aria-hidden", "aria-label", "aria-labelledby",
                                          "charset",     "class",      "content",
                                          "d",           "height",     "href",
                                          "http-equiv",  "id",         "lang",
                                          "name",        "open",       "rel",
                                          "role",        "rx",         "scope",
                                          "tabindex",    "viewBox",    "width",
                                          "x",           "y"};

void start(void* data, const XML_Char* element, const XML_Char** attributes) {
  auto& page = *static_cast<HtmlPage*>(data);
  page.elements.insert(element);
  if (std::string(element) == "body") page.text.clear();
  page.text += '\n';
  for (; *attributes != nullptr; attributes += 2) {
    const std::string name = attributes[0];
    page.attributes.insert(name);
    if (name == "id") page.ids.emplace_back(attributes[1]);
    if (name == "href") page.references.emplace_back(attributes[1]);
  }
}

void characters(void* data, const XML_Char* text, int length) {
  static_cast<HtmlPage*>(data)->text.append(text, static_cast<std::size_t>(length));
}

}  // namespace

HtmlPage read_page(const std::string& markup) {
  HtmlPage page;
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
      XML_ParserCreate("UTF-8"), XML_ParserFree);
  XML_SetUserData(parser.get(), &page);
  XML_SetStartElementHandler(parser.get(), start);
  XML_SetCharacterDataHandler(parser.get(), characters);
  if (XML_Parse(parser.get(), markup.data(), static_cast<int>(markup.size()), 1) == XML_STATUS_OK) {
    return page;
  }
  page.fault = XML_ErrorString(XML_GetErrorCode(parser.get()));
  page.fault += ", line " + std::to_string(XML_GetCurrentLineNumber(parser.get()));
  return page;
}

std::string fault_of(const HtmlPage& page) {
  if (!page.fault.empty()) return page.fault;
  for (const std::string& element : page.elements) {
    if (ELEMENTS.count(element) == 0) return "element " + element;
  }
  for (const std::string& attribute : page.attributes) {
    if (ATTRIBUTES.count(attribute) == 0) return "attribute " + attribute;
  }
  const std::set<std::string> ids(page.ids.begin(), page.ids.end());
  if (ids.size() != page.ids.size()) return "an id twice";
  for (const std::string& target : page.references) {
    const bool inside = target.starts_with("#") && ids.count(target.substr(1)) == 1;
    if (!inside && !target.starts_with("data:image/svg+xml,")) return "link to " + target;
  }
  return "";
}

}  // namespace context_delta::test
