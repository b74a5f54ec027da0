#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/platform/sqlite_database.h"

namespace quorvel::platform {

// JSON values by key, held in memory and written through to one table of an
// SQLite file (a SqliteDatabase: 0600, WAL, a corrupt file moved aside, memory
// when no file can be made), so that a crash loses nothing that set()
// reported as stored. Integers stay integers and doubles stay doubles across
// a restart. Under UserDefaults and the core library's session store.
// Safe from any thread.
class JsonKeyValueStore {
 public:
  // `table` is created in `file` when missing; any name will do, an SQL
  // keyword included (it is quoted).
  JsonKeyValueStore(std::filesystem::path file, std::string_view table,
                    SqliteDatabase::ProblemLog problems);
  JsonKeyValueStore(const JsonKeyValueStore&) = delete;
  JsonKeyValueStore& operator=(const JsonKeyValueStore&) = delete;

  std::optional<boost::json::value> value(std::string_view key) const;
  // False when the value could not be written to disk (it is still kept in
  // memory for this process).
  bool set(std::string_view key, const boost::json::value& value);
  bool remove(std::string_view key);
  std::vector<std::string> keys() const;

  // The value as the file holds it now, whoever wrote it (another store on
  // the same file, another process); this store's memory is refreshed with it.
  std::optional<boost::json::value> currentValue(std::string_view key);
  // As currentValue, but `read` is shown the value in place (nothing when
  // the key is missing) instead of given a copy: for a large value read
  // often. `read` runs under the store's lock: it must not call the store.
  using Reader = std::function<void(const boost::json::value* current)>;
  void readCurrent(std::string_view key, const Reader& read);
  // One read-modify-write of `key` that no other writer of the file can
  // interleave with, in this process or another: the write lock is taken
  // before the value is read, `change` gets the value on disk (nothing when
  // the key is missing) and returns the value to store. A process killed
  // at any moment leaves the old or the new value. False, with the file and
  // memory unchanged and the reason logged, when the change cannot be
  // written (full disk, read-only file, the lock not had within the busy
  // time-out); in memory-only mode the change is kept for this process and
  // the answer is false, as for set(). `change` runs under the store's lock:
  // it must not call the store.
  using Change = std::function<boost::json::value(std::optional<boost::json::value> current)>;
  bool update(std::string_view key, const Change& change);
  // Writes the log into the main database file.
  bool synchronize();

  bool persistent() const { return db_.persistent(); }
  const std::filesystem::path& path() const { return db_.path(); }

 private:
  // The whole table into memory.
  void load();
  std::int64_t dataVersion() const;
  void refreshIfChanged();
  std::optional<boost::json::value> memoryValue(std::string_view key) const;
  // True when the statement ran; callers add whether the file is persistent.
  bool writeRow(std::string_view key, const std::string* json);
  bool written(bool statementRan);
  void serialize(const boost::json::value& value);
  bool applyChange(std::string_view key, const Change& change);

  const std::string upsertSql_;
  const std::string deleteSql_;
  const std::string selectAllSql_;
  mutable std::mutex mutex_;
  SqliteDatabase db_;
  std::map<std::string, boost::json::value, std::less<>> values_;
  // The file's data_version when memory last matched it; -1: unknown.
  std::int64_t seenVersion_ = -1;
  std::string scratch_;  // the last value serialised for writing
};

}  // namespace quorvel::platform
