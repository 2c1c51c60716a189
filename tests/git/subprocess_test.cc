#include "utils/subprocess.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "support/git_repository.h"

namespace context_delta::subprocess {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds AMPLE{120'000};

Task shell(const std::string& script, std::string& out, std::string input = "") {
  return {{"/bin/sh", {"-c", script}, {"PATH=/usr/bin:/bin", "GIVEN=yes"}},
          std::move(input),
          [&out](std::string_view part) { out += part; }};
}

std::ptrdiff_t open_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

std::string message_of(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no error";
}

class Subprocess : public testing::Test {
 protected:
  // Nothing may be left behind, whatever the test does.
  void TearDown() override {
    EXPECT_EQ(open_descriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not reaped";
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    for (int signal = 1; signal < NSIG; ++signal) EXPECT_EQ(sigismember(&blocked, signal), 0);
  }
  std::ptrdiff_t descriptors_ = open_descriptors();
};

TEST_F(Subprocess, SeesOnlyWhatItIsGiven) {
  setenv("INHERITED", "no", 1);
  std::string out;
  const Task task = shell("env | grep -E 'GIVEN|INHERITED'; cat; ls /proc/self/fd | wc -l", out);
  const auto endings = run(std::span(&task, 1), AMPLE);
  EXPECT_EQ(endings[0].status, 0);
  EXPECT_EQ(out, "GIVEN=yes\n4\n");  // 0, 1, 2 and the folder that ls reads
}

TEST_F(Subprocess, HasNoSignalsBlocked) {
  sigset_t terminate, before;
  sigemptyset(&terminate);
  sigaddset(&terminate, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &terminate, &before);
  std::string out;
  const Task task = shell("kill -TERM $$; echo blocked", out);
  const auto endings = run(std::span(&task, 1), AMPLE);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(endings[0].status, 128 + SIGTERM);
  EXPECT_EQ(out, "");
}

TEST_F(Subprocess, TakesNoMoreMemoryThanItMay) {
  std::string out;
  Task task = shell("a=0123456789abcdef; while :; do a=$a$a; done", out);
  task.command.most_memory = 32 << 20;
  EXPECT_NE(run(std::span(&task, 1), AMPLE)[0].status, 0);
}

TEST_F(Subprocess, MovesMoreThanAnyPipeHoldsInAllDirectionsAtOnce) {
  const std::string much(3'000'000, 'x');
  std::string first, second;
  const Task tasks[] = {shell("tee /dev/stderr", first, much),
                        shell("head -c 5000000 /dev/zero; exit 7", second)};
  const auto endings = run(tasks, AMPLE);
  EXPECT_EQ(first, much);
  EXPECT_EQ(endings[0].errors, much.substr(0, 16 * 1024));
  EXPECT_EQ(second.size(), 5'000'000u);
  EXPECT_EQ(endings[1].status, 7);
}

TEST_F(Subprocess, MayStopReadingOrDieBySignal) {
  const std::string much(3'000'000, 'x');
  std::string out;
  const Task tasks[] = {shell("exec head -c 1", out, much), shell("kill -TERM $$", out)};
  const auto endings = run(tasks, AMPLE);
  EXPECT_EQ(out, "x");
  EXPECT_EQ(endings[0].status, 0);
  EXPECT_EQ(endings[1].status, 128 + SIGTERM);
}

TEST_F(Subprocess, IsKilledAtItsTimeLimitAndByAnExceptionOfTheSink) {
  std::string out;
  const Task slow[] = {shell("exec sleep 1000", out), shell("exec sleep 1000 >&- 2>&-", out)};
  EXPECT_EQ(message_of([&] { run(slow, milliseconds(50)); }),
            "sh: stopped at its time limit of 1 s");
  const Task closed = shell("exec sleep 1000 >&- 2>&-", out);
  EXPECT_EQ(message_of([&] { run(std::span(&closed, 1), milliseconds(50)); }),
            "sh: stopped at its time limit of 1 s");
  const Task endless{{"/bin/sh", {"-c", "exec cat /dev/zero"}, {}}, "", [](std::string_view) {
                       throw std::runtime_error("enough");
                     }};
  EXPECT_EQ(message_of([&] { run(std::span(&endless, 1), AMPLE); }), "enough");
}

TEST_F(Subprocess, IsEndedOnceItIsNotWanted) {
  std::atomic<bool> cancelled = false;
  std::string out;
  const auto sink = [&](std::string_view part) {
    out += part;
    cancelled = true;
  };
  for (const std::string script : {"echo x; exec sleep 1000", "echo x; exec sleep 1000 >&- 2>&-"}) {
    cancelled = false;
    const Task task{{"/bin/sh", {"-c", script}, {"PATH=/usr/bin:/bin"}}, "", sink};
    EXPECT_THROW(run(std::span(&task, 1), {AMPLE, &cancelled}), Cancelled) << script;
  }
  EXPECT_EQ(out, "x\nx\n");
}

TEST_F(Subprocess, ThatCannotBeStartedIsAnError) {
  std::string out;
  const Task tasks[] = {shell("exec sleep 1000", out),
                        {{"/nonexistent/program", {}, {}}, "", [](std::string_view) {}}};
  EXPECT_EQ(message_of([&] { run(tasks, AMPLE); }),
            "program: cannot be started: No such file or directory");
}

TEST_F(Subprocess, AnswersLineByLineAndTellsWhenItIsGone) {
  Process process({"/bin/sh", {"-c", "read a; echo got $a; echo why >&2"}, {}}, Input::PIPE);
  TimeLimit limit(AMPLE);
  process.write("one\n", limit);
  std::string buffer(100, '\0');
  buffer.resize(process.read(buffer, limit));
  EXPECT_EQ(buffer, "got one\n");
  EXPECT_EQ(process.wait(limit), 0);
  EXPECT_EQ(message_of([&] { process.write("two\n", limit); }), "sh: ended too early");
}

TEST_F(Subprocess, IsFoundInAbsoluteFoldersOfThePathOnly) {
  const test::TemporaryFolder folder;
  const auto program = folder.path() / "some-program";
  std::ofstream(program) << "#!/bin/sh\n";
  const std::string path = std::getenv("PATH");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  setenv("PATH", (".::" + folder.path().string() + "/none").c_str(), 1);
  std::filesystem::permissions(program, std::filesystem::perms(0755));
  EXPECT_EQ(find_program("some-program"), std::nullopt);
  setenv("PATH", (".::" + folder.path().string()).c_str(), 1);
  EXPECT_EQ(find_program("some-program"), program);
  setenv("PATH", path.c_str(), 1);
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace context_delta::subprocess
