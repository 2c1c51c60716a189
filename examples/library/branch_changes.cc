// Prints what the checked-out branch of a repository changed since it left BASE, as JSON.
//
//   branch_changes REPOSITORY [BASE]

#include <exception>
#include <iostream>
#include <string>

#include <context_delta/services/delta.h>

namespace {

namespace git_utils = context_delta::git_utils;
namespace indexer = context_delta::indexer;
namespace services = context_delta::services;
namespace storage = context_delta::storage;

indexer::UpdateReport update(storage::Repository& repository, const git_utils::Git& git,
                             const std::string& commit) {
  return indexer::update(repository, git, commit);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2 || count > 3) {
    std::cerr << "usage: branch_changes REPOSITORY [BASE]\n";
    return 2;
  }
  try {
    const git_utils::Git git(arguments[1]);
    services::DeltaRequest request;
    if (count == 3) request.base_branch = arguments[2];
    // The index file is the one that the command line uses too.
    const auto index = storage::default_index_path(git.common_directory());
    const services::DeltaAnswer answer = services::delta_answer(git, index, request, update);
    std::cerr << answer.base_commit << ".." << answer.head_commit << '\n';
    for (const std::string& remark : answer.remarks) std::cerr << remark << '\n';
    std::cout << context_delta::json::compact_text(answer.pack) << '\n';
    return answer.pack.find("error") == nullptr ? 0 : 3;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
