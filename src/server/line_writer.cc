#include "server/line_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace context_delta::server {
namespace {

/// For a reader that has nothing more to say.
constexpr int LAST_MILLISECONDS = 1000;

}  // namespace

LineWriter::LineWriter(int descriptor, int stop, int in)
    : descriptor_(descriptor),
      stop_(stop),
      in_(in),
      broken_event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void LineWriter::write(std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (is_broken_) return;
  std::string text(line);
  text += '\n';
  if (!put(text)) give_up();
}

bool LineWriter::put(std::string_view text) {
  while (!text.empty()) {
    if (!wait_for_room()) return false;
    // What poll() has found room for is taken at once; more could wait for the reader.
    const ssize_t count =
        ::write(descriptor_, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      return false;
    }
  }
  return true;
}

bool LineWriter::wait_for_room() {
  bool is_ending = false;
  while (true) {
    std::array<pollfd, 3> waiting = {
        {{descriptor_, POLLOUT, 0}, {stop_, POLLIN, 0}, {is_ending ? -1 : in_, POLLRDHUP, 0}}};
    const int ready = poll(waiting.data(), waiting.size(), is_ending ? LAST_MILLISECONDS : -1);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    if (waiting[0].revents != 0) return (waiting[0].revents & POLLOUT) != 0;
    if (waiting[1].revents != 0) return false;
    is_ending = true;
  }
}

void LineWriter::give_up() {
  is_broken_ = true;
  const std::uint64_t one = 1;
  // An event that cannot be counted up has been seen already.
  [[maybe_unused]] const ssize_t ignored = ::write(broken_event_.get(), &one, sizeof one);
}

}  // namespace context_delta::server
