#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

struct sqlite3;

namespace quorvel::platform {

// One SQLite connection for one store (user defaults; the core library's
// session store, HTTP cache and blip queue). The file is made readable by the
// user only and kept in WAL mode. A file that SQLite finds damaged or not a
// database is moved aside (suffix ".corrupt-<seconds since 1970>") and a fresh
// one made, whether SQLite says so at open or on any later statement (the
// one that found the damage fails; the next one runs on the fresh file); a
// busy one is waited for (a few busy timeouts), never moved; if no file can
// be used at all the store lives in memory for this process. Either is told
// to `problems`, one line each. Not thread-safe: its owner locks, and
// statements on its handle run under that lock.
class SqliteDatabase {
 public:
  // Where the store's problems are told; the platform has no logger of its
  // own, so the owner says where its lines go.
  using ProblemLog = std::function<void(std::string_view line)>;

  // `schema` is run on every open (CREATE TABLE IF NOT EXISTS ...).
  SqliteDatabase(std::filesystem::path file, std::string schema, ProblemLog problems);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  sqlite3* handle() const { return db_; }
  // False when the store lives in memory.
  bool persistent() const { return persistent_; }
  const std::filesystem::path& path() const { return path_; }

  bool execute(const char* sql);
  // Called with every failed result of a statement on `db` (SqliteStatement
  // does): a damaged file behind a SqliteDatabase's handle is moved aside
  // and the database reopened empty. Runs on the statement's thread, under
  // the owner's lock.
  static void noteFailure(sqlite3* db, int result);
  // Tells the owner's problem log `what`, with SQLite's reason for the last
  // failure on this connection.
  void report(std::string_view what) const;
  // Copies the write-ahead log into the database file; false in memory.
  bool checkpoint();

 private:
  // SQLITE_OK, or SQLite's primary result code for the first failure.
  int open(const std::string& target);
  int openWaitingWhileBusy();
  // The file, or a fresh one in place of a damaged one, or memory.
  void openOrFallBack();
  void close();
  std::filesystem::path asidePath() const;
  void moveAside(std::string_view reason);
  // After SQLite found damage on a statement: the old connection is let go
  // (statements still alive on it keep it until they end) and a fresh file
  // made.
  void recover(int result);

  std::filesystem::path path_;
  std::string schema_;
  ProblemLog problems_;
  sqlite3* db_ = nullptr;
  bool persistent_ = false;
  // The file this connection opened, to tell whether another process has
  // already replaced it.
  std::uint64_t inode_ = 0;
};

}  // namespace quorvel::platform
