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

namespace quorvel {

class SqliteDatabase;

// The core library's key-value store for session state (access token, the
// anonymous guid, the settings document). Values are JSON, held in memory and
// written through to SQLite, so integers stay integers and doubles stay
// doubles across a restart. Safe from any thread.
class SessionStore {
 public:
  explicit SessionStore(std::filesystem::path file);
  ~SessionStore();
  SessionStore(const SessionStore&) = delete;
  SessionStore& operator=(const SessionStore&) = delete;

  // False when the value could not be written to disk (it is still kept for
  // this process).
  bool store(const boost::json::value& value, std::string_view key);
  std::optional<boost::json::value> value(std::string_view key) const;
  bool remove(std::string_view key);
  std::vector<std::string> keys() const;
  // Removes every key except those in `keep`.
  void removeAllExcept(const std::vector<std::string>& keep);

  bool persistent() const;

 private:
  void load();
  bool writeRow(std::string_view key, const std::string* json);

  mutable std::mutex mutex_;
  std::unique_ptr<SqliteDatabase> db_;
  std::map<std::string, boost::json::value, std::less<>> values_;
};

}  // namespace quorvel
