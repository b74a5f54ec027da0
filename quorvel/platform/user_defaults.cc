#include "quorvel/platform/user_defaults.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvel::platform {
namespace {

std::mutex& standardMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<UserDefaults>& standardSlot() {
  static std::shared_ptr<UserDefaults> slot;
  return slot;
}

std::string programName() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  return ec ? std::string("quorvel") : exe.filename().string();
}

const char* env(const char* name) {
  const char* v = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read-only use
  return (v != nullptr && *v != '\0') ? v : nullptr;
}

}  // namespace

std::shared_ptr<UserDefaults> UserDefaults::standard() {
  std::lock_guard lock(standardMutex());
  if (!standardSlot()) standardSlot() = std::make_shared<UserDefaults>(defaultPath());
  return standardSlot();
}

void UserDefaults::setStandardPath(std::filesystem::path file) {
  auto store = std::make_shared<UserDefaults>(std::move(file));
  std::lock_guard lock(standardMutex());
  standardSlot() = std::move(store);
}

std::filesystem::path UserDefaults::defaultPath() {
  std::filesystem::path base;
  if (const char* xdg = env("XDG_CONFIG_HOME")) {
    base = xdg;
  } else if (const char* home = env("HOME")) {
    base = std::filesystem::path(home) / ".config";
  } else {
    base = std::filesystem::temp_directory_path();
  }
  return base / programName() / "UserDefaults.sqlite";
}

UserDefaults::UserDefaults(std::filesystem::path file) : path_(std::move(file)) {
  if (!open()) {
    // Not a database (or unreadable): keep it for inspection, start afresh.
    if (db_ != nullptr) sqlite3_close(db_);
    db_ = nullptr;
    std::error_code ec;
    auto aside = path_;
    aside += ".corrupt";
    if (std::filesystem::exists(path_, ec)) {
      std::filesystem::rename(path_, aside, ec);
      std::fprintf(stderr, "UserDefaults: %s was not a readable store, moved aside to %s\n",
                   path_.c_str(), aside.c_str());
    }
    if (!open()) {
      std::fprintf(stderr, "UserDefaults: cannot store values in %s, keeping them in memory\n",
                   path_.c_str());
      if (db_ != nullptr) sqlite3_close(db_);
      db_ = nullptr;
    }
  }
  if (db_ != nullptr) load();
}

UserDefaults::~UserDefaults() {
  if (db_ != nullptr) sqlite3_close(db_);
}

bool UserDefaults::open() {
  std::error_code ec;
  std::filesystem::create_directories(path_.parent_path(), ec);
  // Made readable and writable by the user only; SQLite gives its log files
  // the same mode as the database file.
  const int fd = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd >= 0) ::close(fd);
  const int rc =
      sqlite3_open_v2(path_.c_str(), &db_,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc != SQLITE_OK) return false;
  sqlite3_busy_timeout(db_, 2000);
  return execute("PRAGMA journal_mode=WAL") &&
         execute("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY KEY, value TEXT NOT NULL)");
}

bool UserDefaults::execute(const char* sql) {
  return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

void UserDefaults::load() {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, "SELECT key, value FROM defaults", -1, &stmt, nullptr) != SQLITE_OK) {
    return;
  }
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    const auto* key = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1));
    if (key == nullptr || text == nullptr) continue;
    boost::system::error_code ec;
    auto parsed = boost::json::parse(text, ec);
    if (!ec) values_[key] = std::move(parsed);
  }
  sqlite3_finalize(stmt);
}

bool UserDefaults::writeRow(std::string_view key, const std::string* json) {
  if (db_ == nullptr) return false;
  const char* sql = json != nullptr ? "INSERT INTO defaults (key, value) VALUES (?1, ?2) "
                                      "ON CONFLICT(key) DO UPDATE SET value = excluded.value"
                                    : "DELETE FROM defaults WHERE key = ?1";
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, sql, -1, &stmt, nullptr) != SQLITE_OK) return false;
  sqlite3_bind_text(stmt, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  if (json != nullptr) {
    sqlite3_bind_text(stmt, 2, json->data(), static_cast<int>(json->size()), SQLITE_TRANSIENT);
  }
  const bool ok = sqlite3_step(stmt) == SQLITE_DONE;
  sqlite3_finalize(stmt);
  return ok;
}

std::optional<boost::json::value> UserDefaults::value(std::string_view key) const {
  std::lock_guard lock(mutex_);
  auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

bool UserDefaults::set(std::string_view key, const boost::json::value& value) {
  const std::string json = boost::json::serialize(value);
  std::lock_guard lock(mutex_);
  values_.insert_or_assign(std::string(key), value);
  return writeRow(key, &json);
}

bool UserDefaults::remove(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (auto it = values_.find(key); it != values_.end()) values_.erase(it);
  return writeRow(key, nullptr);
}

std::vector<std::string> UserDefaults::keys() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> result;
  result.reserve(values_.size());
  for (const auto& [k, v] : values_) result.push_back(k);
  return result;
}

bool UserDefaults::synchronize() {
  std::lock_guard lock(mutex_);
  return db_ != nullptr && sqlite3_wal_checkpoint_v2(db_, nullptr, SQLITE_CHECKPOINT_PASSIVE,
                                                     nullptr, nullptr) == SQLITE_OK;
}

}  // namespace quorvel::platform
