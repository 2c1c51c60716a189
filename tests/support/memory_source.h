#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "indexer/language.h"

namespace context_delta::tests {

/// The facts of a text, parsed with the language's grammar.
indexer::Facts facts_of(const indexer::Language& language, std::string_view text);

/// A repository in memory: texts by path, each in the language that claims it.
class MemorySource : public indexer::WorldSource {
 public:
  /// Adds a file; texts that no language claims are left out. The path must be new.
  void add(const std::string& path, std::string_view text);
  /// Adds a file whose facts are known.
  void add(const std::string& path, const indexer::Language& language, indexer::Facts facts);

  std::vector<indexer::Candidate> definitions(std::string_view family,
                                              std::string_view name) override;
  const indexer::File* file(std::string_view path) override;
  std::vector<const indexer::File*> folder(std::string_view folder) override;
  std::vector<const indexer::File*> files_named(std::string_view name) override;
  std::shared_ptr<const indexer::Interface> facts(const indexer::File& file) override;

  struct Entry {
    indexer::File file;
    const indexer::Language* language = nullptr;
    std::shared_ptr<const indexer::Facts> facts;
    std::shared_ptr<const indexer::Interface> interface;
  };
  /// All files by path.
  const std::map<std::string, Entry, std::less<>>& files() const { return files_; }

  /// Resolves one file in a world of its own.
  indexer::Resolution resolve(std::string_view path);

 private:
  std::map<std::string, Entry, std::less<>> files_;
  std::map<std::string, std::vector<indexer::Candidate>, std::less<>> names_;
  bool indexed_ = false;
  void index_names();
};

}  // namespace context_delta::tests
