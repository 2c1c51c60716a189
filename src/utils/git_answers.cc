#include "utils/git_answers.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "utils/utf8.h"

namespace context_delta::git_utils {
namespace {

// The answer line of `cat-file --batch`, "ID TYPE SIZE" or "ID missing": the size, null when there
// is no such object.
std::optional<std::size_t> announced_size(std::string_view line) {
  std::size_t size = 0;
  const auto start = line.rfind(' ');
  if (start == std::string_view::npos) return std::nullopt;
  const char* end = line.data() + line.size();
  const auto [stop, error] = std::from_chars(line.data() + start + 1, end, size);
  if (error != std::errc() || stop != end) return std::nullopt;
  return size;
}

}  // namespace

std::optional<TreeFile> tree_file(std::string_view record) {
  const auto tab = record.find('\t');
  const std::string_view fields = record.substr(0, tab);
  if (tab == std::string_view::npos || !fields.starts_with("100")) return std::nullopt;
  const auto id_start = fields.find(' ', 7) + 1;
  const auto id_end = fields.find(' ', id_start);
  if (id_start == 0 || id_end == std::string_view::npos) return std::nullopt;
  const auto size_start = std::min(fields.find_first_not_of(' ', id_end), fields.size());
  TreeFile file{utf8::path_text(record.substr(tab + 1)),
                std::string(fields.substr(id_start, id_end - id_start))};
  std::from_chars(fields.data() + size_start, fields.data() + fields.size(), file.bytes);
  return file;
}

BlobAnswers::BlobAnswers(std::int64_t most_bytes, Sink sink)
    : most_bytes_(static_cast<std::size_t>(std::max<std::int64_t>(most_bytes, 0))),
      sink_(std::move(sink)) {}

void BlobAnswers::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    if (in_body_) {
      take_body(bytes);
    } else {
      take_line(bytes);
    }
  }
}

void BlobAnswers::take_line(std::string_view& bytes) {
  const auto end = bytes.find('\n');
  line_ += bytes.substr(0, end);
  if (end == std::string_view::npos) return bytes.remove_prefix(bytes.size());
  bytes.remove_prefix(end + 1);
  const std::optional<std::size_t> size = announced_size(line_);
  line_.clear();
  if (!size) return sink_(std::nullopt);
  in_body_ = true;
  is_kept_ = *size <= most_bytes_;
  left_ = *size + 1;  // and the line feed after it
}

void BlobAnswers::take_body(std::string_view& bytes) {
  const std::string_view part = bytes.substr(0, left_);
  bytes.remove_prefix(part.size());
  left_ -= part.size();
  if (left_ == 0 && is_kept_ && body_.empty()) {
    sink_(part.substr(0, part.size() - 1));
  } else {
    if (is_kept_) body_ += part;
    if (left_ > 0) return;
    if (is_kept_) body_.pop_back();
    sink_(is_kept_ ? std::optional<std::string_view>(body_) : std::nullopt);
    body_.clear();
  }
  in_body_ = false;
}

}  // namespace context_delta::git_utils
