#include "indexer/update.h"

#include <csignal>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/index_dump.h"
#include "support/indexed_repository.h"

namespace context_delta::indexer {
namespace {

using storage::IndexError;
using storage::Repository;
using test::difference;
using test::index_dump;

class Update : public testing::Test {
 protected:
  /// Commits `count` files that all call into the first.
  void commit_files(int count, const std::string& function = "f") {
    for (int i = 0; i < count; ++i) {
      indexed.git.write("src/" + std::to_string(i) + ".toy", "include src/0.toy\ndef " + function +
                                                                 std::to_string(i) + "\n  call " +
                                                                 function + "0\n");
    }
    indexed.git.commit();
  }

  std::vector<std::string> cold_dump() {
    Repository cold(indexed.git.beside() / ("cold" + std::to_string(++colds_) + ".sqlite"));
    indexed.update(cold);
    return index_dump(cold.db);
  }

  test::IndexedRepository indexed;

 private:
  int colds_ = 0;
};

TEST_F(Update, DoesNothingWhenTheIndexAnswersAlready) {
  commit_files(3);
  Repository repository(indexed.index_path());
  EXPECT_EQ(repository.commit(), std::nullopt);
  EXPECT_FALSE(indexed.update(repository).up_to_date);
  EXPECT_EQ(repository.commit(), indexed.head());
  const git_utils::Git git(indexed.git.root());
  const std::string head = indexed.head();
  const std::size_t processes = git.processes_started();
  const Repository other(indexed.index_path());
  const storage::Transaction writing(other.db, storage::Transaction::Mode::WRITE);
  EXPECT_TRUE(update(repository, git, head, indexed.options()).up_to_date);
  EXPECT_EQ(git.processes_started(), processes);
}

TEST_F(Update, DispatchesFollowTheirTargets) {
  const std::string has_m = "class A\n  def m\n  def n\n";
  for (const char* path : {"a.toy", "b.toy", "c.toy"}) indexed.git.write(path, has_m);
  for (const char* path : {"u.toy", "v.toy"}) indexed.git.write(path, "call m\ncall m\ncall n\n");
  indexed.git.commit();
  Repository repository(indexed.index_path());
  indexed.update(repository);
  const auto sets = [&] { return repository.db.integer("SELECT count(*) FROM dispatches"); };
  EXPECT_EQ(sets(), 2) << "one a method, whoever calls it";
  struct Step {
    const char* text;
    std::int64_t resolved, sets;
  };
  // Whoever calls a target that has but moved is not resolved again.
  for (const Step& step :
       {Step{"def x\ndef y\nclass A\n  def m\n  def n\n", 1, 2},
        Step{"class A\n  def n\n  def x\n", 3, 2}, Step{"class A\n  def n\n", 1, 2},
        Step{"def n\n", 3, 1}, Step{"class A\n  def m\n  def n\n", 3, 2}}) {
    indexed.git.write("a.toy", step.text);
    indexed.git.commit();
    const UpdateReport report = indexed.update(repository);
    EXPECT_EQ(report.resolved, step.resolved) << step.text;
    EXPECT_EQ(report.again, step.resolved - 1) << step.text;
    EXPECT_EQ(report.in_vain, 0) << step.text;
    EXPECT_EQ(sets(), step.sets) << step.text;
    EXPECT_EQ(difference(cold_dump(), index_dump(repository.db)), "") << step.text;
  }
}

TEST_F(Update, DispatchesThatNoCallNamesAreNotStored) {
  for (const char* path : {"a.toy", "b.toy"}) indexed.git.write(path, "class A\n  def m\n");
  indexed.git.write("c.toy", "type m\n");
  indexed.git.commit();
  Repository repository(indexed.index_path());
  indexed.update(repository);
  EXPECT_EQ(repository.db.integer("SELECT count(*) FROM dispatches"), 0);
}

TEST_F(Update, SwitchingToABranchIndexedBeforeParsesNothing) {
  commit_files(30);
  indexed.git.git({"checkout", "-q", "-b", "side"});
  commit_files(12, "g");
  Repository repository(indexed.index_path());
  EXPECT_EQ(indexed.update(repository).parsed, 30);
  indexed.git.git({"checkout", "-q", "main"});
  EXPECT_EQ(indexed.update(repository).parsed, 12);
  for (const char* branch : {"side", "main", "side"}) {
    indexed.git.git({"checkout", "-q", branch});
    const int parses = test::toy_parses();
    const UpdateReport report = indexed.update(repository);
    EXPECT_EQ(report.parsed, 0);
    EXPECT_EQ(report.reused, 12);
    EXPECT_EQ(test::toy_parses(), parses);
  }
}

TEST_F(Update, ResolvesOnlyWhatAChangeReaches) {
  commit_files(20);
  Repository repository(indexed.index_path());
  indexed.update(repository);
  indexed.git.write("src/7.toy", "include src/0.toy\n\ndef f7\n  call f0\n");
  indexed.git.commit();
  EXPECT_EQ(indexed.update(repository).resolved, 1);
  indexed.git.write("src/0.toy", "def f0\ndef f0\n");
  indexed.git.commit();
  EXPECT_EQ(indexed.update(repository).resolved, 20);
  EXPECT_EQ(difference(index_dump(repository.db), cold_dump()), "");
}

TEST_F(Update, ShiftedDefinitionsKeepTheirCallers) {
  indexed.git.write("a.toy", "def one\ndef two\n");
  // Guesses depend on a name alone, not on the file that defines it.
  indexed.git.write("b.toy", "def caller\n  call one\n  call two\n");
  commit_files(5);
  Repository repository(indexed.index_path());
  indexed.update(repository);
  indexed.git.write("a.toy", "def two\ndef new\n\ndef one\n");
  indexed.git.commit();
  const UpdateReport report = indexed.update(repository);
  EXPECT_EQ(report.resolved, 1);
  EXPECT_EQ(difference(index_dump(repository.db), cold_dump()), "");
}

TEST_F(Update, NamesEverySkippedFile) {
  indexed.git.write("long.toy", "def f\n" + std::string(100, '#') + "\n");
  indexed.git.write("binary.toy", std::string("def f\n\0", 7));
  indexed.git.write("bytes.toy", "def f\n  \xFF\xFE\n");
  indexed.git.write("fine.toy", "def f\n");
  indexed.git.commit();
  UpdateOptions options = indexed.options();
  options.most_file_bytes = 60;
  Repository repository(indexed.index_path());
  const UpdateReport report = indexed.update(repository, options);
  EXPECT_EQ(report.files, 2);
  ASSERT_EQ(report.skipped.size(), 2u);
  EXPECT_EQ(report.skipped[0].path, "binary.toy");
  EXPECT_EQ(report.skipped[0].reason, "binary");
  EXPECT_EQ(report.skipped[1].path, "long.toy");
  EXPECT_EQ(report.skipped[1].reason, "larger than 60 bytes");
  EXPECT_EQ(skipped_files(repository).size(), 2u);
}

TEST_F(Update, ANewerLanguageParsesAgain) {
  commit_files(4);
  Repository repository(indexed.index_path());
  indexed.update(repository);
  const std::array<const Language*, 1> newer = {&test::newer_toy_language()};
  UpdateOptions options;
  options.languages = newer;
  EXPECT_EQ(indexed.update(repository, options).parsed, 4);
  EXPECT_EQ(indexed.update(repository).reused, 4);
}

TEST_F(Update, CancellingLeavesTheIndexAsItWas) {
  commit_files(20);
  Repository repository(indexed.index_path());
  indexed.update(repository);
  const auto before = index_dump(repository.db);
  commit_files(20, "g");
  for (const std::string_view phase : {"parsing", "resolving", "writing"}) {
    std::atomic<bool> cancelled = false;
    UpdateOptions options = indexed.options();
    options.cancelled = &cancelled;
    options.progress = [&](std::string_view now, std::int64_t, std::int64_t) {
      if (now == phase) cancelled = true;
    };
    EXPECT_THROW(indexed.update(repository, options), Cancelled) << phase;
    EXPECT_EQ(index_dump(repository.db), before) << phase;
  }
  indexed.update(repository);
  EXPECT_EQ(difference(index_dump(repository.db), cold_dump()), "");
}

TEST_F(Update, AReaderSeesOneStateUntilItEnds) {
  commit_files(5);
  Repository reader(indexed.index_path());
  indexed.update(reader);
  const auto before = index_dump(reader.db);
  {
    const storage::Transaction reading = reader.begin_reading();
    EXPECT_EQ(reader.commit(), indexed.head());
    commit_files(5, "g");
    Repository writer(indexed.index_path());
    UpdateOptions options = indexed.options();
    options.progress = [&](std::string_view, std::int64_t, std::int64_t) {
      EXPECT_EQ(index_dump(reader.db), before);
    };
    indexed.update(writer, options);
    EXPECT_EQ(index_dump(reader.db), before);
    EXPECT_NE(reader.commit(), indexed.head());
  }
  EXPECT_EQ(reader.commit(), indexed.head());
}

TEST_F(Update, TwoAtOnceTakeTurns) {
  commit_files(40);
  std::vector<UpdateReport> reports(3);
  std::vector<std::thread> threads;
  for (UpdateReport& report : reports) {
    threads.emplace_back([&] {
      Repository repository(indexed.index_path());
      report = indexed.update(repository);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::int64_t parsed = 0;
  for (const UpdateReport& report : reports) parsed += report.parsed;
  EXPECT_EQ(parsed, 40);
  Repository repository(indexed.index_path());
  EXPECT_EQ(difference(index_dump(repository.db), cold_dump()), "");
}

TEST_F(Update, GivesUpWaitingForAnother) {
  commit_files(2);
  Repository holder(indexed.index_path());
  const storage::Transaction held(holder.db, storage::Transaction::Mode::WRITE);
  Repository repository(indexed.index_path());
  UpdateOptions options = indexed.options();
  options.patience_seconds = 0;
  try {
    indexed.update(repository, options);
    FAIL();
  } catch (const IndexError& error) {
    EXPECT_EQ(error.cause, IndexError::Cause::BUSY);
  }
}

TEST_F(Update, SaysThatItWaitsForAnother) {
  commit_files(2);
  Repository holder(indexed.index_path());
  std::optional<storage::Transaction> held(std::in_place, holder.db,
                                           storage::Transaction::Mode::WRITE);
  Repository repository(indexed.index_path());
  UpdateOptions options = indexed.options();
  options.progress = [&](std::string_view phase, std::int64_t, std::int64_t) {
    if (phase == WAITING) held.reset();
  };
  EXPECT_EQ(indexed.update(repository, options).files, 2);
  EXPECT_FALSE(held.has_value());
}

/// Runs `body` in a child process and returns how it ended.
template <class Body>
int in_child(Body body) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      body();
    } catch (...) {
      _exit(3);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST_F(Update, BeingKilledLeavesTheIndexAsItWas) {
  commit_files(30);
  {
    Repository repository(indexed.index_path());
    indexed.update(repository);
  }
  const auto before = cold_dump();
  commit_files(30, "g");
  for (const std::string_view phase : {"parsing", "resolving", "writing"}) {
    for (int when = 1; when <= 21; when += 10) {
      const int status = in_child([&] {
        Repository repository(indexed.index_path());
        // Pages go to the log early, as they do in a large update.
        repository.db.execute("PRAGMA cache_size = 2");
        UpdateOptions options = indexed.options();
        options.progress = [&](std::string_view now, std::int64_t done, std::int64_t total) {
          if (now == phase && (done >= when || done == total)) kill(getpid(), SIGKILL);
        };
        indexed.update(repository, options);
      });
      ASSERT_TRUE(WIFSIGNALED(status)) << phase;
      ASSERT_EQ(index_dump(Repository(indexed.index_path()).db), before) << phase << when;
    }
  }
  Repository repository(indexed.index_path());
  indexed.update(repository);
  EXPECT_EQ(difference(index_dump(repository.db), cold_dump()), "");
}

TEST_F(Update, AFullDiskIsOneClearErrorAndLeavesTheIndexAsItWas) {
  commit_files(10);
  {
    Repository repository(indexed.index_path());
    indexed.update(repository);
  }
  const auto before = cold_dump();
  commit_files(60, "g");
  const int status = in_child([&] {
    Repository repository(indexed.index_path());
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {40 << 10, 40 << 10};
    setrlimit(RLIMIT_FSIZE, &limit);
    try {
      indexed.update(repository);
    } catch (const IndexError& error) {
      const std::string text = error.what();
      const bool clear = text.find("index.sqlite: ") != text.npos && text.find('\n') == text.npos;
      _exit(clear ? 7 : 8);
    }
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
  EXPECT_EQ(index_dump(Repository(indexed.index_path()).db), before);
}

}  // namespace
}  // namespace context_delta::indexer
