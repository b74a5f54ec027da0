#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "emulator/sql_row.h"

struct sqlite3;
struct sqlite3_stmt;

namespace qvk::emulator {

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
