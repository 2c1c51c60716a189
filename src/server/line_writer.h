#pragma once

#include <mutex>
#include <string_view>

#include "utils/subprocess.h"

namespace context_delta::server {

/// Writes whole lines to a descriptor, from several threads.
class LineWriter {
 public:
  /// Once `stop` can be read, what the reader does not take at once is not waited for; once the
  /// other end of `in` is closed, no longer than a second. Negative descriptors never are.
  LineWriter(int descriptor, int stop, int in);

  /// Writes the text and a line feed. After the reader has closed its end, or a line could not be
  /// finished, nothing is written any more.
  void write(std::string_view line);

  /// Can be read from once nothing is written any more.
  int broken() const { return broken_event_.get(); }

 private:
  bool wait_for_room();
  bool put(std::string_view text);
  void give_up();

  int descriptor_;
  int stop_;
  int in_;
  subprocess::FileDescriptor broken_event_;
  std::mutex mutex_;
  bool is_broken_ = false;
};

}  // namespace context_delta::server
