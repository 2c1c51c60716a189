#include <algorithm>
#include <array>

#include "utils/git_answers.h"
#include "utils/git_state.h"
#include "utils/git_utils.h"

namespace context_delta::git_utils {
namespace {

constexpr std::size_t READ_BYTES = 256 * 1024;

void check_id(std::string_view id) {
  if (!is_object_id(id)) throw GitHistoryError("not a full object id: " + in_quotes(id));
}

GitHistoryError too_many_files(const Git& git, std::string_view commit) {
  return GitHistoryError("commit " + std::string(commit) + " of " + shown(git.root().string()) +
                         " has more than " + std::to_string(git.limits().tree_files) + " files");
}

}  // namespace

bool lacks_objects(std::string_view errors) {
  constexpr std::array<std::string_view, 7> WORDS = {
      "unable to read",  "could not get object info", "Could not read", "bad object",
      "bad tree object", "could not parse",           "missing"};
  return std::any_of(WORDS.begin(), WORDS.end(), [&](std::string_view words) {
    return errors.find(words) != std::string_view::npos;
  });
}

bool is_partial_clone(const Git& git) {
  std::error_code error;
  const std::filesystem::directory_iterator packs(git.common_directory() / "objects" / "pack",
                                                  error);
  if (error) return false;
  return std::any_of(begin(packs), end(packs), [](const std::filesystem::directory_entry& file) {
    return file.path().extension() == ".promisor";
  });
}

void fail_on_objects(const Git& git, std::string_view what, const Git::Output& output) {
  const std::string where = shown(git.root().string());
  if (!lacks_objects(output.errors)) {
    throw GitHistoryError(std::string(what) + " failed in " + where + ": " +
                          first_words(output.errors));
  }
  if (is_partial_clone(git)) {
    throw GitHistoryError(std::string(what) + " needs objects that the partial clone at " + where +
                          " has not fetched, and nothing is fetched for it: run " +
                          advised(git, "fetch --refetch --no-filter"));
  }
  throw GitHistoryError(std::string(what) + " needs objects that are missing in " + where + " (" +
                        first_words(output.errors) + "): run " + advised(git, "fsck"));
}

std::vector<TreeFile> list_tree(const Git& git, std::string_view commit) {
  check_id(commit);
  std::vector<TreeFile> files;
  std::string rest;
  const auto sink = [&](std::string_view bytes) {
    while (!bytes.empty()) {
      const auto end = bytes.find('\0');
      rest += bytes.substr(0, end);
      if (end == std::string_view::npos) return;
      bytes.remove_prefix(end + 1);
      if (auto file = tree_file(rest)) files.push_back(*std::move(file));
      if (files.size() > git.limits().tree_files) throw too_many_files(git, commit);
      rest.clear();
    }
  };
  const Git::Streamed streamed{
      {{"ls-tree", "-r", "-l", "-z", "--full-tree", std::string(commit)}, View::OBJECTS}, sink};
  const Git::Output output = git.stream(std::span(&streamed, 1)).front();
  if (output.status != 0) fail_on_objects(git, "listing commit " + std::string(commit), output);
  std::stable_sort(files.begin(), files.end(),
                   [](const TreeFile& a, const TreeFile& b) { return a.path < b.path; });
  return files;
}

void read_blobs(const Git& git, std::span<const std::string> objects, std::int64_t most_bytes,
                const std::function<void(std::size_t, std::optional<std::string_view>)>& sink) {
  if (objects.empty()) return;
  std::string input;
  for (const std::string& object : objects) {
    check_id(object);
    input += object + "\n";
  }
  std::size_t answered = 0;
  BlobAnswers answers(most_bytes,
                      [&](std::optional<std::string_view> blob) { sink(answered++, blob); });
  const Git::Streamed streamed{{{"cat-file", "--batch", "--buffer"}, View::OBJECTS, input},
                               [&](std::string_view bytes) { answers.feed(bytes); }};
  const Git::Output output = git.stream(std::span(&streamed, 1)).front();
  if (output.status != 0 || answered != objects.size()) {
    fail_on_objects(git, "reading files", output);
  }
}

struct BlobReader::Process {
  explicit Process(const Git& git)
      : repository(git),
        child(git.state_->prepared({{"cat-file", "--batch"}, View::OBJECTS}),
              subprocess::Input::PIPE),
        buffer(READ_BYTES, '\0') {}

  std::optional<std::string> read(std::string_view object, std::int64_t most_bytes) {
    subprocess::TimeLimit limit(repository.limits().time, repository.limits().cancelled);
    std::optional<std::string> result;
    bool is_answered = false;
    BlobAnswers answers(most_bytes, [&](std::optional<std::string_view> blob) {
      if (blob) result.emplace(*blob);
      is_answered = true;
    });
    child.write(std::string(object) + "\n", limit);
    while (!is_answered) {
      const std::size_t count = child.read(buffer, limit);
      if (count == 0) fail_on_objects(repository, "reading files", {1, {}, child.errors_text()});
      answers.feed(std::string_view(buffer).substr(0, count));
    }
    return result;
  }

  Git repository;  // keeps the temporary folder of the view
  subprocess::Process child;
  std::string buffer;
};

BlobReader::BlobReader(const Git& git) {
  try {
    process_ = std::make_unique<Process>(git);
  } catch (const subprocess::SubprocessError& error) {
    throw GitHistoryError(error.what());
  }
}

BlobReader::~BlobReader() = default;
BlobReader::BlobReader(BlobReader&&) noexcept = default;
BlobReader& BlobReader::operator=(BlobReader&&) noexcept = default;

std::optional<std::string> BlobReader::read(std::string_view object, std::int64_t most_bytes) {
  check_id(object);
  try {
    return process_->read(object, most_bytes);
  } catch (const subprocess::SubprocessError& error) {
    throw GitHistoryError(std::string(error.what()) + " (in " +
                          shown(process_->repository.root().string()) + ")");
  }
}

}  // namespace context_delta::git_utils
