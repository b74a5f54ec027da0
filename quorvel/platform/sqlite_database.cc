#include "quorvel/platform/sqlite_database.h"

#include <chrono>
#include <mutex>
#include <system_error>
#include <unordered_map>

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

// Which SqliteDatabase owns each open file connection, so that a statement,
// which knows only its connection, can have a damaged file replaced. Any
// thread; the mutex is never held while a database is worked on.
std::mutex& ownersMutex() {
  static std::mutex m;
  return m;
}

std::unordered_map<sqlite3*, SqliteDatabase*>& owners() {
  static std::unordered_map<sqlite3*, SqliteDatabase*> map;
  return map;
}

std::uint64_t inodeOf(const std::filesystem::path& file) {
  struct stat info {};
  return ::stat(file.c_str(), &info) == 0 ? static_cast<std::uint64_t>(info.st_ino) : 0;
}

}  // namespace

SqliteDatabase::SqliteDatabase(std::filesystem::path file, std::string schema, ProblemLog problems)
    : path_(std::move(file)), schema_(std::move(schema)), problems_(std::move(problems)) {
  openOrFallBack();
}

void SqliteDatabase::openOrFallBack() {
  int result = openWaitingWhileBusy();
  std::error_code ec;
  if (isDamaged(result) && std::filesystem::exists(path_, ec)) {
    moveAside(sqlite3_errstr(result));
    result = openWaitingWhileBusy();
  }
  if (result == SQLITE_OK) {
    persistent_ = true;
    inode_ = inodeOf(path_);
    std::lock_guard lock(ownersMutex());
    owners()[db_] = this;
    return;
  }
  if (problems_) {
    problems_(fmt::format("Cannot open {} ({}); keeping its data in memory for this run",
                          path_.string(), sqlite3_errstr(result)));
  }
  open(":memory:");
}

void SqliteDatabase::noteFailure(sqlite3* db, int result) {
  if (db == nullptr || !isDamaged(result & 0xff)) return;
  SqliteDatabase* owner = nullptr;
  {
    std::lock_guard lock(ownersMutex());
    const auto it = owners().find(db);
    if (it != owners().end()) owner = it->second;
  }
  if (owner != nullptr) owner->recover(result & 0xff);
}

void SqliteDatabase::recover(int result) {
  if (!persistent_) return;
  persistent_ = false;
  // Statements of this connection may still be alive in the caller's frames:
  // close_v2 keeps it until they end. Its last close must not checkpoint
  // into the old file nor delete the log by name, which by then is the fresh
  // file's log.
  sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  close();
  // Another process sharing the file may have met the damage first and
  // made a fresh file: that one is healthy and stays.
  if (inodeOf(path_) == inode_) {
    moveAside(fmt::format("{} while in use", sqlite3_errstr(result)));
  } else if (problems_) {
    problems_(fmt::format("{} was damaged ({}) and has been replaced already; reopening it",
                          path_.string(), sqlite3_errstr(result)));
  }
  openOrFallBack();
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
  if (db_ == nullptr) return;
  {
    std::lock_guard lock(ownersMutex());
    owners().erase(db_);
  }
  sqlite3_close_v2(db_);
  db_ = nullptr;
}

std::filesystem::path SqliteDatabase::asidePath() const {
  const auto stamp = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
  auto aside = path_;
  aside += fmt::format(".corrupt-{}", stamp);
  // A second damage in the same second keeps the first file.
  std::error_code ec;
  for (int n = 1; n < 100 && std::filesystem::exists(aside, ec); ++n) {
    aside = path_;
    aside += fmt::format(".corrupt-{}.{}", stamp, n);
  }
  return aside;
}

void SqliteDatabase::moveAside(std::string_view reason) {
  const auto aside = asidePath();
  std::error_code ec;
  std::filesystem::rename(path_, aside, ec);
  // The log and index go with it: kept for whoever looks into the damage,
  // and never replayed into the fresh file.
  for (const char* suffix : {"-wal", "-shm"}) {
    auto side = path_;
    side += suffix;
    auto sideAside = aside;
    sideAside += suffix;
    std::filesystem::rename(side, sideAside, ec);
  }
  if (problems_) {
    problems_(fmt::format("{} is not a usable database ({}); moved it aside to {}", path_.string(),
                          reason, aside.string()));
  }
}

bool SqliteDatabase::execute(const char* sql) {
  if (db_ == nullptr) return false;
  const int result = sqlite3_exec(db_, sql, nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) noteFailure(db_, result);
  return result == SQLITE_OK;
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
