#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "utils/utf8.h"
#include "wiki/front_matter.h"
#include "wiki/page_links.h"
#include "wiki/source_pattern.h"
#include "wiki/wiki_lens.h"

namespace context_delta::wiki {
namespace {

constexpr std::size_t MOST_PAGE_BYTES = 256 * 1024;
constexpr std::size_t MOST_PAGES = 20'000;
constexpr std::size_t MOST_TITLE_BYTES = 200;
constexpr int DEEPEST_FOLDER = 32;

bool is_page(const std::filesystem::path& name) {
  const std::string suffix = name.extension();
  return suffix == ".md" || suffix == ".markdown";
}

/// Paths of the pages relative to `folder`, in byte order.
std::vector<std::string> page_names(const std::filesystem::path& folder, CancelFlag cancelled) {
  std::vector<std::string> names;
  std::error_code error;
  using Walk = std::filesystem::recursive_directory_iterator;
  Walk walk(folder, std::filesystem::directory_options::skip_permission_denied, error);
  if (error) {
    throw WikiError("cannot read the wiki folder " + utf8::path_text(folder.native()) + ": " +
                    error.message());
  }
  for (; !error && walk != Walk(); walk.increment(error)) {
    check_cancelled(cancelled);
    const std::filesystem::path& path = walk->path();
    std::error_code unreadable;
    const auto type = walk->symlink_status(unreadable).type();
    const bool hidden = path.filename().native().starts_with('.');
    if (type == std::filesystem::file_type::directory) {
      if (hidden || walk.depth() >= DEEPEST_FOLDER) walk.disable_recursion_pending();
    } else if (type == std::filesystem::file_type::regular && !hidden && is_page(path)) {
      names.push_back(path.lexically_relative(folder).native());
    }
  }
  std::sort(names.begin(), names.end());
  if (names.size() > MOST_PAGES) names.resize(MOST_PAGES);
  return names;
}

/// The beginning of a file; empty when it cannot be read or is no regular file.
std::string read_beginning(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return "";
  std::string bytes;
  struct stat status;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    bytes.resize(MOST_PAGE_BYTES);
    std::size_t used = 0;
    while (used < bytes.size()) {
      const ssize_t length = read(descriptor, bytes.data() + used, bytes.size() - used);
      if (length < 0 && errno == EINTR) continue;
      if (length <= 0) break;
      used += static_cast<std::size_t>(length);
    }
    bytes.resize(used);
  }
  close(descriptor);
  return bytes;
}

std::string title_of(const FrontMatter& front_matter, std::string_view text,
                     const std::string& name) {
  std::string title = front_matter.title;
  if (title.empty()) title = first_heading(text);
  if (title.empty()) title = utf8::path_text(std::filesystem::path(name).filename().native());
  if (title.size() <= MOST_TITLE_BYTES) return title;
  std::size_t end = MOST_TITLE_BYTES;
  while (end > 0 && (title[end] & 0xC0) == 0x80) --end;
  return title.substr(0, end) + "\u2026";
}

/// The path of `folder` in the work tree below `root`, empty for `root` itself; null outside.
std::optional<std::string> path_below(const std::filesystem::path& root,
                                      const std::filesystem::path& folder) {
  std::error_code error;
  const std::filesystem::path place = std::filesystem::canonical(folder, error);
  if (error || root.empty()) return std::nullopt;
  const std::string relative = place.lexically_relative(root).native();
  if (relative == ".") return "";
  if (relative.empty() || relative == ".." || relative.starts_with("../")) return std::nullopt;
  return utf8::path_text(relative);
}

void add(Page& page, std::string source) {
  const auto& known = page.sources;
  if (source.empty() || std::find(known.begin(), known.end(), source) != known.end()) return;
  page.sources.push_back(std::move(source));
}

}  // namespace

std::vector<Page> read_pages(const std::filesystem::path& folder, const RepositorySite& site,
                             CancelFlag cancelled) {
  std::vector<Page> pages;
  const std::optional<std::string> below = path_below(site.root, folder);
  for (const std::string& name : page_names(folder, cancelled)) {
    check_cancelled(cancelled);
    const std::string text = read_beginning(folder / name);
    const std::optional<FrontMatter> written = read_front_matter(text);
    const FrontMatter front_matter = written.value_or(FrontMatter());
    Page page{.path = utf8::path_text(name),
              .title = title_of(front_matter, text, name),
              .sources = {},
              .commit = front_matter.commit,
              .file = {}};
    if (below) page.file = below->empty() ? page.path : *below + "/" + page.path;
    for (const std::string& source : front_matter.sources) add(page, normal_source(source));
    const PageSite place{page.file, below.value_or(""), site.configuration};
    for (std::string& source : linked_paths(page_body(text), place)) add(page, std::move(source));
    if (!page.sources.empty()) pages.push_back(std::move(page));
  }
  return pages;
}

}  // namespace context_delta::wiki
