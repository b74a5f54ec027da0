#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace qvk::emulator {

// Raw bytes, bound and read as an SQLite BLOB rather than TEXT.
struct Blob {
  std::string bytes;
};

using SqlValue = std::variant<std::nullptr_t, std::int64_t, double, std::string, Blob>;

// One result row; columns in SELECT order.
class SqlRow {
 public:
  explicit SqlRow(std::vector<SqlValue> values) : values_(std::move(values)) {}
  bool isNull(std::size_t i) const { return std::holds_alternative<std::nullptr_t>(values_[i]); }
  std::int64_t integer(std::size_t i) const;
  double real(std::size_t i) const;
  // TEXT and BLOB columns alike; NULL gives "".
  std::string text(std::size_t i) const;
  std::optional<std::int64_t> optionalInteger(std::size_t i) const;

 private:
  std::vector<SqlValue> values_;
};

// Raised for SQL that fails: a programming error in the emulator, turned into
// a 500 answer by the server's exception handler.
class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The emulator's one SQLite connection. Every call takes the connection's
// recursive mutex, so handlers on the server's worker threads may call it
// freely; a handler that needs several statements to be atomic holds lock()
// around them. Prepared statements are cached by their SQL text.
class Database {
 public:
  // ":memory:" or a file name; throws DatabaseError when it cannot be opened.
  explicit Database(const std::string& path);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  std::vector<SqlRow> query(std::string_view sql, const std::vector<SqlValue>& params = {});
  std::optional<SqlRow> queryOne(std::string_view sql, const std::vector<SqlValue>& params = {});
  // Runs a statement; answers the number of changed rows.
  std::int64_t execute(std::string_view sql, const std::vector<SqlValue>& params = {});
  // Runs a script of several statements without parameters.
  void script(const std::string& sql);
  std::int64_t lastInsertId();

  std::unique_lock<std::recursive_mutex> lock() {
    return std::unique_lock<std::recursive_mutex>(mutex_);
  }

 private:
  sqlite3_stmt* prepare(std::string_view sql);
  void bind(sqlite3_stmt* stmt, const std::vector<SqlValue>& params);
  [[noreturn]] void fail(std::string_view what);

  std::recursive_mutex mutex_;
  sqlite3* db_ = nullptr;
  std::unordered_map<std::string, sqlite3_stmt*> statements_;
};

}  // namespace qvk::emulator
