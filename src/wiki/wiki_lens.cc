#include "wiki/wiki_lens.h"

#include <cstddef>
#include <fstream>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "wiki/source_history.h"
#include "wiki/source_pattern.h"

namespace context_delta::wiki {
namespace {

constexpr std::size_t MOST_CONFIGURATION_BYTES = 64 * 1024;

/// A source of a page, by their positions.
struct Citation {
  std::size_t page;
  std::size_t source;
};

/// Which sources of a page were cited.
using Matches = std::set<std::size_t>;

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
      for (const Citation& citation : found->second)
        matches_[citation.page].insert(citation.source);
    }
    for (const auto& [glob, citation] : globs_) {
      if (glob_matches(glob, path)) matches_[citation.page].insert(citation.source);
    }
  }

  const Matches& of(std::size_t page) const { return matches_[page]; }

 private:
  std::unordered_map<std::string_view, std::vector<Citation>> names_;
  std::vector<std::pair<std::string_view, Citation>> globs_;
  std::vector<Matches> matches_;
};

/// Only ids of commits are asked of git: other expressions could mean anything, and cost it.
bool is_commit_id(std::string_view text) {
  return text.size() >= 4 && text.size() <= 64 &&
         text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
}

PageQuestion question_about(const Page& page) {
  if (!page.commit.empty() && !is_commit_id(page.commit)) return {};
  return {.sources = page.sources, .commit = page.commit, .path = page.file};
}

std::string reason(const Page& page, const PageAnswer& answer) {
  const std::string written = "written at " + answer.commit.substr(0, 7) + ", ";
  const std::string named = page.commit.substr(0, 12);
  if (!page.commit.empty() && !is_commit_id(page.commit)) return "unknown commit " + named;
  switch (answer.known) {
    case PageAnswer::Known::NO_COMMIT:
      return "names no commit";
    case PageAnswer::Known::NOT_COMMITTED:
      return "names no commit and was never committed";
    case PageAnswer::Known::NO_SUCH_COMMIT:
      return "unknown commit " + named;
    case PageAnswer::Known::NOT_REACHED:
    case PageAnswer::Known::YES:
      break;
  }
  if (answer.changed.empty()) {
    if (answer.known == PageAnswer::Known::YES) return written + "no source changed since";
    if (answer.commit.empty()) return "written before all commits that were looked at";
    return written + "too long ago to tell what changed since";
  }
  const std::size_t others = answer.changed.size() - 1;
  return written + page.sources[answer.changed.front()] +
         (others == 0 ? "" : " and " + std::to_string(others) + " more") +
         (answer.deleted && others == 0 ? " deleted since" : " changed since");
}

json::Mapping entry(const Page& page, const Matches& matches, const PageAnswer& answer) {
  json::List sources;
  for (const std::size_t match : matches) sources.emplace_back(page.sources[match]);
  const bool current = answer.known == PageAnswer::Known::YES && answer.changed.empty();
  json::Mapping row{{"page", page.path},
                    {"title", page.title},
                    {"sources", std::move(sources)},
                    {"stale", !current},
                    {"reason", reason(page, answer)}};
  if (!answer.changed.empty()) {
    row.set("stale_source", page.sources[answer.changed.front()]);
    row.set("changed_in", answer.changed_in.substr(0, 12));
  }
  return row;
}

/// The beginning of the repository's configuration file; empty when it cannot be read.
std::string configuration_of(const git_utils::Git& git) {
  std::ifstream file(git.common_directory() / "config", std::ios::binary);
  std::string text(MOST_CONFIGURATION_BYTES, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

}  // namespace

WikiLens::WikiLens(const std::filesystem::path& folder, const git_utils::Git& git,
                   std::string commit)
    : git_(git),
      commit_(std::move(commit)),
      pages_(read_pages(folder, {git.root(), configuration_of(git)}, git.limits().cancelled)) {}

json::List WikiLens::pages_citing(const NextPath& next) const {
  Citations citations(pages_);
  while (const std::optional<std::string> path = next()) citations.match(*path);
  std::vector<std::size_t> citing;
  std::vector<PageQuestion> questions;
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    if (citations.of(i).empty()) continue;
    citing.push_back(i);
    questions.push_back(question_about(pages_[i]));
  }
  const std::vector<PageAnswer> answers = ask_history(git_, questions, commit_);
  json::List entries;
  for (std::size_t i = 0; i < citing.size(); ++i) {
    entries.emplace_back(entry(pages_[citing[i]], citations.of(citing[i]), answers[i]));
  }
  return entries;
}

}  // namespace context_delta::wiki
