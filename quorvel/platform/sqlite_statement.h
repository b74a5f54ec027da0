#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace quorvel::platform {

// A prepared statement that finalizes itself. Bind indexes start at 1,
// column indexes at 0, as in SQLite. A failure that says the file is damaged
// is handed to the connection's SqliteDatabase, which replaces the file: this
// statement then fails, and the owner's next one runs on the fresh file.
class SqliteStatement {
 public:
  SqliteStatement(sqlite3* db, const char* sql);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  bool valid() const { return stmt_ != nullptr; }

  void bind(int index, std::string_view text);
  // Without a copy: `text` must stay unchanged until the statement has run.
  void bindUnowned(int index, std::string_view text);
  void bindBlob(int index, std::string_view bytes);
  void bind(int index, std::int64_t number);
  void bind(int index, double number);
  void bindNull(int index);

  // True while a row is available.
  bool step();
  // True when the statement ran to completion.
  bool run();
  void reset();

  std::string text(int column) const;
  std::int64_t integer(int column) const;
  double real(int column) const;
  bool isNull(int column) const;

 private:
  // sqlite3_step, with a failure told to the connection's database.
  int stepOnce();

  sqlite3_stmt* stmt_ = nullptr;
};

}  // namespace quorvel::platform
