#include <nlohmann/json.hpp>

#include "cli/config_file.h"
#include "cli/options.h"
#include "fuzz/require.h"
#include "utils/json.h"
#include "utils/suggestion.h"
#include "utils/text_lines.h"
#include "utils/utf8.h"
#include "wiki/front_matter.h"
#include "wiki/page_links.h"
#include "wiki/source_pattern.h"
#include "workers/context_builder.h"
#include "workers/git_history.h"

// Texts that files of the repository bring: settings, pages, names; and what they become.
using namespace context_delta;

namespace {

void check_config(std::string_view text) {
  std::size_t line = 0;
  for (const cli::ConfigEntry& entry : cli::read_config(text)) {
    fuzz::require(entry.line > line, "entries come by line");
    line = entry.line;
    fuzz::require(!entry.key.empty() || !entry.problem.empty(), "an entry says something");
    fuzz::require(entry.problem.find('\n') == entry.problem.npos, "a problem is one line");
    const cli::OptionRow* option = cli::find_option("--" + entry.key);
    if (option == nullptr || option->preset != cli::Preset::PROJECT) continue;
    try {
      cli::Settings settings;
      option->apply(settings, entry.value);
    } catch (const cli::UsageError&) {
    }
  }
}

void check_page(std::string_view page) {
  if (const auto matter = wiki::read_front_matter(page)) {
    fuzz::require(utf8::is_valid(matter->title), "titles are texts");
    fuzz::require(utf8::is_valid(matter->commit), "commits are texts");
    fuzz::require(matter->sources.size() <= 1000, "sources are bounded");
  }
  fuzz::require(page.ends_with(wiki::page_body(page)), "the body is the page's end");
  fuzz::require(utf8::is_valid(wiki::first_heading(page)), "headings are texts");
  const wiki::PageSite site{"docs/page.md", "docs", "remote.o.url=https://e.org/a/b.git\n"};
  for (const std::string& path : wiki::linked_paths(page, site)) {
    fuzz::require(!path.empty() && wiki::normal_source(path) == path, "links are paths");
  }
}

void check_pattern(std::string_view text) {
  const std::string_view pattern = fuzz::take_part(text, '\n');
  const std::string source = wiki::normal_source(pattern);
  fuzz::require(wiki::normal_source(source) == source, "what is normal stays so");
  if (!wiki::is_glob(pattern)) {
    fuzz::require(wiki::glob_matches(pattern, pattern), "a plain name matches itself");
  }
  wiki::glob_matches(pattern, text);
  git_history::source_exclusion(text, std::nullopt);
  const std::vector<std::string_view> names = {"token-budget", pattern};
  fuzz::require(pattern.size() > 64 || nearest(pattern, names) == pattern, "itself is nearest");
}

void check_bytes(std::string_view bytes) {
  fuzz::require(utf8::path_bytes(utf8::path_text(bytes)) == bytes, "names come back");
  const std::string text = utf8::replaced(bytes);
  fuzz::require(utf8::is_valid(text), "what is replaced is valid");
  fuzz::require(!utf8::is_valid(bytes) || text == bytes, "what is valid stays");
  std::string quoted;
  json::append_quoted(quoted, text);
  const auto read = nlohmann::json::parse(quoted, nullptr, false);
  fuzz::require(read.is_string() && read == text, "a string comes back from JSON");
  const std::int64_t tokens = context_builder::estimate_tokens(bytes);
  fuzz::require(bytes.empty() ? tokens == 0 : tokens >= 1, "texts have tokens");
  for (const std::string_view line : text_lines::split_lines(text)) {
    fuzz::require(line.find_first_of("\n\r\v\f\x1c\x1d\x1e") == line.npos, "lines are cut");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text = fuzz::text_of(data, size);
  switch (fuzz::take_byte(text) % 4) {
    case 0:
      check_config(text);
      break;
    case 1:
      check_page(text);
      break;
    case 2:
      check_pattern(text);
      break;
    default:
      check_bytes(text);
  }
  return 0;
}
