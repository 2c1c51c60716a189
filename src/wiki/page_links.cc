#include "wiki/page_links.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <md4c.h>

#include "wiki/source_pattern.h"

namespace context_delta::wiki {
namespace {

constexpr std::size_t MOST_LINKS = 1000;
constexpr std::size_t LONGEST_TARGET = 4096;

/// The target of a link, with the entities that occur in addresses resolved.
std::string attribute_text(const MD_ATTRIBUTE& attribute) {
  constexpr std::pair<std::string_view, std::string_view> ENTITIES[] = {
      {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}};
  std::string text;
  for (std::size_t i = 0; attribute.substr_offsets[i] < attribute.size; ++i) {
    const MD_OFFSET start = attribute.substr_offsets[i];
    std::string_view part(attribute.text + start, attribute.substr_offsets[i + 1] - start);
    for (const auto& [entity, meaning] : ENTITIES) {
      if (attribute.substr_types[i] == MD_TEXT_ENTITY && part == entity) part = meaning;
    }
    text += part;
  }
  return text;
}

int enter_span(MD_SPANTYPE type, void* detail, void* user) {
  auto& targets = *static_cast<std::vector<std::string>*>(user);
  if (type != MD_SPAN_A) return 0;
  const MD_ATTRIBUTE& href = static_cast<MD_SPAN_A_DETAIL*>(detail)->href;
  if (href.size <= LONGEST_TARGET) targets.push_back(attribute_text(href));
  return targets.size() < MOST_LINKS ? 0 : 1;
}

std::vector<std::string> link_targets(std::string_view text) {
  std::vector<std::string> targets;
  MD_PARSER parser{};
  parser.flags = MD_FLAG_TABLES;
  parser.enter_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
  parser.leave_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
  parser.enter_span = enter_span;
  parser.leave_span = [](MD_SPANTYPE, void*, void*) { return 0; };
  parser.text = [](MD_TEXTTYPE, const MD_CHAR*, MD_SIZE, void*) { return 0; };
  md_parse(text.data(), static_cast<MD_SIZE>(text.size()), &parser, &targets);
  return targets;
}

int hexadecimal(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const char letter = static_cast<char>(digit | 0x20);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

std::string percent_decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = i + 2 < text.size() && text[i] == '%' ? hexadecimal(text[i + 1]) : -1;
    const int low = high >= 0 ? hexadecimal(text[i + 2]) : -1;
    if (low < 0) {
      result += text[i];
    } else {
      result += static_cast<char>(high * 16 + low);
      i += 2;
    }
  }
  return result;
}

/// `path` without `.` and `..`, below `folder`; null when it leaves the top.
std::optional<std::string> resolved(std::string_view folder, std::string_view path) {
  std::vector<std::string_view> names;
  for (std::string_view part : {folder, path}) {
    while (!part.empty()) {
      const std::size_t slash = std::min(part.find('/'), part.size());
      const std::string_view name = part.substr(0, slash);
      part.remove_prefix(std::min(slash + 1, part.size()));
      if (name == "..") {
        if (names.empty()) return std::nullopt;
        names.pop_back();
      } else if (!name.empty() && name != ".") {
        names.push_back(name);
      }
    }
  }
  std::string result;
  for (const std::string_view name : names) {
    if (!result.empty()) result += '/';
    result += name;
  }
  return result;
}

/// Whether the configuration has a remote whose address ends in `repository` ("owner/name").
bool is_remote(std::string_view configuration, std::string_view repository) {
  for (std::size_t at = configuration.find(repository); at != configuration.npos;
       at = configuration.find(repository, at + 1)) {
    const char before = at == 0 ? '\0' : configuration[at - 1];
    std::string_view after = configuration.substr(at + repository.size());
    if (after.starts_with(".git")) after.remove_prefix(4);
    const bool ends = after.empty() || after.front() == '\n' || after.front() == '\r';
    if ((before == '/' || before == ':') && ends) return true;
  }
  return false;
}

/// The path in an address like `https://HOST/OWNER/NAME/blob/REF/PATH`; empty when it is none, or
/// of another repository. Branches with a '/' in their name are not recognised.
std::string_view path_on_host(std::string_view address, std::string_view configuration) {
  for (const std::string_view scheme : {"https://", "http://"}) {
    if (!address.starts_with(scheme)) continue;
    const std::size_t host_end = address.find('/', scheme.size());
    if (host_end == address.npos) return {};
    address.remove_prefix(host_end + 1);
    for (const std::string_view kind : {"/-/blob/", "/-/tree/", "/blob/", "/tree/"}) {
      const std::size_t at = address.find(kind);
      if (at == address.npos) continue;
      const std::size_t path = address.find('/', at + kind.size());
      if (path == address.npos || !is_remote(configuration, address.substr(0, at))) return {};
      return address.substr(path + 1);
    }
  }
  return {};
}

bool is_address(std::string_view target) {
  const std::size_t colon = target.find(':');
  return target.starts_with("//") || (colon != target.npos && colon < target.find('/'));
}

bool is_page_of(const std::string& path, const std::string& wiki) {
  const bool below = wiki.empty() || path.starts_with(wiki + "/") || path == wiki;
  return below && (path.ends_with(".md") || path.ends_with(".markdown"));
}

/// The path that a target means; empty when it means none.
std::string linked_path(std::string_view target, const PageSite& site) {
  target = target.substr(0, target.find_first_of("#?"));
  std::string_view folder;
  if (const std::string_view path = path_on_host(target, site.configuration); !path.empty()) {
    target = path;
  } else if (target.empty() || is_address(target)) {
    return "";
  } else if (target.front() != '/') {
    if (site.page.empty()) return "";
    const std::size_t slash = site.page.rfind('/');
    folder = std::string_view(site.page).substr(0, slash == site.page.npos ? 0 : slash);
  }
  const std::string path = resolved(folder, percent_decoded(target)).value_or("");
  const bool inside = !site.page.empty();
  if (inside && (is_page_of(path, site.wiki) || path == site.wiki)) return "";
  return is_glob(path) ? "" : normal_source(path);
}

}  // namespace

std::vector<std::string> linked_paths(std::string_view text, const PageSite& site) {
  std::vector<std::string> paths;
  for (const std::string& target : link_targets(text)) {
    std::string path = linked_path(target, site);
    if (path.empty() || std::find(paths.begin(), paths.end(), path) != paths.end()) continue;
    paths.push_back(std::move(path));
  }
  return paths;
}

}  // namespace context_delta::wiki
