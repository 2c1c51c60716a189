#include "render/markdown_page.h"

#include <set>

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm.h>

#include "render/markdown.h"

namespace context_delta::test {
namespace {

void take_node(cmark_node* node, MarkdownPage& page) {
  const std::set<std::string> OWN = {
      "document",    "heading",    "paragraph",  "list",        "item",        "strong",
      "softbreak",   "table",      "table_row",  "table_cell",  "text",        "code",
      "block_quote", "code_block", "html_block", "html_inline", "table_header"};
  const std::string type = cmark_node_get_type_string(node);
  const char* literal = cmark_node_get_literal(node);
  const std::string text = literal == nullptr ? "" : literal;
  if (!OWN.contains(type)) page.acting.push_back(type);
  if (type == "list" && cmark_node_get_list_type(node) != CMARK_BULLET_LIST) {
    page.acting.push_back("numbered list");
  }
  if (type == "text") page.words += text;
  if (type == "code") page.code_spans.push_back(text);
  if (type == "code_block") page.fences.push_back(text);
  if (type.starts_with("html")) page.html += text;
}

std::size_t count(const std::string& text, const std::string& wanted) {
  std::size_t found = 0;
  for (std::size_t at = text.find(wanted); at != text.npos; at = text.find(wanted, at + 1)) ++found;
  return found;
}

}  // namespace

MarkdownPage read_markdown(const std::string& markdown) {
  cmark_gfm_core_extensions_ensure_registered();
  cmark_parser* parser = cmark_parser_new(CMARK_OPT_FOOTNOTES);
  for (const char* name : {"table", "autolink", "strikethrough", "tasklist"}) {
    cmark_parser_attach_syntax_extension(parser, cmark_find_syntax_extension(name));
  }
  cmark_parser_feed(parser, markdown.data(), markdown.size());
  cmark_node* document = cmark_parser_finish(parser);
  cmark_iter* walk = cmark_iter_new(document);
  MarkdownPage page;
  for (auto event = cmark_iter_next(walk); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(walk)) {
    if (event == CMARK_EVENT_ENTER) take_node(cmark_iter_get_node(walk), page);
  }
  cmark_iter_free(walk);
  cmark_node_free(document);
  cmark_parser_free(parser);
  return page;
}

std::string harm_in(const std::string& markdown) {
  const std::string marker(render::MARKDOWN_MARKER);
  const MarkdownPage page = read_markdown(markdown);
  if (!page.acting.empty()) return "a node of its own: " + page.acting.front();
  if (!markdown.starts_with(marker + "\n")) return "no marker at the start";
  std::string html = page.html;
  for (const std::string own : {"<!-- context-delta -->", "<details>", "<details open>",
                                "</details>", "<summary>", "</summary>", "<br>", "<b>", "</b>"}) {
    for (std::size_t at = html.find(own); at != html.npos; at = html.find(own)) {
      html.erase(at, own.size());
    }
  }
  if (html.find_first_of("<>@#`[]") != html.npos) return "HTML: " + page.html;
  if (count(page.html, marker) != 1) return "several markers";
  if (count(page.html, "<details") != count(page.html, "</details>")) return "open sections";
  if (page.words.find_first_of("@#<>[]*_~$\\`!/") != page.words.npos) return "words: " + page.words;
  return markdown.size() <= render::MOST_MARKDOWN_BYTES ? "" : "too long for a comment";
}

}  // namespace context_delta::test
