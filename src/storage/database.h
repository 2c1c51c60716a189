#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "utils/cancellation.h"

struct sqlite3;
struct sqlite3_stmt;

/// A thin layer over SQLite: handles that close themselves, errors as exceptions.
namespace context_delta::storage {

/// How long a statement waits for another process, unless set_patience() says otherwise.
inline constexpr int PATIENCE_MILLISECONDS = 10000;

/// The index cannot be opened, read or written. The text is one line: what failed, on which file,
/// and why.
class IndexError : public std::runtime_error {
 public:
  enum class Cause { OTHER, BUSY, DAMAGED };
  IndexError(const std::string& text, Cause reason) : std::runtime_error(text), cause(reason) {}
  /// BUSY: another process is updating the index. DAMAGED: the file is no (whole) database.
  Cause cause;
};

/// A connection to one database file. Not for use by two threads at once.
class Database {
 public:
  /// Opens `path`, a file that may not be a symbolic link, creating it when there is none. Once
  /// `cancelled` is set, statements under way, waiting ones included, raise Cancelled.
  explicit Database(const std::filesystem::path& path, CancelFlag cancelled = nullptr);

  const std::filesystem::path& path() const { return path_; }
  sqlite3* handle() const { return handle_.get(); }
  CancelFlag cancelled() const { return watch_->cancelled; }

  /// Runs statements that return no rows.
  void execute(const char* sql) const;
  /// The first column of the only row of a query.
  std::int64_t integer(const char* sql) const;
  /// How long a statement waits for another process before it raises BUSY.
  void set_patience(int milliseconds) const;
  /// The first 100 bytes of the file as they are on disk (fewer of a shorter file) and its size.
  /// Read through SQLite, since closing a file of one's own would drop the locks of this process.
  std::string header() const;
  std::int64_t file_size() const;
  /// Empties the database whatever its content, damaged content included; safe while other
  /// processes have it open.
  void reset() const;
  /// Raises the IndexError for the last failure: "cannot ACTION the index PATH: reason", or
  /// Cancelled when that is why.
  [[noreturn]] void fail(std::string_view action, int code) const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };
  /// What SQLite's callbacks look at, so at one address for as long as the connection lives.
  struct Watch {
    CancelFlag cancelled = nullptr;
    int patience_milliseconds = 0;
    static int on_progress(void* watch);
    static int on_busy(void* watch, int attempts);
  };
  std::filesystem::path path_;
  std::unique_ptr<Watch> watch_;
  std::unique_ptr<sqlite3, Close> handle_;
};

/// A prepared statement. Parameters and columns are counted as SQLite does: parameters from 1,
/// columns from 0. Texts and blobs are bound without a copy: they must live until the next reset.
class Statement {
 public:
  Statement(const Database& database, std::string_view sql);

  Statement& bind(int parameter, std::int64_t value);
  Statement& bind(int parameter, std::string_view text);
  Statement& bind_blob(int parameter, std::string_view bytes);
  Statement& bind_null(int parameter);

  /// Moves to the next row; false when there is none.
  bool step();
  /// Makes the statement ready to run again. Bindings stay.
  void reset();
  /// Runs a statement that returns no rows, to its end.
  void run();

  std::int64_t integer(int column) const;
  /// Text and blobs are valid until the next step or reset.
  std::string_view text(int column) const;
  std::string_view blob(int column) const;
  bool is_null(int column) const;

 private:
  void check(int code) const;
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  const Database* database_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// Inserts rows into a table, many with one statement: a run of a statement costs more than a row.
class RowInserter {
 public:
  /// `insert`: the statement up to its VALUES, as "INSERT INTO calls". Rows have `columns` values.
  RowInserter(const Database& database, std::string_view insert, int columns);

  /// Inserts rows 0 to `count` - 1 in this order. `bind_row(statement, parameter, index)` binds the
  /// values of a row to the parameters that begin with `parameter`.
  template <class BindRow>
  void insert(std::size_t count, BindRow bind_row) {
    std::size_t next = 0;
    for (Batch& batch : batches_) {
      for (; count - next >= batch.rows; next += batch.rows) {
        for (std::size_t i = 0; i < batch.rows; ++i) {
          bind_row(batch.statement, 1 + static_cast<int>(i) * columns_, next + i);
        }
        batch.statement.run();
      }
    }
  }

 private:
  struct Batch {
    std::size_t rows;
    Statement statement;
  };
  int columns_;
  std::vector<Batch> batches_;  // the last is of one row
};

/// A transaction: rolled back when destroyed without a commit.
class Transaction {
 public:
  enum class Mode { READ, WRITE };
  /// READ: everything read until the end is one state of the index, whoever writes meanwhile.
  /// WRITE: waits for other writers as long as the database's patience lasts.
  Transaction(const Database& database, Mode mode);
  ~Transaction();
  Transaction(Transaction&& other) noexcept : database_(other.database_) {
    other.database_ = nullptr;
  }
  Transaction& operator=(Transaction&&) = delete;

  void commit();

 private:
  const Database* database_;
};

}  // namespace context_delta::storage
