#pragma once

#include <array>
#include <filesystem>

#include "indexer/update.h"
#include "support/git_repository.h"
#include "support/toy_language.h"

namespace context_delta::test {

/// A repository of texts in the toy languages, and its index.
class IndexedRepository {
 public:
  /// The options of an update with the toy languages.
  indexer::UpdateOptions options() const { return {.languages = languages_, .threads = 2}; }
  std::filesystem::path index_path() const { return git.beside() / "index" / "index.sqlite"; }
  std::string head() const { return git.git({"rev-parse", "HEAD"}); }

  /// Brings an index to what is checked out.
  indexer::UpdateReport update(storage::Repository& repository,
                               const indexer::UpdateOptions& how) const {
    return indexer::update(repository, git_utils::Git(git.root()), head(), how);
  }
  indexer::UpdateReport update(storage::Repository& repository) const {
    return update(repository, options());
  }

  GitRepository git;

 private:
  std::array<const indexer::Language*, 2> languages_ = {&other_toy_language(), &toy_language()};
};

}  // namespace context_delta::test
