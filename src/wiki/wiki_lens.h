#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "utils/git_utils.h"
#include "utils/json.h"

/// Pages of a wiki that were written from files of the repository.
namespace context_delta::wiki {

/// The wiki's folder cannot be read. The text is one line for a person.
class WikiError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Paths one at a time, null after the last.
using NextPath = std::function<std::optional<std::string>()>;

/// A page that names its sources in its front matter, or links to them.
struct Page {
  std::string path;                  ///< path text relative to the wiki's folder
  std::string title;                 ///< front matter, else first heading, else file name
  std::vector<std::string> sources;  ///< files, folders and globs of the repository, normalised
  std::string commit;                ///< at which it was written; empty when it names none
  std::string file;                  ///< its path in the repository; empty outside
};

/// What gives the links of pages a meaning.
struct RepositorySite {
  std::filesystem::path root;  ///< top of the work tree, absolute, links resolved
  std::string configuration;   ///< text of its configuration, for the addresses of its remotes
};

/// The pages below `folder` that name or link to sources, by path in byte order. The folder is not
/// trusted: symbolic links in it and hidden folders are not followed, only the first 256 KiB of a
/// page are read, front matter that is not well-formed is passed over, and of a folder with more
/// than 20,000 pages only that many are read. Raises WikiError when the folder cannot be opened,
/// Cancelled.
std::vector<Page> read_pages(const std::filesystem::path& folder, const RepositorySite& site = {},
                             CancelFlag cancelled = nullptr);

/// The wiki as the delta pack asks for it.
class WikiLens {
 public:
  /// Reads the pages, as long as the limits of `git` say that they are wanted; whether they are
  /// stale is judged at `commit` (a full id, or HEAD). `git` must outlive the lens. Raises like
  /// read_pages().
  WikiLens(const std::filesystem::path& folder, const git_utils::Git& git,
           std::string commit = "HEAD");

  /// The pages that cite any of the paths (the path itself, a folder above it, or a glob), by page
  /// path, as mappings:
  ///   page     path relative to the wiki's folder
  ///   title
  ///   sources  those of its sources that the paths matched, in the page's order
  ///   stale    whether the newest change of any of its sources came after the commit that the page
  ///            was written at: the one it names, else that of its own last change; true when that
  ///            commit is not known
  ///   reason   one clause that says why
  ///   stale_source, changed_in
  ///            the source that changed last, and in which commit (12 digits); only where a source
  ///            made the page stale
  /// Runs one git process (ask_history()), none when no page cites any path. Raises
  /// GitHistoryError.
  json::List pages_citing(const NextPath& next) const;

 private:
  const git_utils::Git& git_;
  std::string commit_;
  std::vector<Page> pages_;
};

}  // namespace context_delta::wiki
