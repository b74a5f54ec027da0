#pragma once

#include <filesystem>
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
  // Writes the log into the main database file.
  bool synchronize();

  bool persistent() const { return db_.persistent(); }
  const std::filesystem::path& path() const { return db_.path(); }

 private:
  void load(std::string_view table);
  bool writeRow(std::string_view key, const std::string* json);

  const std::string upsertSql_;
  const std::string deleteSql_;
  mutable std::mutex mutex_;
  SqliteDatabase db_;
  std::map<std::string, boost::json::value, std::less<>> values_;
};

}  // namespace quorvel::platform
