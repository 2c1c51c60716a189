#include <algorithm>
#include <atomic>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <tree_sitter/api.h>

#include "indexer/language.h"
#include "utils/git_utils.h"

namespace context_delta {
namespace {

using git_utils::TreeFile;
using indexer::Language;

/// As the indexer does by default.
constexpr std::int64_t MOST_FILE_BYTES = 4 << 20;

struct Delete {
  void operator()(TSParser* parser) const { ts_parser_delete(parser); }
  void operator()(TSTree* tree) const { ts_tree_delete(tree); }
};

/// The files that an index of the commit reads, each blob once.
std::vector<TreeFile> files_to_parse(const git_utils::Git& git) {
  std::vector<TreeFile> files = git_utils::list_tree(git, git_utils::resolve_commit(git, "HEAD"));
  std::erase_if(files, [](const TreeFile& file) {
    return !indexer::may_have_language(file.path) || file.bytes > MOST_FILE_BYTES;
  });
  const auto by_object = [](const auto& a, const auto& b) { return a.object < b.object; };
  const auto same_object = [](const auto& a, const auto& b) { return a.object == b.object; };
  const auto by_path = [](const auto& a, const auto& b) { return a.path < b.path; };
  std::stable_sort(files.begin(), files.end(), by_object);
  files.erase(std::unique(files.begin(), files.end(), same_object), files.end());
  std::sort(files.begin(), files.end(), by_path);
  return files;
}

/// Parses a text with the runtime as it comes, its own allocation included, and drops the tree.
void parse(TSParser* parser, std::string_view path, std::string_view text) {
  const Language* language = indexer::language_of(path, text);
  if (language == nullptr || language->grammar == nullptr) return;
  const std::string prepared = language->prepare == nullptr ? "" : language->prepare(text);
  if (!prepared.empty()) text = prepared;
  ts_parser_set_language(parser, language->grammar());
  const std::unique_ptr<TSTree, Delete> tree(ts_parser_parse_string(
      parser, nullptr, text.data(), static_cast<std::uint32_t>(text.size())));
}

void parse_all(const git_utils::Git& git, const std::vector<TreeFile>& files) {
  std::atomic<std::size_t> next = 0;
  std::mutex mutex;
  std::exception_ptr failure;
  const auto work = [&] {
    try {
      git_utils::BlobReader reader(git);
      const std::unique_ptr<TSParser, Delete> parser(ts_parser_new());
      for (std::size_t i = next++; i < files.size(); i = next++) {
        const auto text = reader.read(files[i].object, MOST_FILE_BYTES);
        if (text) parse(parser.get(), files[i].path, *text);
      }
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
    }
  };
  std::vector<std::thread> threads(std::max(1u, std::thread::hardware_concurrency()));
  for (std::thread& thread : threads) thread = std::thread(work);
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace
}  // namespace context_delta

/// Parses what an index of the checked-out commit would, on all cores, and throws the trees away:
/// what no index can be faster than.
int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: bare_parse REPOSITORY\n";
    return 2;
  }
  try {
    const context_delta::git_utils::Git git(arguments[1]);
    const auto files = context_delta::files_to_parse(git);
    context_delta::parse_all(git, files);
    std::cout << files.size() << " files parsed\n";
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "bare_parse: " << error.what() << "\n";
    return 1;
  }
}
