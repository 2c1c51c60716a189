#include "storage/schema.h"

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "utils/utf8.h"

namespace context_delta::storage {
namespace {

constexpr std::int64_t APPLICATION_ID = 0x63646978;

constexpr const char* TABLES = R"(
CREATE TABLE state(          -- one row
  id INTEGER PRIMARY KEY CHECK (id = 1),
  commit_id TEXT,            -- the commit that the index answers for; null while it is empty
  languages TEXT,            -- names and versions of the languages it was made with
  generation INTEGER NOT NULL);
CREATE TABLE kinds(id INTEGER PRIMARY KEY, name TEXT NOT NULL);
CREATE TABLE languages(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE claims(         -- the languages that claim a file's name, with their versions
  id INTEGER PRIMARY KEY, text TEXT NOT NULL UNIQUE);
CREATE TABLE notes(          -- how a call is known: the rule or relation, and why it is no proof
  id INTEGER PRIMARY KEY, rule TEXT NOT NULL, why TEXT NOT NULL, UNIQUE (rule, why));

-- Of blobs, whichever commit has them.
CREATE TABLE blobs(
  id INTEGER PRIMARY KEY,
  object BLOB NOT NULL,
  claim INTEGER NOT NULL,    -- claims.id
  language INTEGER,          -- languages.id; null when none accepted the text
  problem TEXT,              -- why the text was not parsed
  unused INTEGER NOT NULL,   -- the generation in which the last file left it; 0 while in use
  facts BLOB NOT NULL,       -- encoded and compressed: all but the references
  reference_facts BLOB NOT NULL,
  UNIQUE (object, claim));

-- Of the commit.
CREATE TABLE files(
  id INTEGER PRIMARY KEY,
  path TEXT NOT NULL UNIQUE,
  object BLOB NOT NULL,
  claim INTEGER NOT NULL,
  blob INTEGER,              -- blobs.id; null when the object could not be read
  language INTEGER,
  problem TEXT,              -- why the file is skipped; null when it is indexed
  symbols INTEGER NOT NULL,  -- symbols that count as changed when their lines are
  "references" INTEGER NOT NULL);  -- proven references from other files
CREATE TABLE resolutions(    -- packed; see the indexer
  file INTEGER PRIMARY KEY,
  symbols INTEGER NOT NULL,  -- of the file, how many
  proven INTEGER NOT NULL,   -- calls out of it
  guessed INTEGER NOT NULL,
  dependencies BLOB NOT NULL,
  calls BLOB NOT NULL,
  uses BLOB NOT NULL);
CREATE TABLE scopes(         -- id: like a symbol's, numbered within the file from 0
  id INTEGER PRIMARY KEY,
  container TEXT NOT NULL,   -- names of the enclosing definitions
  qualifier TEXT NOT NULL,   -- what stands before the name in a qualified name,
  whole INTEGER NOT NULL);   -- or (1) the qualified name itself
CREATE TABLE symbols(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  kind INTEGER NOT NULL,
  scope INTEGER NOT NULL,    -- number of the scope within the file
  first_line INTEGER NOT NULL,
  lines INTEGER NOT NULL,    -- after the first
  traits INTEGER NOT NULL,
  least_arguments INTEGER NOT NULL,
  most_arguments INTEGER NOT NULL,
  signature TEXT NOT NULL);
CREATE TABLE segments(       -- lines whose innermost symbol is this one
  file INTEGER NOT NULL,
  last_line INTEGER NOT NULL,
  symbol INTEGER NOT NULL,   -- number within the file
  first_line INTEGER NOT NULL,
  kind INTEGER NOT NULL,
  PRIMARY KEY (file, last_line, symbol)) WITHOUT ROWID;
CREATE TABLE dispatches(     -- symbols any of which may run for a call
  id INTEGER PRIMARY KEY,
  symbols BLOB NOT NULL UNIQUE);  -- their ids, packed
CREATE TABLE targets(        -- the same, symbol by symbol
  symbol INTEGER NOT NULL,
  dispatch INTEGER NOT NULL,
  PRIMARY KEY (symbol, dispatch)) WITHOUT ROWID;
CREATE INDEX targets_by_dispatch ON targets(dispatch);
CREATE TABLE calls(
  callee INTEGER NOT NULL,   -- a symbol, or (negative) a dispatch
  caller INTEGER NOT NULL,
  line INTEGER NOT NULL,
  evidence INTEGER NOT NULL, -- odd: guessed; see call_evidence()
  PRIMARY KEY (callee, caller, line, evidence)) WITHOUT ROWID;
INSERT INTO state VALUES(1, NULL, NULL, 0);
)";

enum class Content { EMPTY, INDEX, OTHER_VERSION, DAMAGED, FOREIGN };

std::int64_t big_endian(std::string_view bytes, std::size_t offset) {
  std::int64_t number = 0;
  for (const char byte : bytes.substr(offset, 4)) {
    number = number << 8 | static_cast<unsigned char>(byte);
  }
  return number;
}

Content content_by_header(const Database& database) {
  const std::string header = database.header();
  if (header.empty()) return Content::EMPTY;
  if (header.size() < 100 || !header.starts_with(std::string_view("SQLite format 3\0", 16))) {
    return database.path().extension() == ".sqlite" ? Content::DAMAGED : Content::FOREIGN;
  }
  return Content::INDEX;
}

/// Whether pages are missing at the end. What is still in the log counts as there.
bool is_cut_short(const Database& database) {
  std::error_code error;
  const auto log = std::filesystem::file_size(database.path().native() + "-wal", error);
  const std::string header = database.header();
  if ((!error && log > 0) || header.empty()) return false;
  const std::int64_t page = big_endian(header, 16) >> 16;
  return database.file_size() < (page == 1 ? 65536 : page) * big_endian(header, 28);
}

Content content(const Database& database) {
  // A new index is in the log alone until its first checkpoint: SQLite must be asked too.
  const Content header = content_by_header(database);
  if (header == Content::FOREIGN || header == Content::DAMAGED) return header;
  try {
    // Another process may make the index between two statements, tables and id at once: the tables
    // are counted first, so that no table without its id is ever seen.
    const std::int64_t tables = database.integer("SELECT count(*) FROM sqlite_master");
    const std::int64_t application = database.integer("PRAGMA application_id");
    if (application == 0 && tables == 0) return Content::EMPTY;
    if (application != APPLICATION_ID) return Content::FOREIGN;
    if (database.integer("PRAGMA user_version") != SCHEMA_VERSION) return Content::OTHER_VERSION;
    if (is_cut_short(database)) return Content::DAMAGED;
    database.integer("SELECT generation FROM state");
    return Content::INDEX;
  } catch (const IndexError& error) {
    if (error.cause == IndexError::Cause::DAMAGED) return Content::DAMAGED;
    throw;
  }
}

/// Keeps other processes from replacing an index of the same folder.
class FolderLock {
 public:
  FolderLock(const std::filesystem::path& folder, CancelFlag cancelled)
      : descriptor_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    // A file system without locks still has SQLite's own: at worst one update is done twice.
    while (descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK &&
           !is_cancelled(cancelled)) {
      std::this_thread::sleep_for(PAUSE);
    }
  }
  ~FolderLock() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  static constexpr auto PAUSE = std::chrono::milliseconds(5);
  int descriptor_;
};

void create_tables(const Database& database) {
  Transaction transaction(database, Transaction::Mode::WRITE);
  database.execute(TABLES);
  create_indexes(database);
  database.execute(("PRAGMA application_id = " + std::to_string(APPLICATION_ID)).c_str());
  database.execute(("PRAGMA user_version = " + std::to_string(SCHEMA_VERSION)).c_str());
  transaction.commit();
}

void make_index(const Database& database) {
  const FolderLock lock(database.path().parent_path(), database.cancelled());
  const Content found = content(database);  // another process may have been first
  if (found == Content::INDEX) return;
  if (found != Content::EMPTY) database.reset();
  database.execute("PRAGMA journal_mode = WAL");
  create_tables(database);
}

}  // namespace

void prepare_index(const Database& database) {
  const Content found = content(database);
  if (found == Content::FOREIGN) {
    throw IndexError("the file " + utf8::path_text(database.path().native()) +
                         " is not an index: remove it or name another file with --index",
                     IndexError::Cause::OTHER);
  }
  if (found != Content::INDEX) make_index(database);
  database.execute("PRAGMA synchronous = NORMAL");
  database.execute("PRAGMA temp_store = MEMORY");
}

void create_indexes(const Database& database) {
  database.execute("CREATE INDEX IF NOT EXISTS symbols_by_name ON symbols(name)");
}

void drop_indexes(const Database& database) {
  database.execute("DROP INDEX IF EXISTS symbols_by_name");
}

}  // namespace context_delta::storage
