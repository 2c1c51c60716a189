#include "storage/database.h"

#include <algorithm>
#include <system_error>

#include <sqlite3.h>

#include "utils/utf8.h"

namespace context_delta::storage {
namespace {

IndexError::Cause cause_of(int code) {
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return IndexError::Cause::BUSY;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return IndexError::Cause::DAMAGED;
    default:
      return IndexError::Cause::OTHER;
  }
}

/// How many steps of SQLite's machine pass between two looks at the flag: far below a millisecond.
constexpr int STEPS_UNSEEN = 4000;

/// Of a statement that inserts many, and what serves the rest of them.
constexpr std::size_t ROWS_A_STATEMENT[] = {64, 8, 1};

/// Between two tries for a lock that another process holds.
constexpr int BUSY_PAUSE_MILLISECONDS = 10;

std::string reason(sqlite3* handle, int code) {
  switch (code & 0xFF) {
    case SQLITE_BUSY:
      return "another process is updating it";
    case SQLITE_FULL:
      return "the disk is full";
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return "no permission to write; name another file with --index";
    case SQLITE_CANTOPEN:
      return "the file cannot be opened; name another file with --index";
    case SQLITE_IOERR: {
      const int number = handle == nullptr ? 0 : sqlite3_system_errno(handle);
      return number == 0 ? sqlite3_errstr(code) : std::generic_category().message(number);
    }
    default:
      return handle == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(handle);
  }
}

/// The path with the links of its folder resolved: only the file itself may not be a link.
std::filesystem::path without_links(const std::filesystem::path& path) {
  std::error_code error;
  const auto folder = std::filesystem::canonical(
      path.has_parent_path() ? path.parent_path() : std::filesystem::path("."), error);
  return error ? path : folder / path.filename();
}

}  // namespace

void Database::Close::operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }

int Database::Watch::on_progress(void* watch) {
  return is_cancelled(static_cast<const Watch*>(watch)->cancelled) ? 1 : 0;
}

int Database::Watch::on_busy(void* data, int attempts) {
  const auto& watch = *static_cast<const Watch*>(data);
  if (is_cancelled(watch.cancelled)) return 0;
  if (attempts >= watch.patience_milliseconds / BUSY_PAUSE_MILLISECONDS) return 0;
  sqlite3_sleep(BUSY_PAUSE_MILLISECONDS);
  return 1;
}

Database::Database(const std::filesystem::path& path, CancelFlag cancelled)
    : path_(without_links(path)), watch_(new Watch{cancelled}) {
  sqlite3* handle = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX |
                    SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE;
  const int code = sqlite3_open_v2(path_.c_str(), &handle, flags, nullptr);
  handle_.reset(handle);
  if (code != SQLITE_OK) fail("open", code);
  if (cancelled != nullptr) {
    sqlite3_progress_handler(handle, STEPS_UNSEEN, Watch::on_progress, watch_.get());
    sqlite3_busy_handler(handle, Watch::on_busy, watch_.get());
  }
  set_patience(PATIENCE_MILLISECONDS);
}

void Database::execute(const char* sql) const {
  const int code = sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail("update", code);
}

std::int64_t Database::integer(const char* sql) const {
  Statement statement(*this, sql);
  return statement.step() ? statement.integer(0) : 0;
}

void Database::set_patience(int milliseconds) const {
  watch_->patience_milliseconds = milliseconds;
  if (watch_->cancelled == nullptr) sqlite3_busy_timeout(handle(), milliseconds);
}

std::int64_t Database::file_size() const {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  sqlite3_int64 size = 0;
  const int code = file->pMethods->xFileSize(file, &size);
  if (code != SQLITE_OK) fail("read", code);
  return size;
}

std::string Database::header() const {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  std::string bytes(static_cast<std::size_t>(std::min<std::int64_t>(file_size(), 100)), '\0');
  if (bytes.empty()) return bytes;
  const int code = file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), 0);
  if (code != SQLITE_OK) fail("read", code);
  return bytes;
}

void Database::reset() const {
  sqlite3_db_config(handle(), SQLITE_DBCONFIG_RESET_DATABASE, 1, nullptr);
  const int code = sqlite3_exec(handle(), "VACUUM", nullptr, nullptr, nullptr);
  sqlite3_db_config(handle(), SQLITE_DBCONFIG_RESET_DATABASE, 0, nullptr);
  if (code != SQLITE_OK) fail("replace", code);
}

void Database::fail(std::string_view action, int code) const {
  check_cancelled(cancelled());
  throw IndexError("cannot " + std::string(action) + " the index " +
                       utf8::path_text(path_.native()) + ": " + reason(handle(), code),
                   cause_of(code));
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Statement::Statement(const Database& database, std::string_view sql) : database_(&database) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                      &statement, nullptr);
  statement_.reset(statement);
  check(code);
}

void Statement::check(int code) const {
  if (code != SQLITE_OK) database_->fail("use", code);
}

Statement& Statement::bind(int parameter, std::int64_t value) {
  check(sqlite3_bind_int64(statement_.get(), parameter, value));
  return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
  check(sqlite3_bind_text64(statement_.get(), parameter, text.data() == nullptr ? "" : text.data(),
                            text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

Statement& Statement::bind_blob(int parameter, std::string_view bytes) {
  check(sqlite3_bind_blob64(statement_.get(), parameter,
                            bytes.data() == nullptr ? "" : bytes.data(), bytes.size(),
                            SQLITE_STATIC));
  return *this;
}

Statement& Statement::bind_null(int parameter) {
  check(sqlite3_bind_null(statement_.get(), parameter));
  return *this;
}

bool Statement::step() {
  check_cancelled(database_->cancelled());
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  sqlite3_reset(statement_.get());
  database_->fail("use", code);
}

void Statement::reset() { sqlite3_reset(statement_.get()); }

void Statement::run() {
  while (step()) continue;
  reset();
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string_view Statement::text(int column) const {
  const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (data == nullptr) return {};
  return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

std::string_view Statement::blob(int column) const {
  const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  if (data == nullptr) return {};
  return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

bool Statement::is_null(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

RowInserter::RowInserter(const Database& database, std::string_view insert, int columns)
    : columns_(columns) {
  std::string row = "(?";
  for (int i = 1; i < columns; ++i) row += ", ?";
  row += ')';
  for (const std::size_t rows : ROWS_A_STATEMENT) {
    std::string sql = std::string(insert) + " VALUES" + row;
    for (std::size_t i = 1; i < rows; ++i) sql += ", " + row;
    batches_.push_back({rows, Statement(database, sql)});
  }
}

Transaction::Transaction(const Database& database, Mode mode) : database_(&database) {
  database.execute(mode == Mode::WRITE ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
  // A failed statement may have rolled back already, so a failure here means nothing.
  if (database_ != nullptr)
    sqlite3_exec(database_->handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
  database_->execute("COMMIT");
  database_ = nullptr;
}

}  // namespace context_delta::storage
