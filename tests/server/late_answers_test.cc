#include <future>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "server/calls.h"
#include "server/line_writer.h"

namespace context_delta::server {
namespace {

std::string read_part(int descriptor) {
  std::string text(100, '\0');
  const ssize_t count = read(descriptor, text.data(), text.size());
  text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return text;
}

TEST(LateAnswers, AreKeptBackAlthoughTheWorkWasDone) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  LineWriter writer(ends[1], -1, -1);
  std::optional<Calls> calls(std::in_place, writer);
  std::promise<void> started;
  std::promise<void> released;
  calls->start("1", [&](CancelFlag) {
    started.set_value();
    released.get_future().wait();
    return std::string("late");
  });
  started.get_future().wait();
  calls->cancel("1");
  calls->start("1", [](CancelFlag) { return std::string("of the same id"); });
  EXPECT_EQ(read_part(ends[0]), "of the same id\n");
  released.set_value();
  calls.reset();
  close(ends[1]);
  EXPECT_EQ(read_part(ends[0]), "");
  close(ends[0]);
}

}  // namespace
}  // namespace context_delta::server
