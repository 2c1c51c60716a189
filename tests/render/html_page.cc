#include "render/html_page.h"

#include <memory>

#include <expat.h>

namespace context_delta::test {
namespace {

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

}  // namespace context_delta::test
