#pragma once

#include <filesystem>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace quorvel {

// One SQLite connection for one of the core library's stores (session,
// HTTP cache, blip queue). The file is made readable by the user only and
// kept in WAL mode. A file that is not a usable database is moved aside with
// an error logged, and a fresh one made; if no file can be made at all the
// store lives in memory for this process. Not thread-safe: its owner locks.
class SqliteDatabase {
 public:
  // `schema` is run on every open (CREATE TABLE IF NOT EXISTS ...).
  SqliteDatabase(std::filesystem::path file, std::string schema);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  sqlite3* handle() const { return db_; }
  bool persistent() const { return persistent_; }
  const std::filesystem::path& path() const { return path_; }

  bool execute(const char* sql);

 private:
  bool open(const std::string& target);
  void close();
  void moveAside();

  std::filesystem::path path_;
  std::string schema_;
  sqlite3* db_ = nullptr;
  bool persistent_ = false;
};

}  // namespace quorvel
