#include "support/git_repository.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace context_delta::test {
namespace {

std::string quoted(const std::string& word) {
  std::string result = "'";
  for (const char c : word) {
    if (c == '\'') {
      result += "'\\''";
    } else {
      result += c;
    }
  }
  return result + "'";
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::string name = std::filesystem::temp_directory_path() / "context-delta-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder: " + name);
  path_ = std::filesystem::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

GitRepository::GitRepository(const std::vector<std::string>& init_options)
    : root_(folder_.path() / "repository") {
  std::filesystem::create_directory(root_);
  std::vector<std::string> arguments = {"init", "-q", "-b", "main"};
  arguments.insert(arguments.end(), init_options.begin(), init_options.end());
  git(arguments);
}

std::string GitRepository::git(const std::vector<std::string>& arguments) const {
  return run(arguments, "2>&1");
}

std::string GitRepository::run(const std::vector<std::string>& arguments,
                               const std::string& redirection) const {
  const std::string date = "@" + std::to_string(1700000000 + 60 * commits_) + " +0000";
  std::string command =
      "cd " + quoted(root_) +
      " && exec env -u GIT_DIR -u GIT_WORK_TREE -u GIT_INDEX_FILE HOME=/nonexistent"
      " GIT_CONFIG_NOSYSTEM=1 GIT_CONFIG_GLOBAL=/dev/null LC_ALL=C GIT_TERMINAL_PROMPT=0"
      " GIT_AUTHOR_NAME=Ada GIT_AUTHOR_EMAIL=ada@example.org GIT_COMMITTER_NAME=Ada"
      " GIT_COMMITTER_EMAIL=ada@example.org GIT_AUTHOR_DATE=" +
      quoted(date) + " GIT_COMMITTER_DATE=" + quoted(date) + " git -c protocol.file.allow=always";
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  command += " " + redirection;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run git");
  std::string output;
  char buffer[4096];
  for (std::size_t n = 0; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    output.append(buffer, n);
  }
  const int status = pclose(pipe);
  if (status != 0) throw std::runtime_error(command + "\n" + output);
  if (!output.empty() && output.back() == '\n') output.pop_back();
  return output;
}

void GitRepository::write(std::string_view path, std::string_view content) const {
  const std::filesystem::path file = root_ / path;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

void GitRepository::remove(std::string_view path) const {
  std::filesystem::remove_all(root_ / path);
}

std::string GitRepository::commit(std::string_view message) {
  ++commits_;
  git({"add", "-A"});
  git({"commit", "-q", "--allow-empty", "-m", std::string(message)});
  return git({"rev-parse", "HEAD"});
}

std::string GitRepository::commit_files(const std::string& branch,
                                        const std::map<std::string, std::string>& files) {
  const std::string ref = "refs/heads/" + branch;
  const std::string parent = git({"for-each-ref", "--format=%(objectname)", ref});
  const std::filesystem::path stream = folder_.path() / "stream";
  std::ofstream out(stream, std::ios::binary);
  out << "commit " << ref << "\ncommitter Ada <ada@example.org> " << 1700000000 + 60 * ++commits_
      << " +0000\ndata 6\nchange\n";
  if (!parent.empty()) out << "from " << parent << "\n";
  out << "deleteall\n";
  for (const auto& [path, content] : files) {
    out << "M 100644 inline " << path << "\ndata " << content.size() << "\n" << content << "\n";
  }
  out.close();
  run({"fast-import", "--quiet"}, "2>&1 < " + quoted(stream));
  return git({"rev-parse", ref});
}

}  // namespace context_delta::test
