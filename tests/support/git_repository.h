#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace context_delta::test {

/// A folder of its own that is removed with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// A real repository in a temporary folder, made by the real git with fixed names and dates and
/// without any configuration of the user. Commands that fail throw with git's own words.
class GitRepository {
 public:
  /// `git init` with these further options; the branch is "main".
  explicit GitRepository(const std::vector<std::string>& init_options = {});

  const std::filesystem::path& root() const { return root_; }
  /// A folder beside the repository, removed with it: for clones, work trees, wikis.
  const std::filesystem::path& beside() const { return folder_.path(); }

  /// Runs git in the repository; standard output without the last line feed.
  std::string git(const std::vector<std::string>& arguments) const;
  /// Writes a file of the work tree, and its folders.
  void write(std::string_view path, std::string_view content) const;
  void remove(std::string_view path) const;
  /// Adds everything and commits; each commit is a minute after the one before it. Returns its id.
  std::string commit(std::string_view message = "change");
  /// The same for very many files, past the work tree: a commit on `branch` that has these files
  /// and no others. Returns its id.
  std::string commit_files(const std::string& branch,
                           const std::map<std::string, std::string>& files);

 private:
  std::string run(const std::vector<std::string>& arguments, const std::string& redirection) const;

  TemporaryFolder folder_;
  std::filesystem::path root_;
  int commits_ = 0;
};

}  // namespace context_delta::test
