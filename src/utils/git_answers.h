#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "utils/git_utils.h"

/// What git prints of objects.
namespace context_delta::git_utils {

/// One record of `ls-tree -r -l -z`, "MODE TYPE ID SIZE\tPATH"; null for what is no regular file.
std::optional<TreeFile> tree_file(std::string_view record);

/// Cuts the output of `cat-file --batch` into answers as it comes.
class BlobAnswers {
 public:
  /// Takes the bytes of an object, null of one that is not there or longer than `most_bytes`. The
  /// bytes are good during the call only.
  using Sink = std::function<void(std::optional<std::string_view>)>;
  BlobAnswers(std::int64_t most_bytes, Sink sink);

  void feed(std::string_view bytes);

 private:
  void take_line(std::string_view& bytes);
  void take_body(std::string_view& bytes);

  std::size_t most_bytes_;
  Sink sink_;
  std::string line_, body_;
  std::size_t left_ = 0;
  bool in_body_ = false;
  bool is_kept_ = false;
};

}  // namespace context_delta::git_utils
