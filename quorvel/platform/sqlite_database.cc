#include "quorvel/platform/sqlite_database.h"

#include <chrono>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "quorvel/platform/private_directory.h"

namespace quorvel::platform {

namespace {

// A file SQLite cannot read as a database: only this is moved aside. A busy
// or locked one (another process opening, converting or writing it at the
// same moment) is healthy and is waited for instead.
bool isDamaged(int result) {
  return result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
}

bool isBusy(int result) {
  return result == SQLITE_BUSY || result == SQLITE_LOCKED;
}

// Opening attempts while the file stays busy, each after the busy timeout.
constexpr int kOpenAttempts = 3;
constexpr int kBusyTimeoutMs = 2000;

}  // namespace

SqliteDatabase::SqliteDatabase(std::filesystem::path file, std::string schema, ProblemLog problems)
    : path_(std::move(file)), schema_(std::move(schema)), problems_(std::move(problems)) {
  int result = openWaitingWhileBusy();
  if (result == SQLITE_OK) {
    persistent_ = true;
    return;
  }
  std::error_code ec;
  if (isDamaged(result) && std::filesystem::exists(path_, ec)) {
    moveAside();
    result = openWaitingWhileBusy();
    if (result == SQLITE_OK) {
      persistent_ = true;
      return;
    }
  }
  if (problems_) {
    problems_(fmt::format("Cannot open {} ({}); keeping its data in memory for this run",
                          path_.string(), sqlite3_errstr(result)));
  }
  open(":memory:");
}

int SqliteDatabase::openWaitingWhileBusy() {
  int result = SQLITE_BUSY;
  for (int attempt = 0; attempt < kOpenAttempts && isBusy(result); ++attempt) {
    result = open(path_.string());
    if (result != SQLITE_OK) close();
  }
  return result;
}

SqliteDatabase::~SqliteDatabase() {
  close();
}

int SqliteDatabase::open(const std::string& target) {
  if (target != ":memory:") {
    PrivateDirectory::create(path_.parent_path());
    // Readable by the user only, also when another program made the file;
    // SQLite gives its WAL and shared-memory files the mode of the database.
    const int fd = ::open(target.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) return SQLITE_CANTOPEN;
    ::fchmod(fd, 0600);
    ::close(fd);
  }
  const int opened =
      sqlite3_open_v2(target.c_str(), &db_,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (opened != SQLITE_OK) return opened & 0xff;
  sqlite3_busy_timeout(db_, kBusyTimeoutMs);
  // journal_mode is the first statement that reads the file, so a file that
  // is not a database fails here.
  for (const char* sql :
       {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", schema_.c_str()}) {
    if (!execute(sql)) return sqlite3_errcode(db_) & 0xff;
  }
  return SQLITE_OK;
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
