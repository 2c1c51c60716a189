#include "wiki/wiki_lens.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "wiki/source_pattern.h"

namespace context_delta::wiki {
namespace {

/// A source of a page, by their positions.
struct Citation {
  std::size_t page;
  std::size_t source;
};

/// Which sources of a page were cited; of the globs among them, by which paths.
using Matches = std::map<std::size_t, std::set<std::string>>;

/// The pages' sources, found by path.
class Citations {
 public:
  explicit Citations(const std::vector<Page>& pages) : matches_(pages.size()) {
    for (std::size_t page = 0; page < pages.size(); ++page) {
      for (std::size_t source = 0; source < pages[page].sources.size(); ++source) {
        const std::string& text = pages[page].sources[source];
        if (is_glob(text)) {
          globs_.emplace_back(text, Citation{page, source});
        } else {
          names_[text].push_back({page, source});
        }
      }
    }
  }

  void match(const std::string& path) {
    for (std::size_t end = path.size(); end != std::string::npos && end > 0;
         end = path.rfind('/', end - 1)) {
      const auto found = names_.find(std::string_view(path).substr(0, end));
      if (found == names_.end()) continue;
      for (const Citation& citation : found->second) matches_[citation.page][citation.source];
    }
    for (const auto& [glob, citation] : globs_) {
      if (glob_matches(glob, path)) matches_[citation.page][citation.source].insert(path);
    }
  }

  const Matches& of(std::size_t page) const { return matches_[page]; }

 private:
  std::unordered_map<std::string_view, std::vector<Citation>> names_;
  std::vector<std::pair<std::string_view, Citation>> globs_;
  std::vector<Matches> matches_;
};

/// Names of objects (`commit:path`) asked of git all at once.
class ObjectQuestions {
 public:
  void ask(const std::string& name) {
    if (ids_.emplace(name, "").second) input_ += name + "\n";
  }

  /// Every question, in one process. Names that git does not know keep the empty id.
  void answer(const git_utils::Git& git) {
    if (ids_.empty()) return;
    const git_utils::Git::Command command{
        .arguments = {"cat-file", "--batch-check=%(objectname) %(objecttype)"},
        .view = git_utils::View::REPOSITORY,
        .input = input_};
    const git_utils::Git::Output output = git.run(std::span(&command, 1)).front();
    if (output.status != 0) {
      throw git_utils::GitHistoryError("git cannot look up the wiki's sources in " +
                                       git.root().string() + ": " + output.errors);
    }
    std::string_view names = input_;
    std::string_view answers = output.out;
    while (!names.empty() && !answers.empty()) {
      const std::string_view name = take_line(names);
      const std::string_view answer = take_line(answers);
      if (answer == std::string(name) + " missing" || answer == std::string(name) + " ambiguous") {
        continue;
      }
      ids_[std::string(name)] = answer;
    }
  }

  const std::string& id(const std::string& name) const { return ids_.at(name); }

 private:
  static std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
  }

  std::string input_;
  std::unordered_map<std::string, std::string> ids_;
};

/// Only ids of commits are asked of git: other expressions could mean anything, and cost it.
bool is_commit_id(std::string_view text) {
  return text.size() >= 4 && text.size() <= 64 &&
         text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
}

std::string commit_object(const Page& page) { return page.commit + "^{commit}"; }

/// What a page must be compared on: its files and folders, and what its globs matched.
std::vector<std::string> compared_paths(const Page& page, const Matches& matches) {
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < page.sources.size(); ++i) {
    if (!is_glob(page.sources[i])) paths.push_back(page.sources[i]);
    const auto match = matches.find(i);
    if (match == matches.end()) continue;
    for (const std::string& path : match->second) {
      if (path.find('\n') == path.npos) paths.push_back(path);
    }
  }
  return paths;
}

void ask_about(ObjectQuestions& objects, const Page& page, const Matches& matches) {
  if (!is_commit_id(page.commit)) return;
  objects.ask(commit_object(page));
  for (const std::string& path : compared_paths(page, matches)) {
    objects.ask(page.commit + ":" + path);
    objects.ask("HEAD:" + path);
  }
}

struct Verdict {
  bool stale;
  std::string reason;
};

Verdict verdict(const ObjectQuestions& objects, const Page& page, const Matches& matches) {
  if (page.commit.empty()) return {true, "names no commit"};
  const std::string written = page.commit.substr(0, 12);
  if (!is_commit_id(page.commit) || objects.id(commit_object(page)).empty()) {
    return {true, "unknown commit " + written};
  }
  std::vector<std::string> changed;
  bool deleted = false;
  for (const std::string& path : compared_paths(page, matches)) {
    const std::string& now = objects.id("HEAD:" + path);
    if (objects.id(page.commit + ":" + path) == now) continue;
    if (changed.empty()) deleted = now.empty();
    changed.push_back(path);
  }
  const std::string since = "written at " + written.substr(0, 7) + ", ";
  if (changed.empty()) return {false, since + "no source changed since"};
  const std::string others =
      changed.size() == 1 ? "" : " and " + std::to_string(changed.size() - 1) + " more";
  return {true, since + changed.front() + others +
                    (deleted && changed.size() == 1 ? " deleted since" : " changed since")};
}

json::Mapping entry(const Page& page, const Matches& matches, const Verdict& verdict) {
  json::List sources;
  for (const auto& match : matches) sources.emplace_back(page.sources[match.first]);
  return {{"page", page.path},
          {"title", page.title},
          {"sources", std::move(sources)},
          {"stale", verdict.stale},
          {"reason", verdict.reason}};
}

}  // namespace

WikiLens::WikiLens(const std::filesystem::path& folder, const git_utils::Git& git)
    : git_(git), pages_(read_pages(folder, git.limits().cancelled)) {}

json::List WikiLens::pages_citing(const NextPath& next) const {
  Citations citations(pages_);
  while (const std::optional<std::string> path = next()) citations.match(*path);
  ObjectQuestions objects;
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    if (!citations.of(i).empty()) ask_about(objects, pages_[i], citations.of(i));
  }
  objects.answer(git_);
  json::List entries;
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    const Matches& matches = citations.of(i);
    if (matches.empty()) continue;
    entries.emplace_back(entry(pages_[i], matches, verdict(objects, pages_[i], matches)));
  }
  return entries;
}

}  // namespace context_delta::wiki
