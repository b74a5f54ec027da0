#include "quorvel/platform/sqlite_database.h"

#include <chrono>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

namespace quorvel::platform {

SqliteDatabase::SqliteDatabase(std::filesystem::path file, std::string schema, ProblemLog problems)
    : path_(std::move(file)), schema_(std::move(schema)), problems_(std::move(problems)) {
  if (open(path_.string())) {
    persistent_ = true;
    return;
  }
  close();
  std::error_code ec;
  if (std::filesystem::exists(path_, ec)) {
    moveAside();
    if (open(path_.string())) {
      persistent_ = true;
      return;
    }
    close();
  }
  if (problems_) {
    problems_(
        fmt::format("Cannot open {}; keeping its data in memory for this run", path_.string()));
  }
  open(":memory:");
}

SqliteDatabase::~SqliteDatabase() {
  close();
}

bool SqliteDatabase::open(const std::string& target) {
  if (target != ":memory:") {
    std::error_code ec;
    std::filesystem::create_directories(path_.parent_path(), ec);
    // Created with the user's permissions only; SQLite gives its WAL and
    // shared-memory files the mode of the database file.
    const int fd = ::open(target.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    ::close(fd);
  }
  if (sqlite3_open_v2(target.c_str(), &db_,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK) {
    return false;
  }
  sqlite3_busy_timeout(db_, 2000);
  // journal_mode is the first statement that reads the file, so a file that
  // is not a database fails here.
  return execute("PRAGMA journal_mode=WAL") && execute("PRAGMA synchronous=NORMAL") &&
         execute(schema_.c_str());
}

void SqliteDatabase::close() {
  if (db_ != nullptr) sqlite3_close(db_);
  db_ = nullptr;
}

void SqliteDatabase::moveAside() {
  const auto stamp = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
  auto aside = path_;
  aside += fmt::format(".corrupt-{}", stamp);
  std::error_code ec;
  std::filesystem::rename(path_, aside, ec);
  for (const char* suffix : {"-wal", "-shm"}) {
    auto side = path_;
    side += suffix;
    std::filesystem::remove(side, ec);
  }
  if (problems_) {
    problems_(fmt::format("{} is not a usable database; moved it aside to {}", path_.string(),
                          aside.string()));
  }
}

bool SqliteDatabase::execute(const char* sql) {
  return db_ != nullptr && sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

void SqliteDatabase::report(std::string_view what) const {
  if (!problems_) return;
  problems_(fmt::format("{}: {}", what, db_ != nullptr ? sqlite3_errmsg(db_) : "not open"));
}

bool SqliteDatabase::checkpoint() {
  return persistent_ && sqlite3_wal_checkpoint_v2(db_, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr,
                                                  nullptr) == SQLITE_OK;
}

}  // namespace quorvel::platform
