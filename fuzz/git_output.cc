#include <algorithm>
#include <iterator>
#include <vector>

#include "fuzz/require.h"
#include "utils/git_answers.h"
#include "utils/git_utils.h"
#include "utils/utf8.h"
#include "wiki/change_log.h"
#include "workers/diff_parser.h"

// What git may print, or an attacker make it print: the first byte says of which command, the
// second how long the pieces are in which it comes. The answer must not depend on the pieces.
using namespace context_delta;

namespace {

template <class Parser>
void feed(Parser& parser, std::string_view bytes, std::size_t piece) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    parser.feed(bytes.substr(0, piece));
  }
}

std::string diff(std::string_view bytes, std::size_t piece) {
  std::string text;
  try {
    git_history::DiffParser parser;
    feed(parser, bytes, piece);
    for (const git_history::DiffFile& file : parser.finish()) {
      const git_utils::FileChange& change = file.change;
      fuzz::require(utf8::is_valid(change.path), "paths are texts");
      fuzz::require(change.additions >= 0 && change.deletions >= 0, "lines are counted");
      text += change.path + "|" + change.status + "|" + change.old_path.value_or("-");
      text += std::to_string(change.additions) + "," + std::to_string(change.deletions);
      for (const git_utils::LineSpan& span : file.spans) {
        fuzz::require(span.start >= 0 && span.end >= span.start, "spans have lines");
        text += " " + std::to_string(span.start) + "-" + std::to_string(span.end);
      }
    }
  } catch (const git_utils::GitHistoryError& error) {
    text = error.what();
    fuzz::require(text.find('\n') == text.npos && utf8::is_valid(text), "errors are one line");
    return "";  // a name that is too long is told sooner when it comes in pieces
  }
  return text;
}

std::string blobs(std::string_view bytes, std::size_t piece) {
  std::string text;
  git_utils::BlobAnswers answers(100, [&](std::optional<std::string_view> blob) {
    fuzz::require(!blob || blob->size() <= 100, "long blobs are not kept");
    text += blob ? "[" + std::string(*blob) + "]" : std::string("null");
  });
  feed(answers, bytes, piece);
  return text;
}

struct Log final : wiki::LogReader {
  Log() : wiki::LogReader("HEAD") {}
  void commit(const wiki::LoggedCommit& commit) override {
    text += "commit " + commit.id + " " + commit.compared + (commit.by_head ? "!" : "");
    for (const std::string& parent : commit.parents) text += " " + parent;
  }
  void change(std::string_view path, bool deleted) override {
    text += (deleted ? "-" : "+") + std::string(path);
  }
  std::string text;
};

std::string log(std::string_view bytes, std::size_t piece) {
  Log log;
  feed(log, bytes, piece);
  log.finish_log();
  return log.text;
}

std::string tree(std::string_view bytes, std::size_t) {
  std::string text;
  while (!bytes.empty()) {
    const auto file = git_utils::tree_file(fuzz::take_part(bytes, '\0'));
    if (!file) continue;
    fuzz::require(utf8::is_valid(file->path), "paths are texts");
    text += file->path + " " + file->object + " " + std::to_string(file->bytes);
  }
  return text;
}

std::string commits(std::string_view bytes, std::size_t) {
  std::string text;
  for (const auto& id : git_utils::commits_found({0, std::string(bytes), {}})) {
    fuzz::require(!id || git_utils::is_object_id(*id), "what is found is an id");
    text += id.value_or("-");
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::string (*READERS[])(std::string_view, std::size_t) = {diff, blobs, log, tree,
                                                                       commits};
  std::string_view bytes = fuzz::text_of(data, size);
  const auto read = READERS[fuzz::take_byte(bytes) % std::size(READERS)];
  const std::size_t piece = 1 + fuzz::take_byte(bytes) % 64;
  fuzz::require(read(bytes, bytes.size() + 1) == read(bytes, piece), "pieces make no difference");
  return 0;
}
