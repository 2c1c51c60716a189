#pragma once

#include <string>
#include <vector>

#include "support/git_repository.h"
#include "workers/git_history.h"

/// What the git commands that a person would type say of a comparison, one object at a time.
namespace context_delta::test {

struct PlainFile {
  git_utils::FileChange change;
  std::vector<git_utils::LineSpan> spans;
};

/// The files from the merge base of two revisions to the second, by path in byte order. Contents
/// that no reviewer reads by lines (submodules) have no spans here.
std::vector<PlainFile> plain_comparison(const GitRepository& repository, const std::string& base,
                                        const std::string& head);

/// One line for each file: everything that is known of it.
std::string described(const git_utils::FileChange& change,
                      const std::vector<git_utils::LineSpan>& spans);

/// What our own comparison says, one line for each file.
std::vector<std::string> our_comparison(const git_utils::Git& git, const std::string& base,
                                        const std::string& head);

}  // namespace context_delta::test
