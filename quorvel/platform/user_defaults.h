#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/value.hpp>

struct sqlite3;

namespace quorvel::platform {

// A persistent key-value store of JSON values, the way a phone OS keeps an
// app's preferences. Values are held in memory and written through to an
// SQLite file (WAL, readable only by the user), so a crash loses nothing that
// set() reported as stored. Integers stay integers and doubles stay doubles
// across a restart. Safe from any thread.
class UserDefaults {
 public:
  // The process-wide store. Its file is standardPath() unless the host chose
  // another with setStandardPath() before first use.
  static std::shared_ptr<UserDefaults> standard();
  // Replaces the standard store with one at `file` (hosts at start-up, tests).
  static void setStandardPath(std::filesystem::path file);
  // $XDG_CONFIG_HOME (or ~/.config)/<program name>/UserDefaults.sqlite
  static std::filesystem::path defaultPath();

  // Opens or creates the store. A file that is not a readable database is
  // moved aside (suffix ".corrupt") and a fresh one made; if no file can be
  // made at all the store works in memory only and set() reports false.
  explicit UserDefaults(std::filesystem::path file);
  ~UserDefaults();
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  std::optional<boost::json::value> value(std::string_view key) const;
  // False when the value could not be written to disk (it is still kept in
  // memory for this process).
  bool set(std::string_view key, const boost::json::value& value);
  bool remove(std::string_view key);
  std::vector<std::string> keys() const;
  // Writes the log into the main database file.
  bool synchronize();

  bool persistent() const { return db_ != nullptr; }
  const std::filesystem::path& path() const { return path_; }

 private:
  bool open();
  void load();
  bool execute(const char* sql);
  bool writeRow(std::string_view key, const std::string* json);

  std::filesystem::path path_;
  mutable std::mutex mutex_;
  sqlite3* db_ = nullptr;
  std::map<std::string, boost::json::value, std::less<>> values_;
};

}  // namespace quorvel::platform
