#include "storage/repository.h"

#include <cstdlib>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "support/git_repository.h"
#include "support/index_dump.h"
#include "support/indexed_repository.h"

namespace context_delta::storage {
namespace {

namespace fs = std::filesystem;

std::string bytes_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

class DamagedIndex : public testing::Test {
 protected:
  DamagedIndex() {
    for (int i = 0; i < 40; ++i) {
      indexed.git.write("f" + std::to_string(i) + ".toy", "def f\n  call g\ndef g\n");
    }
    indexed.git.commit();
    Repository repository(path);
    indexed.update(repository);
    good = test::index_dump(repository.db);
  }

  /// Opens whatever stands at the path, updates, and expects the good index.
  void expect_rebuilt() {
    Repository repository(path);
    indexed.update(repository);
    EXPECT_EQ(test::index_dump(repository.db), good);
  }

  test::IndexedRepository indexed;
  fs::path path = indexed.index_path();
  std::vector<std::string> good;
};

TEST_F(DamagedIndex, FileOfOtherBytesIsReplaced) {
  for (const std::string bytes : {"", "x", "not a database at all", "SQLite format 3"}) {
    write(path, bytes + std::string(bytes.size() * 300, 'z'));
    fs::remove(path.native() + "-wal");
    fs::remove(path.native() + "-shm");
    expect_rebuilt();
  }
}

TEST_F(DamagedIndex, FileCutShortIsReplaced) {
  const std::string whole = bytes_of(path);
  for (const std::size_t length :
       {std::size_t{50}, std::size_t{4096}, whole.size() / 2, whole.size() - 4096}) {
    write(path, std::string_view(whole).substr(0, length));
    expect_rebuilt();
  }
}

TEST_F(DamagedIndex, DamageFoundDuringAnUpdateIsReplaced) {
  const std::string whole = bytes_of(path);
  // The first page, with the tables' names, stays: the damage shows only when tables are read.
  std::string damaged = whole;
  std::fill(damaged.begin() + 4096, damaged.end(), '\xA5');
  write(path, damaged);
  indexed.git.write("f0.toy", "def other\n");
  indexed.git.commit();
  Repository repository(path);
  indexed.update(repository);
  Repository cold(indexed.git.beside() / "cold.sqlite");
  indexed.update(cold);
  EXPECT_EQ(test::difference(test::index_dump(repository.db), test::index_dump(cold.db)), "");
}

/// A frame of the compression that holds these bytes as they are; `size` is what it claims to hold.
std::string frame(std::string_view bytes, std::uint32_t size) {
  std::string made = "\x28\xB5\x2F\xFD\xA0";
  for (int shift = 0; shift < 32; shift += 8) made += static_cast<char>(size >> shift);
  const std::size_t last_block = bytes.size() << 3 | 1;
  for (int shift = 0; shift < 24; shift += 8) made += static_cast<char>(last_block >> shift);
  return made += bytes;
}

TEST_F(DamagedIndex, DamageInsideOfRowsIsReplaced) {
  const std::string far_line = "\x01\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01\x01\x01";
  const std::vector<std::pair<const char*, std::string>> cases = {
      {"UPDATE blobs SET facts = ?1", "x"},
      {"UPDATE blobs SET facts = ?1", frame("\x05", 1)},
      {"UPDATE blobs SET facts = ?1", frame("", 1 << 30)},
      {"UPDATE resolutions SET calls = ?1", frame("\x05", 1)},
      {"UPDATE resolutions SET calls = ?1", frame(far_line + far_line, 26)},
      {"UPDATE resolutions SET uses = ?1", "\x81"},
  };
  for (int i = 0; i < std::ssize(cases); ++i) {
    Repository repository(path);
    Statement(repository.db, cases[static_cast<std::size_t>(i)].first)
        .bind_blob(1, cases[static_cast<std::size_t>(i)].second)
        .run();
    indexed.git.write("f0.toy", "def other" + std::to_string(i) + "\n");
    indexed.git.remove("f" + std::to_string(i + 1) + ".toy");
    indexed.git.commit();
    indexed.update(repository);
    Repository cold(indexed.git.beside() / ("cold" + std::to_string(i) + ".sqlite"));
    indexed.update(cold);
    EXPECT_EQ(test::difference(test::index_dump(repository.db), test::index_dump(cold.db)), "");
  }
}

TEST_F(DamagedIndex, IndexOfAnotherVersionIsReplaced) {
  {
    Repository repository(path);
    repository.db.execute("PRAGMA user_version = 999; DROP TABLE calls; CREATE TABLE x(y)");
  }
  expect_rebuilt();
}

TEST_F(DamagedIndex, ReplacingSparesThoseWhoHaveItOpen) {
  Repository reader(path);
  reader.db.execute("PRAGMA user_version = 999");
  expect_rebuilt();
  EXPECT_EQ(test::index_dump(reader.db), good);
}

TEST(Repository, FilesOfOthersAreLeftAlone) {
  const test::TemporaryFolder folder;
  write(folder.path() / "letter.txt", "Dear Ada");
  EXPECT_THROW(Repository(folder.path() / "letter.txt"), IndexError);
  EXPECT_EQ(bytes_of(folder.path() / "letter.txt"), "Dear Ada");

  const fs::path other = folder.path() / "other.sqlite";
  Database(other).execute("CREATE TABLE mine(x)");
  EXPECT_THROW(Repository{other}, IndexError);
  EXPECT_EQ(Database(other).integer("SELECT count(*) FROM mine"), 0);

  fs::create_symlink(folder.path() / "letter.txt", folder.path() / "link.sqlite");
  EXPECT_THROW(Repository(folder.path() / "link.sqlite"), IndexError);
  EXPECT_EQ(bytes_of(folder.path() / "letter.txt"), "Dear Ada");
}

TEST(Repository, CannotBeCreatedWhereAFileStandsInTheWay) {
  const test::TemporaryFolder folder;
  write(folder.path() / "file", "");
  try {
    Repository(folder.path() / "file" / "index.sqlite");
    FAIL();
  } catch (const IndexError& error) {
    EXPECT_NE(std::string(error.what()).find("--index"), std::string::npos) << error.what();
    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
  }
}

TEST(DefaultIndexPath, IsInTheGitDirectoryUnlessALinkOrPermissionsForbid) {
  const test::TemporaryFolder folder;
  const fs::path git = folder.path() / ".git";
  fs::create_directory(git);
  EXPECT_EQ(default_index_path(git), git / "context-delta" / "index.sqlite");
  fs::create_directory(git / "context-delta");
  EXPECT_EQ(default_index_path(git), git / "context-delta" / "index.sqlite");

  fs::create_symlink(folder.path() / "letter", git / "context-delta" / "index.sqlite");
  EXPECT_NE(default_index_path(git).parent_path().parent_path(), git);
  fs::remove_all(git / "context-delta");
  fs::create_directory_symlink(folder.path(), git / "context-delta");
  const fs::path cache = default_index_path(git);
  EXPECT_NE(cache.parent_path().parent_path(), git);
  EXPECT_EQ(cache.filename(), "index.sqlite");
  EXPECT_NE(cache, default_index_path(folder.path() / "missing" / ".git"));
}

TEST(Cancelling, EndsStatementsThatRunOrWait) {
  const test::TemporaryFolder folder;
  const fs::path path = folder.path() / "index.sqlite";
  std::atomic<bool> cancelled = false;
  const Repository repository(path, &cancelled);
  repository.db.set_patience(3'600'000);

  std::thread stop([&] { cancelled = true; });
  const char* endless =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
      "SELECT count(*) FROM n";
  EXPECT_THROW(repository.db.integer(endless), Cancelled);
  stop.join();

  cancelled = false;
  const Repository other(path);
  Transaction writing(other.db, Transaction::Mode::WRITE);
  stop = std::thread([&] { cancelled = true; });
  EXPECT_THROW(Transaction(repository.db, Transaction::Mode::WRITE), Cancelled);
  stop.join();

  cancelled = false;
  writing.commit();
  EXPECT_NO_THROW(Transaction(repository.db, Transaction::Mode::WRITE));
}

}  // namespace
}  // namespace context_delta::storage
